#include "desktop/delete_file_capability.h"

#include "base/cancellation.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "desktop/finder_query_builder.h"
#include "desktop/finder_search_capability.h"

namespace nuvrel::desktop {
namespace {

namespace fs = std::filesystem;

bool isInside(const fs::path& path, const fs::path& folder) {
    const fs::path relative = path.lexically_normal().lexically_relative(folder.lexically_normal());
    return !relative.empty() && *relative.begin() != ".." && *relative.begin() != ".";
}

}  // namespace

core::CapabilityResult DeleteFileCapability::findCandidate(
    const DeleteFileFastPath::Candidate& candidate, double timeout) const {
    const std::string predicate =
        "kMDItemFSName CONTAINS[cd] '" + FinderQueryBuilder::escapeLiteral(candidate.name) + "'";
    std::vector<std::string> scopes{services.home.string()};
    if (candidate.location == "desktop")
        scopes = {*FinderQueryBuilder::scopeDirectory("desktop", services.home)};
    std::vector<core::FileHit> hits = cleanedHits(
        services.runMetadataQuery(predicate, scopes, timeout, language), std::nullopt, 1, language);
    if (hits.empty()) {
        if (!anyUserFolderReadable(services))
            return core::CapabilityResult::NeedsPermission{core::PermissionKind::fullDiskAccess};
        return core::CapabilityResult::Empty{core::IntentID::finderSearch, candidate.name};
    }
    const std::optional<FileIdentity> identity =
        services.identify ? services.identify(hits.front().path) : std::nullopt;
    if (!identity)
        return core::CapabilityResult::Empty{core::IntentID::finderSearch, candidate.name};
    if (services.proposals) services.proposals->remember(hits.front().path, *identity);
    return core::CapabilityResult::DeleteFileConfirmation{std::move(hits.front())};
}

core::CapabilityResult DeleteFileCapability::confirmDelete(const std::string& path) const {
    const core::UserFacingError refused(
        core::LocalizedStrings::strings(language).deleteFileFailedMessage);
    if (!services.proposals || !services.identify || !services.moveToTrash) throw refused;
    const std::optional<FileIdentity> shown = services.proposals->shown(path);
    if (!shown) throw refused;
    const std::optional<FileIdentity> now = services.identify(path);
    if (!now) return core::CapabilityResult::FileDeleted{""};
    // The folders' links are resolved, so a link cannot lead the Trash out of the home folder.
    if (*now != *shown || !isInside(now->resolvedPath, services.home)) throw refused;
    try {
        services.moveToTrash(now->resolvedPath);
    } catch (...) {
        base::rethrowIfCancelled();
        throw refused;
    }
    return core::CapabilityResult::FileDeleted{fs::path(path).filename().string()};
}

}  // namespace nuvrel::desktop
