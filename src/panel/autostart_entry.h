#pragma once
// The XDG autostart entry that starts the panel at login:
// $XDG_CONFIG_HOME/autostart/nuvrel-panel.desktop.

#include <filesystem>
#include <string>

#include "base/paths.h"

namespace nuvrel::panel {

std::filesystem::path autostartEntryPath(const base::XdgPaths& paths);

// The entry's text: the program at `program` (an absolute path, quoted as desktop entries
// require when it holds blanks or reserved characters), started in the background.
std::string autostartEntryText(const std::filesystem::path& program);

// Writes the entry atomically, making the folder if needed; gives its path. Throws
// std::filesystem::filesystem_error when it cannot be written.
std::filesystem::path installAutostartEntry(const base::XdgPaths& paths,
                                            const std::filesystem::path& program);

}  // namespace nuvrel::panel
