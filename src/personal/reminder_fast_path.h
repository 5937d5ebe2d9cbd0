#pragma once
// Recognises a request to create a reminder ("내일 아침 8시에 약 먹기 미리알림", "remind me
// to call mom at 3pm") or to delete one ("delete the milk reminder"). Pure; safe from any
// thread.

#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::personal {

struct ReminderCandidate {
    std::string title{};
    std::string dateToken{};
    std::optional<int> hour{};
    int minute = 0;
    bool hasExplicitDateWord = false;
    bool operator==(const ReminderCandidate&) const = default;
};

struct ReminderDeleteCandidate {
    std::string keyword{};  // empty: any reminder
    bool operator==(const ReminderDeleteCandidate&) const = default;
};

namespace ReminderFastPath {
// A strong ending or beginning always makes a candidate; an ambiguous Korean ending ("알림")
// only with a date word or a time, so that "푸시 알림" stays a search.
std::optional<ReminderCandidate> match(std::string_view query);
}  // namespace ReminderFastPath

namespace ReminderDeleteFastPath {
std::optional<ReminderDeleteCandidate> match(std::string_view query);
}  // namespace ReminderDeleteFastPath

}  // namespace nuvrel::personal
