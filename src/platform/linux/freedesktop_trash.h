#pragma once
// The user's freedesktop Trash through GIO, so that the file manager's "Restore" puts a file
// back where it was.

#include <filesystem>
#include <stdexcept>

namespace nuvrel::platform {

class TrashError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Moves the file or folder to the Trash of its filesystem, with its .trashinfo. Throws
// TrashError (with GIO's reason) when the file is gone or the filesystem has no Trash.
void moveToTrash(const std::filesystem::path& file);

}  // namespace nuvrel::platform
