#include "desktop/app_launch_capability.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/text.h"
#include "desktop/application_scoring.h"

namespace nuvrel::desktop::AppLaunchCapability {
namespace {

namespace text = base::text;

constexpr std::array<std::pair<std::string_view, std::string_view>, 28> commonAppAliases{{
    {"사파리", "safari"},
    {"메모장", "notes"},
    {"메일", "mail"},
    {"우편", "mail"},
    {"달력", "calendar"},
    {"파인더", "finder"},
    {"시스템설정", "system settings"},
    {"환경설정", "system settings"},
    {"미리알림", "reminders"},
    {"크롬", "google chrome"},
    {"chrome", "google chrome"},
    {"vscode", "visual studio code"},
    {"vs code", "visual studio code"},
    {"아웃룩", "microsoft outlook"},
    {"디스코드", "discord"},
    {"파워포인트", "microsoft powerpoint"},
    {"엑셀", "microsoft excel"},
    {"워드", "microsoft word"},
    {"팀즈", "microsoft teams"},
    {"엣지", "microsoft edge"},
    {"키노트", "keynote"},
    {"넘버스", "numbers"},
    {"페이지스", "pages"},
    {"텔레그램", "telegram"},
    {"노션", "notion"},
    {"한글", "hwpmac"},
    {"아래아한글", "hwpmac"},
    {"한컴", "hwpmac"},
}};

}  // namespace

std::string comparableName(std::string_view name) {
    return text::replaceAll(text::lower(text::trim(name)), ".app", "");
}

std::optional<std::string_view> alias(std::string_view normalized) {
    for (const auto& [said, name] : commonAppAliases) {
        if (said == normalized) return name;
    }
    return std::nullopt;
}

std::vector<std::string> searchTerms(std::string_view candidate) {
    std::string term = comparableName(candidate);
    if (term.empty()) return {};
    if (const auto name = alias(term)) return {std::string(*name), std::move(term)};
    return {std::move(term)};
}

const std::string& shownName(const InstalledApp& app) {
    return app.localizedDisplayName && !app.localizedDisplayName->empty()
               ? *app.localizedDisplayName
               : app.displayName;
}

std::optional<InstalledApp> bestMatch(std::string_view candidate,
                                      const std::vector<InstalledApp>& apps, bool) {
    const std::vector<ScoredTerm> terms = scoredTerms(searchTerms(candidate));
    std::vector<ScoredApp> scored;
    for (std::size_t index = 0; index < apps.size(); ++index) {
        const InstalledApp& app = apps[index];
        std::optional<ScoredApp> best;
        for (const auto& name : {std::optional(app.displayName), app.localizedDisplayName}) {
            if (!name) continue;
            const std::string comparable = comparableName(*name);
            for (const ScoredTerm& term : terms) {
                const double score = nameScore(comparable, term);
                if (score > 0 && (!best || isBetter({score, comparable, index}, *best)))
                    best = ScoredApp{score, comparable, index};
            }
        }
        if (best) scored.push_back(std::move(*best));
    }
    if (scored.empty()) return std::nullopt;
    return apps[std::min_element(scored.begin(), scored.end(), isBetter)->index];
}

std::optional<core::CapabilityResult> execute(
    std::string_view candidate, bool isExplicitTrigger,
    const std::function<std::vector<InstalledApp>()>& listApplications,
    const std::function<void(const InstalledApp&)>& openApplication) {
    const auto app = bestMatch(candidate, listApplications(), isExplicitTrigger);
    if (app) {
        openApplication(*app);
        return core::CapabilityResult::AppLaunched{shownName(*app)};
    }
    if (isExplicitTrigger)
        return core::CapabilityResult::Empty{core::IntentID::appLaunch, std::string(candidate)};
    return std::nullopt;
}

}  // namespace nuvrel::desktop::AppLaunchCapability
