#pragma once
// Resolves an application's name against the applications really installed and opens the best
// match. The names are compared trimmed, lower-cased and without ".app"; a few everyday names
// ("크롬", "vscode") stand for the application's own.
//
// Pure but for `execute`, which blocks on the caller's task while the application starts.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/capability_result.h"

namespace nuvrel::desktop {

struct InstalledApp {
    std::string displayName;
    // Where the application is: its desktop entry's file.
    std::string url;
    // The name in the interface language, where the entry has one.
    std::optional<std::string> localizedDisplayName;

    bool operator==(const InstalledApp&) const = default;
};

namespace AppLaunchCapability {

// The trimmed, lower-cased candidate without ".app", then its alias when it has one; the
// alias comes first.
std::vector<std::string> searchTerms(std::string_view candidate);
// A name as it is compared: trimmed, lower-cased, every ".app" removed.
std::string comparableName(std::string_view name);
// The application's everyday name for `normalized` ("크롬" → "google chrome"), if any.
std::optional<std::string_view> alias(std::string_view normalized);

// The best application for the candidate: an equal name scores 1.0; a name that begins with
// the term or the other way round 0.9 (terms of 3 characters and more); the term's words in a
// row among the name's words 0.8 (likewise). Higher scores first, then the shorter name, then
// alphabetically. Nothing below 0.8. Goes through every application: ApplicationIndex gives
// the same answer in microseconds.
std::optional<InstalledApp> bestMatch(std::string_view candidate,
                                      const std::vector<InstalledApp>& apps,
                                      bool isExplicitTrigger);

// Lists, matches and opens. appLaunched with the name shown to the user; `empty` for an
// explicit request that matches nothing; nothing for a bare name that matches nothing, so
// that the query goes on. `openApplication` throws when the application will not start.
std::optional<core::CapabilityResult> execute(
    std::string_view candidate, bool isExplicitTrigger,
    const std::function<std::vector<InstalledApp>()>& listApplications,
    const std::function<void(const InstalledApp&)>& openApplication);

// The name a card shows: the localised one where there is one.
const std::string& shownName(const InstalledApp& app);

}  // namespace AppLaunchCapability
}  // namespace nuvrel::desktop
