#pragma once
// The scripts of the macOS form, kept as text: the one quoting rule for user text, the two
// failure kinds of a script run, and the scripts for Notes, Messages, Mail and Music. Nothing
// on Linux runs them; the Linux forms act through files, D-Bus and the default handlers.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nuvrel::personal {

struct AppleScriptError {
    enum class Kind { executionFailed, automationDenied };
    Kind kind = Kind::executionFailed;
    int number = 0;
    std::string message{};
    bool operator==(const AppleScriptError&) const = default;

    // The error of a script run's error record: -1743 (not permitted to send Apple events)
    // is a refused automation whatever the message says; a missing number reads as 0, a
    // missing message as "AppleScript execution failed".
    static AppleScriptError classify(std::optional<int> number, std::optional<std::string> message);
};

// Backslashes doubled first, then a backslash before each double quote; nothing else.
std::string escapeLiteral(std::string_view text);

namespace NotesScriptBuilder {
// The body is HTML: after escaping, each line feed becomes "<br>".
std::string create(std::string_view content);
std::string listMatching(std::string_view keyword);
std::string deleteNote(std::string_view noteID);
}  // namespace NotesScriptBuilder

namespace MessageScriptBuilder {
enum class ServiceType { iMessage, SMS };
std::string send(std::string_view body, std::string_view handle, ServiceType serviceType);
std::string composeMail(std::string_view to, std::string_view body);
}  // namespace MessageScriptBuilder

namespace MusicScriptBuilder {
std::string playCurrent();
std::string pause();
std::string next();
std::string previous();
std::string readinessProbe();
std::string searchAndPlay(std::string_view query);
std::string playGenre(const std::vector<std::string>& genres);
std::string playRandomFromLibrary();
// Six fields joined by U+001F: name, artist, album, playing, position, duration; or "none".
const std::string& currentTrackInfo();
std::string currentArtworkData();
}  // namespace MusicScriptBuilder

}  // namespace nuvrel::personal
