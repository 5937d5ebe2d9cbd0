#include "platform/linux/vdir_reminder_store.h"

#include <system_error>

#include "base/files.h"
#include "base/text.h"
#include "personal/timer_capability.h"
#include "platform/linux/ical_library.h"
#include "platform/linux/vdir_calendar_store.h"

namespace nuvrel::platform {

namespace fs = std::filesystem;

VdirReminderStore::VdirReminderStore(fs::path folder, std::shared_ptr<IcsFolderCache> cache)
    : folder_(std::move(folder)), cache_(std::move(cache)) {}

std::optional<std::string> VdirReminderStore::addReminder(const personal::NewReminder& reminder) {
    const personal::GregorianCalendar& calendar = cache_->calendar();
    const auto dueDay = calendar.date(reminder.due.year, reminder.due.month, reminder.due.day);
    if (!dueDay) return std::nullopt;
    icalcomponent* vcalendar = ical().componentNew(ICAL_VCALENDAR_COMPONENT);
    ical().componentAddProperty(vcalendar, ical().propertyNewVersion("2.0"));
    ical().componentAddProperty(vcalendar, ical().propertyNewProdid("-//Nuvrel//Nuvrel//EN"));
    icalcomponent* vtodo = ical().componentNew(ICAL_VTODO_COMPONENT);
    const std::string uid = base::text::lower(personal::makeUUIDString());
    const auto utcNow = ical().timeFromTimetWithZone(
        std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()), 0,
        ical().timezoneGetUtcTimezone());
    ical().componentAddProperty(vtodo, ical().propertyNewUid(uid.c_str()));
    ical().componentAddProperty(vtodo, ical().propertyNewDtstamp(utcNow));
    ical().componentAddProperty(vtodo, ical().propertyNewSummary(reminder.title.c_str()));
    ical().componentAddProperty(vtodo, ical().propertyNewStatus(ICAL_STATUS_NEEDSACTION));
    const personal::TimePoint due = reminder.alarm.value_or(*dueDay);
    ical().componentAddProperty(
        vtodo, zonedTimeProperty(ICAL_DUE_PROPERTY, due, !reminder.alarm, calendar, vcalendar));
    if (reminder.alarm) {
        icalcomponent* valarm = ical().componentNew(ICAL_VALARM_COMPONENT);
        ical().componentAddProperty(valarm, ical().propertyNewAction(ICAL_ACTION_DISPLAY));
        ical().componentAddProperty(valarm, ical().propertyNewDescription(reminder.title.c_str()));
        icaltriggertype trigger{};
        trigger.time =
            ical().timeFromTimetWithZone(std::chrono::system_clock::to_time_t(*reminder.alarm), 0,
                                         ical().timezoneGetUtcTimezone());
        trigger.duration = ical().durationtypeNullDuration();
        ical().componentAddProperty(valarm, ical().propertyNewTrigger(trigger));
        ical().componentAddComponent(vtodo, valarm);
    }
    ical().componentAddComponent(vcalendar, vtodo);
    try {
        writeCalendarFile(folder_ / (uid + ".ics"), vcalendar);
    } catch (...) {
        ical().componentFree(vcalendar);
        throw;
    }
    ical().componentFree(vcalendar);
    return uid;
}

std::vector<personal::StoredReminder> VdirReminderStore::incompleteReminders() {
    std::vector<personal::StoredReminder> reminders;
    for (const auto& file : cache_->files(folder_)) {
        for (const IcsItem& todo : file->todos) {
            if (todo.completed) continue;
            std::optional<personal::DueDate> due;
            if (todo.due) {
                due = personal::DueDate{
                    todo.due->year, todo.due->month, todo.due->day,
                    todo.dueHasTime ? std::optional(todo.due->hour) : std::nullopt,
                    todo.dueHasTime ? todo.due->minute : 0};
            }
            reminders.push_back({file->path.stem().string(), todo.summary, due});
        }
    }
    return reminders;
}

std::optional<std::string> VdirReminderStore::removeReminder(const std::string& identifier) {
    // An identifier is a file name in the folder, never a path elsewhere.
    if (identifier.empty() || identifier.find('/') != std::string::npos || identifier[0] == '.')
        return std::nullopt;
    const fs::path path = folder_ / (identifier + ".ics");
    const auto text = base::readFile(path);
    if (!text) return std::nullopt;
    const auto file = parseIcs(*text, path, cache_->calendar());
    if (!file || file->todos.empty()) return std::nullopt;
    std::error_code error;
    if (!fs::remove(path, error) && error) throw fs::filesystem_error("remove", path, error);
    return file->todos.front().summary;
}

}  // namespace nuvrel::platform
