#pragma once
// Recognises a request to note something down ("take a note: buy milk", "우유 사기 메모해줘")
// or to delete notes ("delete the note about milk"). Pure; safe from any thread.

#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::personal {

struct NotesCandidate {
    std::string content{};  // may be empty: the capability reports the missing content
    bool operator==(const NotesCandidate&) const = default;
};

struct NoteDeleteCandidate {
    std::string keyword{};  // never empty
    bool operator==(const NoteDeleteCandidate&) const = default;
};

namespace NotesFastPath {
// A colon prefix in one of the four languages, or a Korean ending such as "메모해줘".
std::optional<NotesCandidate> match(std::string_view query);
}  // namespace NotesFastPath

namespace NoteDeleteFastPath {
// A note noun and a delete verb, and some word left to look for.
std::optional<NoteDeleteCandidate> match(std::string_view query);
}  // namespace NoteDeleteFastPath

}  // namespace nuvrel::personal
