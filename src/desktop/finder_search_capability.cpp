#include "desktop/finder_search_capability.h"

#include <algorithm>
#include <mutex>

#include "base/text.h"
#include "core/localized_strings.h"
#include "core/slot_enums.h"
#include "core/user_facing_error.h"
#include "desktop/finder_query_builder.h"
#include "pipeline/validator.h"

namespace nuvrel::desktop {
namespace {

namespace fs = std::filesystem;

// A slot that is a text of its vocabulary, lower-cased; anything else is dropped silently.
std::optional<std::string> enumSlot(const core::Slots& slots, std::string_view key,
                                    const core::SlotEnums::Vocabulary& vocabulary) {
    const auto value = pipeline::Validator::stringSlot(slots, key);
    if (!value) return std::nullopt;
    std::string lowered = base::text::lower(*value);
    if (!vocabulary.contains(lowered)) return std::nullopt;
    return lowered;
}

constexpr std::string_view userFolders[] = {"Documents", "Downloads", "Desktop"};

// Listing the user's folders is what brings up a desktop's folder-permission prompts; the
// outcome does not matter.
void probeUserFolderAccessOnce(const FileServices& services) {
    static std::once_flag probed;
    std::call_once(probed, [&] {
        if (!services.canListDirectory) return;
        for (const std::string_view folder :
             {"Documents", "Downloads", "Desktop", "Library/Mobile Documents/com~apple~CloudDocs"})
            (void)services.canListDirectory(services.home / folder);
    });
}

std::string extensionOf(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return {};
    return base::text::lower(name.substr(dot + 1));
}

}  // namespace

core::ActionPlan FinderSearchCapability::plan(const core::Slots& slots,
                                              std::string_view query) const {
    core::FinderQuery finderQuery{
        .keyword = pipeline::Validator::stringSlot(slots, "keyword"),
        .fileType = enumSlot(slots, "file_type", core::SlotEnums::finderFileType()),
        .location = enumSlot(slots, "location", core::SlotEnums::finderLocation()),
        .dateRange = enumSlot(slots, "date_range", core::SlotEnums::finderDateRange()),
    };
    if (!finderQuery.keyword && !finderQuery.fileType && !finderQuery.location &&
        !finderQuery.dateRange)
        finderQuery.keyword = base::text::trim(query);
    return finderQuery;
}

core::CapabilityResult FinderSearchCapability::execute(const core::ActionPlan& plan) {
    const auto* query = plan.get<core::FinderQuery>();
    if (!query || !services.runMetadataQuery)
        throw core::UserFacingError(
            core::LocalizedStrings::strings(language).finderSearchStartFailedMessage);
    probeUserFolderAccessOnce(services);
    const auto built =
        FinderQueryBuilder::build(*query, clock.now(), clock.calendar, services.home);
    const std::vector<std::string> scopes = built.scopeDirectories.empty()
                                                ? std::vector<std::string>{services.home.string()}
                                                : built.scopeDirectories;
    std::vector<core::FileHit> hits =
        cleanedHits(services.runMetadataQuery(built.predicateFormat, scopes, timeout, language),
                    query->fileType, maxResults, language);
    if (!hits.empty()) return core::CapabilityResult::Files{std::move(hits)};
    if (anyUserFolderReadable(services))
        return core::CapabilityResult::Empty{core::IntentID::finderSearch,
                                             query->keyword.value_or("")};
    return core::CapabilityResult::NeedsPermission{core::PermissionKind::fullDiskAccess};
}

std::vector<core::FileHit> cleanedHits(std::vector<MetadataItem> items,
                                       const std::optional<std::string>& fileType, int maxResults,
                                       core::AppLanguage language) {
    const auto extensions = FinderQueryBuilder::expectedExtensions(fileType);
    std::erase_if(items, [&](const MetadataItem& item) {
        if (extensions && !extensions->contains(extensionOf(item.fsName.value_or(""))) &&
            std::none_of(item.contentExtensions.begin(), item.contentExtensions.end(),
                         [&](const std::string& type) { return extensions->contains(type); }))
            return true;
        return item.path && FinderQueryBuilder::isNoisyPath(*item.path);
    });
    std::stable_sort(items.begin(), items.end(), [](const MetadataItem& a, const MetadataItem& b) {
        using TimePoint = std::chrono::system_clock::time_point;
        return a.modificationDate.value_or(TimePoint::min()) >
               b.modificationDate.value_or(TimePoint::min());
    });
    if (items.size() > static_cast<std::size_t>(std::max(maxResults, 0)))
        items.resize(static_cast<std::size_t>(std::max(maxResults, 0)));
    std::vector<core::FileHit> hits;
    for (const MetadataItem& item : items) {
        if (!item.path) continue;
        hits.push_back(
            core::FileHit{.name = item.fsName.value_or(fs::path(*item.path).filename().string()),
                          .path = *item.path,
                          .modifiedDate = formatModificationDate(item.modificationDate, language)});
    }
    return hits;
}

std::string formatModificationDate(const std::optional<std::chrono::system_clock::time_point>& date,
                                   core::AppLanguage language) {
    if (!date) return {};
    static const personal::GregorianCalendar calendar;
    if (language == core::AppLanguage::ko) return calendar.format(*date, "yyyy년 M월 d일", "ko_KR");
    return calendar.format(*date, "MMM d, yyyy", "en_US_POSIX");
}

bool anyUserFolderReadable(const FileServices& services) {
    if (!services.canListDirectory) return false;
    return std::any_of(
        std::begin(userFolders), std::end(userFolders),
        [&](std::string_view folder) { return services.canListDirectory(services.home / folder); });
}

}  // namespace nuvrel::desktop
