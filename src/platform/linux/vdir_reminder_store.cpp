#include "platform/linux/vdir_reminder_store.h"

#include <system_error>

#include "base/files.h"
#include "base/text.h"
#include "personal/timer_capability.h"
#include "platform/linux/vdir_calendar_store.h"

namespace nuvrel::platform {

namespace fs = std::filesystem;

VdirReminderStore::VdirReminderStore(fs::path folder, std::shared_ptr<IcsFolderCache> cache)
    : folder_(std::move(folder)), cache_(std::move(cache)) {}

std::optional<std::string> VdirReminderStore::addReminder(const personal::NewReminder& reminder) {
    const personal::GregorianCalendar& calendar = cache_->calendar();
    const auto dueDay = calendar.date(reminder.due.year, reminder.due.month, reminder.due.day);
    if (!dueDay) return std::nullopt;
    icalcomponent* vcalendar = icalcomponent_new(ICAL_VCALENDAR_COMPONENT);
    icalcomponent_add_property(vcalendar, icalproperty_new_version("2.0"));
    icalcomponent_add_property(vcalendar, icalproperty_new_prodid("-//Nuvrel//Nuvrel//EN"));
    icalcomponent* vtodo = icalcomponent_new(ICAL_VTODO_COMPONENT);
    const std::string uid = base::text::lower(personal::makeUUIDString());
    const auto utcNow = icaltime_from_timet_with_zone(
        std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()), 0,
        icaltimezone_get_utc_timezone());
    icalcomponent_add_property(vtodo, icalproperty_new_uid(uid.c_str()));
    icalcomponent_add_property(vtodo, icalproperty_new_dtstamp(utcNow));
    icalcomponent_add_property(vtodo, icalproperty_new_summary(reminder.title.c_str()));
    icalcomponent_add_property(vtodo, icalproperty_new_status(ICAL_STATUS_NEEDSACTION));
    const personal::TimePoint due = reminder.alarm.value_or(*dueDay);
    icalcomponent_add_property(
        vtodo, zonedTimeProperty(ICAL_DUE_PROPERTY, due, !reminder.alarm, calendar, vcalendar));
    if (reminder.alarm) {
        icalcomponent* valarm = icalcomponent_new(ICAL_VALARM_COMPONENT);
        icalcomponent_add_property(valarm, icalproperty_new_action(ICAL_ACTION_DISPLAY));
        icalcomponent_add_property(valarm, icalproperty_new_description(reminder.title.c_str()));
        icaltriggertype trigger{};
        trigger.time =
            icaltime_from_timet_with_zone(std::chrono::system_clock::to_time_t(*reminder.alarm), 0,
                                          icaltimezone_get_utc_timezone());
        trigger.duration = icaldurationtype_null_duration();
        icalcomponent_add_property(valarm, icalproperty_new_trigger(trigger));
        icalcomponent_add_component(vtodo, valarm);
    }
    icalcomponent_add_component(vcalendar, vtodo);
    try {
        writeCalendarFile(folder_ / (uid + ".ics"), vcalendar);
    } catch (...) {
        icalcomponent_free(vcalendar);
        throw;
    }
    icalcomponent_free(vcalendar);
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
