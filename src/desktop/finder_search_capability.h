#pragma once
// File search: a FinderQuery planned from the router's slots, run as a metadata search, and
// cleaned up into at most `maxResults` hits, newest first.
//
// Threading: plan() is pure; execute() blocks on the caller's task for at most `timeout`
// seconds of search. One value may serve several tasks at once.

#include <optional>
#include <string>
#include <vector>

#include "core/capability.h"
#include "desktop/file_services.h"
#include "personal/gregorian_calendar.h"

namespace nuvrel::desktop {

class FinderSearchCapability final : public core::Capability {
public:
    core::IntentID intentID() const override { return core::IntentID::finderSearch; }
    // The slots that are texts of their vocabulary; none at all makes the whole trimmed query
    // the keyword.
    core::ActionPlan plan(const core::Slots& slots, std::string_view query) const override;
    // Throws core::UserFacingError when the search cannot start or times out with nothing.
    core::CapabilityResult execute(const core::ActionPlan& plan) override;

    core::AppLanguage language = core::AppLanguage::en;
    int maxResults = 8;
    double timeout = 3.0;
    FileServices services{};
    personal::Clock clock{};
};

// The hits of a search, cleaned: the expected extensions only (by name or by content), no noisy
// path, newest first (undated last, ties in the search's order), at most `maxResults`, items
// without a path skipped.
std::vector<core::FileHit> cleanedHits(std::vector<MetadataItem> items,
                                       const std::optional<std::string>& fileType, int maxResults,
                                       core::AppLanguage language);

// "Nov 22, 2026", or "2026년 11월 22일" in Korean; the English form for Chinese and Japanese;
// empty for no date. In the process's time zone.
std::string formatModificationDate(const std::optional<std::chrono::system_clock::time_point>& date,
                                   core::AppLanguage language);

// Whether any of Documents, Downloads and Desktop below the home folder can be listed.
bool anyUserFolderReadable(const FileServices& services);

}  // namespace nuvrel::desktop
