#pragma once
// The user's reminders as the capabilities need them: add one to the list for new reminders,
// list the incomplete ones, remove one. The live form keeps VTODO files in a vdir folder.
//
// Threading: every operation blocks on the caller's task; an implementation guards its own
// state.

#include <optional>
#include <string>
#include <vector>

#include "personal/gregorian_calendar.h"

namespace nuvrel::personal {

// A due day, with a clock time when one was said.
struct DueDate {
    int year = 0;
    int month = 0;
    int day = 0;
    std::optional<int> hour{};
    int minute = 0;
    bool operator==(const DueDate&) const = default;
};

struct StoredReminder {
    std::string identifier{};
    std::string title{};
    std::optional<DueDate> due{};
    bool operator==(const StoredReminder&) const = default;
};

struct NewReminder {
    std::string title{};
    DueDate due{};
    // The one alarm, at this instant; none when no time was said.
    std::optional<TimePoint> alarm{};
};

class ReminderStore {
public:
    virtual ~ReminderStore() = default;
    virtual bool hasAccess() = 0;
    // Saves the reminder in the list for new reminders and gives its identifier; nothing when
    // there is no such list. Throws when the save fails.
    virtual std::optional<std::string> addReminder(const NewReminder& reminder) = 0;
    // Every reminder not completed, in no particular order.
    virtual std::vector<StoredReminder> incompleteReminders() = 0;
    // Removes the reminder and gives its title; nothing when it no longer exists. Throws when
    // the removal fails.
    virtual std::optional<std::string> removeReminder(const std::string& identifier) = 0;
};

}  // namespace nuvrel::personal
