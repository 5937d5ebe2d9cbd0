#include "personal/calendar_range_resolver.h"

#include <array>
#include <utility>

#include "base/text.h"

namespace nuvrel::personal::CalendarRangeResolver {
namespace {

constexpr std::array<std::pair<std::string_view, int>, 7> weekdayNumbers = {{
    {"sunday", 1},
    {"monday", 2},
    {"tuesday", 3},
    {"wednesday", 4},
    {"thursday", 5},
    {"friday", 6},
    {"saturday", 7},
}};

std::optional<Resolved> dayFrom(std::optional<TimePoint> start, const GregorianCalendar& calendar,
                                int days) {
    if (!start) return std::nullopt;
    const auto end = calendar.addingDays(*start, days);
    if (!end) return std::nullopt;
    return Resolved{*start, *end};
}

// The first day at or after weekStart, within its week, whose weekday is `target`.
std::optional<TimePoint> weekdayOfWeek(std::optional<TimePoint> weekStart, int target,
                                       const GregorianCalendar& calendar) {
    if (!weekStart) return std::nullopt;
    for (int offset = 0; offset < 7; ++offset) {
        const auto day = calendar.addingDays(*weekStart, offset);
        if (!day) return std::nullopt;
        if (calendar.parts(*day).weekday == target) return day;
    }
    return std::nullopt;
}

std::optional<Resolved> weekdaySpecific(std::string_view token, TimePoint now,
                                        const GregorianCalendar& calendar) {
    const bool next = token.starts_with("next_");
    if (!next && !token.starts_with("this_")) return std::nullopt;
    const std::string_view name = token.substr(5);
    for (const auto& [weekday, number] : weekdayNumbers) {
        if (weekday != name) continue;
        auto weekStart = calendar.startOfWeek(now);
        if (weekStart && next) weekStart = calendar.addingDays(*weekStart, 7);
        return dayFrom(weekdayOfWeek(weekStart, number, calendar), calendar, 1);
    }
    return std::nullopt;
}

std::optional<Resolved> weekend(std::optional<TimePoint> weekStart,
                                const GregorianCalendar& calendar) {
    return dayFrom(weekdayOfWeek(weekStart, 7, calendar), calendar, 2);
}

std::optional<Resolved> month(std::optional<TimePoint> start, const GregorianCalendar& calendar) {
    if (!start) return std::nullopt;
    const auto end = calendar.addingMonths(*start, 1);
    if (!end) return std::nullopt;
    return Resolved{*start, *end};
}

}  // namespace

std::optional<Resolved> parse(std::string_view token, TimePoint now,
                              const GregorianCalendar& calendar) {
    const TimePoint today = calendar.startOfDay(now);
    const auto plusDays = [&](std::optional<TimePoint> date, int days) -> std::optional<TimePoint> {
        return date ? calendar.addingDays(*date, days) : std::nullopt;
    };
    if (token == "today") return dayFrom(today, calendar, 1);
    if (token == "tomorrow") return dayFrom(calendar.addingDays(today, 1), calendar, 1);
    if (token == "day_after_tomorrow") return dayFrom(calendar.addingDays(today, 2), calendar, 1);
    if (token == "yesterday") {
        const auto start = calendar.addingDays(today, -1);
        if (!start) return std::nullopt;
        return Resolved{*start, today};
    }
    if (token == "this_week") return dayFrom(calendar.startOfWeek(now), calendar, 7);
    if (token == "next_week") return dayFrom(plusDays(calendar.startOfWeek(now), 7), calendar, 7);
    if (token == "this_weekend") return weekend(calendar.startOfWeek(now), calendar);
    if (token == "next_weekend") return weekend(plusDays(calendar.startOfWeek(now), 7), calendar);
    if (token == "this_month") return month(calendar.startOfMonth(now), calendar);
    if (token == "next_month") {
        const auto first = calendar.startOfMonth(now);
        return month(first ? calendar.addingMonths(*first, 1) : std::nullopt, calendar);
    }
    return weekdaySpecific(token, now, calendar);
}

std::string label(std::string_view token, const Resolved& resolved,
                  const GregorianCalendar& calendar, core::AppLanguage language,
                  const core::LocalizedStrings& strings) {
    const bool korean = language == core::AppLanguage::ko;
    const auto dayLabel = [&](const std::string& word) {
        return word + ", " +
               (korean ? calendar.format(resolved.start, "M월 d일", "ko_KR")
                       : calendar.format(resolved.start, "MMMM d", "en_US_POSIX"));
    };
    const std::string lowered = base::text::lower(token);
    if (lowered == "today") return dayLabel(strings.calendarTodayLabel);
    if (lowered == "tomorrow") return dayLabel(strings.calendarTomorrowLabel);
    if (lowered == "day_after_tomorrow") return dayLabel(strings.calendarDayAfterTomorrowLabel);
    if (lowered == "yesterday") return dayLabel(strings.calendarYesterdayLabel);
    if (lowered == "this_week") return strings.calendarThisWeekLabel;
    if (lowered == "next_week") return strings.calendarNextWeekLabel;
    if (lowered == "this_weekend") return strings.calendarThisWeekendLabel;
    if (lowered == "next_weekend") return strings.calendarNextWeekendLabel;
    if (lowered == "this_month") return strings.calendarThisMonthLabel;
    if (lowered == "next_month") return strings.calendarNextMonthLabel;
    return korean ? calendar.format(resolved.start, "M월 d일 EEEE", "ko_KR")
                  : calendar.format(resolved.start, "EEEE, MMMM d", "en_US_POSIX");
}

}  // namespace nuvrel::personal::CalendarRangeResolver
