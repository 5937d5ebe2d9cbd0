#pragma once
// An application's name out of a request: "open safari", "크롬 켜줘", "打开微信", "LINEを起動して",
// or up to three bare words ("visual studio code"). Pure; safe from any thread.

#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace nuvrel::desktop::AppLaunchFastPath {

struct Match {
    std::string candidateName;
    // The request held a launch word.
    bool isExplicitTrigger = false;

    bool operator==(const Match&) const = default;
};

std::optional<Match> match(std::string_view query);

// The trigger words themselves, trimmed: a request that is only one of them names nothing.
const std::unordered_set<std::string>& danglingTriggerWords();

}  // namespace nuvrel::desktop::AppLaunchFastPath
