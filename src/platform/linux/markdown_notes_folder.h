#pragma once
// Notes as Markdown files in a folder ($XDG_DATA_HOME/nuvrel/notes/ or the user's own, such as
// an Obsidian vault): one file per note, named after its title, which is its first line. A
// deleted note goes to the freedesktop Trash.

#include <filesystem>

#include "base/diagnostics.h"
#include "personal/notes_store.h"

namespace nuvrel::platform {

class MarkdownNotesFolder : public personal::NotesStore {
public:
    MarkdownNotesFolder(std::filesystem::path folder, base::Diagnostics diagnostics)
        : folder_(std::move(folder)), diagnostics_(std::move(diagnostics)) {}

    // Creates the folder when missing; a title already taken gets " 2", " 3", ... appended.
    void create(const std::string& content) override;
    // Walks the folder and its visible subfolders; the identifier is the path below the
    // folder. An unreadable file is skipped with a diagnostic line naming it.
    std::vector<core::NoteListItem> notesMatching(std::string_view keyword) override;
    bool remove(const std::string& identifier) override;

    // A file name for the title: no separators or characters that other systems refuse,
    // at most 80 characters, never empty or hidden. Without the ".md".
    static std::string fileStem(std::string_view title);

private:
    std::filesystem::path folder_;
    base::Diagnostics diagnostics_;
};

}  // namespace nuvrel::platform
