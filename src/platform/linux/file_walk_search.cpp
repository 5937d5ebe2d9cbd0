#include "platform/linux/file_walk_search.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <set>
#include <utility>

#include "base/cancellation.h"
#include "base/text.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "desktop/finder_query_builder.h"
#include "desktop/metadata_predicate.h"
#include "platform/linux/freedesktop_trash.h"
#include "platform/linux/shared_mime_types.h"
#include "platform/linux/tracker_file_search.h"

namespace nuvrel::platform {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

struct DirCloser {
    void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirCloser>;

bool isNetworkFilesystem(int descriptor) {
    struct statfs info {};
    if (::fstatfs(descriptor, &info) != 0) return true;
    static constexpr std::array<unsigned long, 10> network{
        0x6969,      // NFS
        0x517B,      // SMB
        0xFF534D42,  // CIFS
        0xFE534D42,  // SMB2
        0x65735546,  // FUSE (sshfs, rclone, ...)
        0x5346414F,  // AFS
        0x73757245,  // Coda
        0x564C,      // NCP
        0x01021997,  // 9P
        0x47504653,  // GPFS
    };
    const auto type = static_cast<unsigned long>(info.f_type) & 0xFFFFFFFFul;
    return std::find(network.begin(), network.end(), type) != network.end();
}

std::chrono::system_clock::time_point modificationOf(const struct stat& status) {
    return std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(
            std::chrono::seconds(status.st_mtim.tv_sec) +
            std::chrono::nanoseconds(status.st_mtim.tv_nsec)));
}

class Walk {
public:
    Walk(const desktop::MetadataPredicate& predicate, Clock::time_point deadline)
        : predicate_(predicate), deadline_(deadline) {}

    // False once the budget is spent.
    bool folder(const fs::path& root) {
        std::vector<fs::path> pending{root};
        while (!pending.empty()) {
            const fs::path current = std::move(pending.back());
            pending.pop_back();
            if (!entries(current, pending)) return false;
        }
        return true;
    }

    std::vector<desktop::MetadataItem> items;

private:
    bool entries(const fs::path& folder, std::vector<fs::path>& pending) {
        const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (descriptor < 0) return true;
        struct stat folderStatus {};
        if (::fstat(descriptor, &folderStatus) != 0 ||
            !visited_.emplace(folderStatus.st_dev, folderStatus.st_ino).second ||
            (folderStatus.st_dev != lastDevice_ && isNetworkFilesystem(descriptor))) {
            ::close(descriptor);
            return true;
        }
        lastDevice_ = folderStatus.st_dev;
        Directory directory(::fdopendir(descriptor));
        if (!directory) {
            ::close(descriptor);
            return true;
        }
        const std::string prefix = folder.string() + (folder.string().ends_with('/') ? "" : "/");
        while (const dirent* entry = ::readdir(directory.get())) {
            if ((++seen_ & 0xFF) == 0) {
                base::checkCancellation();
                if (Clock::now() > deadline_) return false;
            }
            const std::string_view name(entry->d_name);
            if (name == "." || name == ".." || !base::text::isValidUtf8(name)) continue;
            bool isFolder = entry->d_type == DT_DIR;
            struct stat status {};
            bool haveStatus = false;
            if (entry->d_type == DT_UNKNOWN) {
                if (::fstatat(::dirfd(directory.get()), entry->d_name, &status,
                              AT_SYMLINK_NOFOLLOW) != 0)
                    continue;
                haveStatus = true;
                isFolder = S_ISDIR(status.st_mode);
            }
            const std::string path = prefix + std::string(name);
            if (isFolder && !walkSkipsFolder(name)) pending.push_back(path);
            if (name.starts_with('.')) continue;

            const auto stat = [&]() -> bool {
                if (haveStatus) return true;
                haveStatus = ::fstatat(::dirfd(directory.get()), entry->d_name, &status,
                                       AT_SYMLINK_NOFOLLOW) == 0;
                return haveStatus;
            };
            desktop::MetadataAttributes attributes{
                .fsName = name,
                .path = path,
                .contentType = isFolder                     ? "public.folder"
                               : name.ends_with(".desktop") ? "com.apple.application-bundle"
                                                            : "public.data",
                .modificationDate = std::nullopt};
            if (predicate_.needsStatus() && stat())
                attributes.modificationDate = modificationOf(status);
            std::vector<std::string> byContent;
            if (!predicate_.matches(attributes)) {
                // Reading a file's head costs far more than its name: only for a type clause
                // that the name fails, and only when the name tells no type at all.
                if (isFolder || predicate_.nameEndings().empty() ||
                    !predicate_.matches(attributes, predicate_.nameEndings()))
                    continue;
                byContent = contentExtensions(::dirfd(directory.get()), entry->d_name);
                if (byContent.empty() || !predicate_.matches(attributes, byContent)) continue;
            }
            desktop::MetadataItem item{.path = path,
                                       .fsName = std::string(name),
                                       .contentExtensions = std::move(byContent)};
            if (stat()) item.modificationDate = modificationOf(status);
            items.push_back(std::move(item));
        }
        return true;
    }

    const desktop::MetadataPredicate& predicate_;
    Clock::time_point deadline_;
    std::set<std::pair<dev_t, ino_t>> visited_;
    dev_t lastDevice_ = 0;
    unsigned seen_ = 0;
};

}  // namespace

// Folders whose files the search would drop anyway, or that only hold what programs keep.
bool walkSkipsFolder(std::string_view name) {
    static constexpr std::array<std::string_view, 4> caches{"Cache", "cache", "Caches",
                                                            "__pycache__"};
    return name.starts_with('.') || std::find(caches.begin(), caches.end(), name) != caches.end() ||
           desktop::FinderQueryBuilder::isNoisyPath(name);
}

std::vector<fs::path> xdgUserFolders(const fs::path& home) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 7> folders{{
        {"XDG_DOCUMENTS_DIR", "Documents"},
        {"XDG_DESKTOP_DIR", "Desktop"},
        {"XDG_DOWNLOAD_DIR", "Downloads"},
        {"XDG_PICTURES_DIR", "Pictures"},
        {"XDG_VIDEOS_DIR", "Videos"},
        {"XDG_MUSIC_DIR", "Music"},
        {"XDG_PUBLICSHARE_DIR", "Public"},
    }};
    const char* config = std::getenv("XDG_CONFIG_HOME");
    std::vector<std::string> lines;
    std::ifstream dirs((config && *config ? fs::path(config) : home / ".config") /
                       "user-dirs.dirs");
    for (std::string line; std::getline(dirs, line);) lines.push_back(line);
    std::vector<fs::path> result;
    for (const auto& [key, fallback] : folders) {
        fs::path folder = home / fallback;
        for (const std::string& line : lines) {
            const std::string start = std::string(key) + "=\"";
            if (!line.starts_with(start) || !line.ends_with('"')) continue;
            std::string value = line.substr(start.size(), line.size() - start.size() - 1);
            if (value.starts_with("$HOME/"))
                folder = home / value.substr(6);
            else if (value.starts_with('/'))
                folder = value;
        }
        // A user folder set to the home folder itself adds nothing to the walk of home.
        if (folder != home) result.push_back(folder);
    }
    return result;
}

std::vector<desktop::MetadataItem> liveWalkMetadataQuery(
    const std::string& predicateFormat, const std::vector<std::string>& scopeDirectories,
    double timeout, core::AppLanguage language, const fs::path& home) {
    const core::LocalizedStrings& strings = core::LocalizedStrings::strings(language);
    const auto predicate = desktop::MetadataPredicate::parse(predicateFormat);
    if (!predicate) throw core::UserFacingError(strings.finderSearchStartFailedMessage);
    Walk walk(*predicate, Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                             std::chrono::duration<double>(timeout)));
    bool finished = true;
    for (const std::string& scope : scopeDirectories) {
        if (fs::path(scope) == home) {
            for (const fs::path& folder : xdgUserFolders(home)) {
                finished = walk.folder(folder);
                if (!finished) break;
            }
        }
        if (!finished || !(finished = walk.folder(scope))) break;
    }
    if (!finished && walk.items.empty())
        throw core::UserFacingError(strings.finderSearchTimedOutMessage);
    return std::move(walk.items);
}

desktop::FileServices liveFileServices(const fs::path& home, SessionBusSource bus) {
    std::error_code error;
    fs::path resolvedHome = fs::weakly_canonical(home, error);
    if (error) resolvedHome = home;
    desktop::FileServices services;
    services.home = resolvedHome;
    services.runMetadataQuery = [resolvedHome, bus](const std::string& predicate,
                                                    const std::vector<std::string>& scopes,
                                                    double timeout, core::AppLanguage language) {
        // The index gets a short part of the budget: a slow or absent one leaves the walk most.
        const double indexBudget = std::min(timeout / 3, 1.0);
        const auto start = Clock::now();
        if (const auto connected = bus ? bus() : nullptr) {
            if (auto items =
                    trackerMetadataQuery(connected->connection(), predicate, scopes, indexBudget))
                return std::move(*items);
        }
        const double spent = std::chrono::duration<double>(Clock::now() - start).count();
        return liveWalkMetadataQuery(predicate, scopes, std::max(timeout - spent, 0.0), language,
                                     resolvedHome);
    };
    services.canListDirectory = [](const fs::path& folder) {
        return Directory(::opendir(folder.c_str())) != nullptr;
    };
    services.identify = [](const fs::path& path) -> std::optional<desktop::FileIdentity> {
        struct stat status {};
        if (::lstat(path.c_str(), &status) != 0) return std::nullopt;
        std::error_code error;
        const fs::path folder = fs::canonical(path.parent_path(), error);
        if (error) return std::nullopt;
        return desktop::FileIdentity{
            .resolvedPath = (folder / path.filename()).string(),
            .device = static_cast<std::uint64_t>(status.st_dev),
            .inode = static_cast<std::uint64_t>(status.st_ino),
            .size = static_cast<std::uint64_t>(status.st_size),
            .modifiedNanoseconds =
                static_cast<std::int64_t>(status.st_mtim.tv_sec) * 1'000'000'000 +
                status.st_mtim.tv_nsec};
    };
    services.moveToTrash = [](const fs::path& path) { moveToTrash(path); };
    return services;
}

}  // namespace nuvrel::platform
