#pragma once
// Where notes live (the live form: Markdown files in a folder). A note's title is its first
// line. Calls block on the caller's task; an implementation is safe to use from several tasks.

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "core/result_records.h"

namespace nuvrel::personal {

// Why the store could not act. The text names no note and quotes no note text.
class NotesStoreError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class NotesStore {
public:
    virtual ~NotesStore() = default;
    // Saves a new note; never replaces another. Throws NotesStoreError.
    virtual void create(const std::string& content) = 0;
    // Notes whose title contains the keyword, ignoring case, newest first. Throws
    // NotesStoreError when the store cannot be read at all.
    virtual std::vector<core::NoteListItem> notesMatching(std::string_view keyword) = 0;
    // Removes the note, recoverably where the platform can; false when it is already gone.
    // Throws NotesStoreError.
    virtual bool remove(const std::string& identifier) = 0;
};

}  // namespace nuvrel::personal
