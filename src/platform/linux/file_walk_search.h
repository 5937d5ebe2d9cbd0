#pragma once
// The metadata search where no desktop index answers: a walk of the user's folders that
// evaluates the predicate on each file. The XDG user folders (documents, desktop, downloads,
// pictures, ...) go first, then the rest of the home folder. It never descends into hidden
// folders, caches, noise folders that the search drops anyway, other filesystems of a network
// kind, or through symbolic links (so no loop), and stops at its time budget with what it has.
// Names that are not valid UTF-8 are never hits. A file whose name tells no type is typed by
// its content through shared MIME info.
//
// Threading: blocks on the caller's task; observes its stop request.

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "desktop/file_services.h"
#include "platform/linux/session_bus.h"

namespace nuvrel::platform {

// The XDG user folders of `home` from user-dirs.dirs (under XDG_CONFIG_HOME), the default
// names where it has none, in the order the walk takes them.
std::vector<std::filesystem::path> xdgUserFolders(const std::filesystem::path& home);

// desktop::RunMetadataQuery over the files themselves. A scope equal to `home` is walked user
// folders first.
std::vector<desktop::MetadataItem> liveWalkMetadataQuery(
    const std::string& predicateFormat, const std::vector<std::string>& scopeDirectories,
    double timeout, core::AppLanguage language, const std::filesystem::path& home);

// Whether the walk leaves out a folder of this name (hidden, caches, noise folders).
bool walkSkipsFolder(std::string_view name);

// desktop::FileServices on this machine: the desktop's index on the bus when its miner runs and
// answers within a third of the budget (at most 1 s), else the walk with what budget is left;
// listing, lstat identity, the Trash.
desktop::FileServices liveFileServices(const std::filesystem::path& home,
                                       SessionBusSource bus = nullptr);

}  // namespace nuvrel::platform
