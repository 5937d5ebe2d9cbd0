#pragma once
// What file search and deletion need of the machine, injected: the metadata search, whether a
// folder can be listed, a file's identity, and the Trash. The live forms are in
// src/platform/linux.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "core/app_language.h"

namespace nuvrel::desktop {

// One hit of a metadata search, with the attributes the search was asked for.
struct MetadataItem {
    std::optional<std::string> path{};    // kMDItemPath
    std::optional<std::string> fsName{};  // kMDItemFSName
    std::optional<std::chrono::system_clock::time_point> modificationDate{};
    // The extensions of the type that the content shows, lower-cased, where the name tells no
    // type of its own; empty otherwise.
    std::vector<std::string> contentExtensions{};

    bool operator==(const MetadataItem&) const = default;
};

// Runs a predicate of the metadata query language over the scope folders (never empty) for at
// most `timeout` seconds. Gives what was gathered by then; throws core::UserFacingError with
// finderSearchTimedOutMessage when nothing was, and with finderSearchStartFailedMessage when
// the search cannot start. Blocks on the caller's task.
using RunMetadataQuery = std::function<std::vector<MetadataItem>(
    const std::string& predicateFormat, const std::vector<std::string>& scopeDirectories,
    double timeout, core::AppLanguage language)>;

// What makes a file this file: a file replaced or rewritten after the user saw it has another.
struct FileIdentity {
    // The path with its folders' links resolved (the file itself is not followed).
    std::string resolvedPath{};
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t modifiedNanoseconds = 0;

    bool operator==(const FileIdentity&) const = default;
};

// The files shown for deletion and what they were when shown, so that only that very file goes
// to the Trash on the user's word. Made once by the shell and shared by every pipeline it
// builds; safe from any thread.
class DeletionProposals {
public:
    void remember(const std::string& path, const FileIdentity& identity) {
        std::lock_guard lock(mutex_);
        shown_[path] = identity;
    }
    std::optional<FileIdentity> shown(const std::string& path) const {
        std::lock_guard lock(mutex_);
        const auto found = shown_.find(path);
        if (found == shown_.end()) return std::nullopt;
        return found->second;
    }

private:
    mutable std::mutex mutex_;
    std::map<std::string, FileIdentity> shown_;
};

struct FileServices {
    RunMetadataQuery runMetadataQuery{};
    // Whether the folder can be listed: what tells a missing permission from no hit.
    std::function<bool(const std::filesystem::path&)> canListDirectory{};
    // The identity of the file at the path (not following a final link); nothing when gone.
    std::function<std::optional<FileIdentity>(const std::filesystem::path&)> identify{};
    // Moves the file to the Trash; throws when it cannot.
    std::function<void(const std::filesystem::path&)> moveToTrash{};
    std::shared_ptr<DeletionProposals> proposals{};
    // The user's home folder, with its links resolved.
    std::filesystem::path home{};
};

}  // namespace nuvrel::desktop
