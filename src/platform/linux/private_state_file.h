#pragma once
// A file only its owner may read (mode 0600, in a folder of mode 0700 when it has to be made),
// replaced atomically: for state that holds personal text, such as the clipboard history.

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::platform {

// The bytes; nothing when the file is missing or unreadable.
std::optional<std::string> readPrivateFile(const std::filesystem::path& path);
// Never visible with wider permissions, not even for a moment. Throws std::system_error.
void writePrivateFile(const std::filesystem::path& path, std::string_view bytes);

}  // namespace nuvrel::platform
