#pragma once
// Recognises a request to add an event ("add event Dentist tomorrow at 3pm", "내일 3시 치과
// 일정 추가해줘") or to delete events ("delete the dentist event tomorrow"). Pure; safe from
// any thread.

#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::personal {

struct CalendarAddEventCandidate {
    std::string title{};
    std::string dateToken{};
    std::optional<int> hour{};
    int minute = 0;
    bool hasExplicitDateWord = false;
    bool operator==(const CalendarAddEventCandidate&) const = default;
};

struct CalendarDeleteCandidate {
    std::string dateToken{};
    std::string keyword{};  // empty: any event of the interval
    bool hasExplicitDateWord = false;
    bool operator==(const CalendarDeleteCandidate&) const = default;
};

namespace CalendarAddEventFastPath {
// Every ending and beginning is strong: no date or time is required.
std::optional<CalendarAddEventCandidate> match(std::string_view query);
}  // namespace CalendarAddEventFastPath

namespace CalendarDeleteFastPath {
// A time in the request only drops out of the keyword; the default interval is today.
std::optional<CalendarDeleteCandidate> match(std::string_view query);
}  // namespace CalendarDeleteFastPath

}  // namespace nuvrel::personal
