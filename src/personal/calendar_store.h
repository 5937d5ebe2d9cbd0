#pragma once
// The user's calendars as the capabilities need them: events of an interval over every
// calendar, one new event in the calendar for new events, and removal of one event. The live
// form keeps iCalendar files in vdir folders; tests keep their own.
//
// Threading: every operation blocks on the caller's task; an implementation guards its own
// state, so one store may serve several tasks.

#include <optional>
#include <string>
#include <vector>

#include "personal/gregorian_calendar.h"

namespace nuvrel::personal {

struct StoredEvent {
    // Finds this event again (one occurrence of a repeating event has its own).
    std::string identifier{};
    std::string title{};
    std::optional<std::string> location{};
    TimePoint start{};
    TimePoint end{};
    bool isAllDay = false;
    std::optional<std::string> calendarName{};
    std::optional<std::string> colorHex{};  // "#RRGGBB"
    bool operator==(const StoredEvent&) const = default;
};

struct NewEvent {
    std::string title{};
    TimePoint start{};
    TimePoint end{};
    bool isAllDay = false;
};

class CalendarStore {
public:
    virtual ~CalendarStore() = default;
    // Whether the calendars may be read and written.
    virtual bool hasAccess() = 0;
    // Events that overlap [start, end), over every calendar, in no particular order.
    virtual std::vector<StoredEvent> events(TimePoint start, TimePoint end) = 0;
    // Saves the event in the calendar for new events and gives it back as stored. Nothing
    // when there is no such calendar; throws when the save fails.
    virtual std::optional<StoredEvent> addEvent(const NewEvent& event) = 0;
    // Removes the event (of a repeating event, this occurrence only) and gives its title;
    // nothing when it no longer exists. Throws when the removal fails.
    virtual std::optional<std::string> removeEvent(const std::string& identifier) = 0;
};

}  // namespace nuvrel::personal
