#include "personal/reminder_capability.h"

#include <algorithm>

#include "base/cancellation.h"
#include "base/diagnostics.h"
#include "base/text.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "personal/calendar_range_resolver.h"
#include "personal/date_time_expression_parser.h"

namespace nuvrel::personal {
namespace {

core::CapabilityResult remindersPermission() {
    return core::CapabilityResult::NeedsPermission{core::PermissionKind::reminders};
}

std::string_view localeOf(core::AppLanguage language) {
    switch (language) {
        case core::AppLanguage::ko:
            return "ko_KR";
        case core::AppLanguage::zh:
            return "zh_CN";
        case core::AppLanguage::ja:
            return "ja_JP";
        default:
            return "en_US";
    }
}

// Due first, earlier first; then those without a due date by title in code-point order.
bool dueBefore(const StoredReminder& a, const StoredReminder& b) {
    if (a.due && b.due) {
        const auto key = [](const DueDate& d) {
            return std::tuple(d.year, d.month, d.day, d.hour.value_or(0), d.minute);
        };
        return key(*a.due) < key(*b.due);
    }
    if (a.due || b.due) return a.due.has_value();
    return a.title < b.title;
}

}  // namespace

core::CapabilityResult ReminderCapability::execute(const ReminderCandidate& candidate) const {
    if (!store->hasAccess()) return remindersPermission();
    const auto& strings = core::LocalizedStrings::strings(language);
    const core::UserFacingError unavailable(strings.capabilityUnavailableMessage, std::nullopt,
                                            false);
    const TimePoint now = clock.now();
    const GregorianCalendar& calendar = clock.calendar;
    const auto resolved = CalendarRangeResolver::parse(candidate.dateToken, now, calendar);
    if (!resolved) throw unavailable;

    const DateParts day = calendar.parts(resolved->start);
    NewReminder reminder{candidate.title, DueDate{day.year, day.month, day.day}, std::nullopt};
    if (candidate.hour) {
        if (const auto built =
                calendar.date(day.year, day.month, day.day, *candidate.hour, candidate.minute)) {
            const TimePoint fire = DateTimeExpressionParser::rollingPastTimeForward(
                *built, candidate.hasExplicitDateWord, now, calendar);
            const DateParts at = calendar.parts(fire);
            reminder.due = DueDate{at.year, at.month, at.day, at.hour, at.minute};
            reminder.alarm = fire;
        }
    }
    const auto identifier = store->addReminder(reminder);
    if (!identifier) throw unavailable;
    if (reminder.alarm && notificationCenter) {
        // The reminder is saved either way; a ring that cannot be scheduled is noted, not
        // turned into a failure of the whole request.
        try {
            const auto wait = std::max(std::chrono::seconds(0),
                                       std::chrono::duration_cast<std::chrono::seconds>(
                                           *reminder.alarm - std::chrono::system_clock::now()));
            notificationCenter->scheduleNotification(
                std::string(reminderIdentifierPrefix) + *identifier, strings.reminderHeaderTitle,
                candidate.title, wait);
        } catch (const base::Cancelled&) {
            throw;
        } catch (...) {
            diagnostics.event("reminder saved without a notification: none can be shown");
        }
    }
    return core::CapabilityResult::ReminderSet{candidate.title, reminder.alarm};
}

std::optional<core::CapabilityResult> ReminderCapability::findCandidates(
    const ReminderDeleteCandidate& candidate) const {
    const std::string keyword = base::text::lower(base::text::trim(candidate.keyword));
    if (!store->hasAccess()) return remindersPermission();
    std::vector<StoredReminder> reminders = store->incompleteReminders();
    if (!keyword.empty()) {
        std::erase_if(reminders, [&](const StoredReminder& r) {
            return !base::text::contains(base::text::lower(r.title), keyword);
        });
    }
    if (reminders.empty()) return std::nullopt;
    std::stable_sort(reminders.begin(), reminders.end(), dueBefore);
    const GregorianCalendar& calendar = clock.calendar;
    core::CapabilityResult::ReminderDeleteConfirmation result;
    for (const StoredReminder& reminder : reminders) {
        std::optional<std::string> dueLabel;
        if (reminder.due) {
            if (const auto date =
                    calendar.date(reminder.due->year, reminder.due->month, reminder.due->day,
                                  reminder.due->hour.value_or(0), reminder.due->minute))
                dueLabel = calendar.formatSkeleton(*date, "MdHHmm", localeOf(language));
        }
        result.reminders.push_back(
            core::ReminderListItem{reminder.title, std::move(dueLabel), reminder.identifier});
    }
    return result;
}

core::CapabilityResult ReminderCapability::confirmDelete(const std::string& identifier) const {
    if (!store->hasAccess()) return remindersPermission();
    const auto title = store->removeReminder(identifier);
    if (title && notificationCenter)
        notificationCenter->cancelPendingNotifications(std::string(reminderIdentifierPrefix) +
                                                       identifier);
    return core::CapabilityResult::ReminderDeleted{title.value_or("")};
}

}  // namespace nuvrel::personal
