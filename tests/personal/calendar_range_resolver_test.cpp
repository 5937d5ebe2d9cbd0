#include "personal/calendar_range_resolver.h"

#include <gtest/gtest.h>

namespace nuvrel::personal {
namespace {

std::string local(TimePoint date, const GregorianCalendar& calendar) {
    return calendar.format(date, "yyyy-MM-dd HH:mm", "en_US_POSIX");
}

// Every zone of the table must give the same local intervals: the resolver works in calendar
// days, whatever the offset and its changes.
class CalendarRangeResolverInZone : public testing::TestWithParam<const char*> {};

TEST_P(CalendarRangeResolverInZone, ResolvesTokensToLocalCalendarIntervals) {
    struct Case {
        const char* locale;
        int year, month, day, hour;  // now
        const char* token;
        const char* start;
        const char* end;
    };
    const Case cases[] = {
        // Saturday 2026-03-07, the day before New York's spring change.
        {"en_US", 2026, 3, 7, 10, "today", "2026-03-07 00:00", "2026-03-08 00:00"},
        {"en_US", 2026, 3, 7, 10, "tomorrow", "2026-03-08 00:00", "2026-03-09 00:00"},
        {"en_US", 2026, 3, 7, 10, "day_after_tomorrow", "2026-03-09 00:00", "2026-03-10 00:00"},
        {"en_US", 2026, 3, 7, 10, "yesterday", "2026-03-06 00:00", "2026-03-07 00:00"},
        {"en_US", 2026, 3, 7, 10, "this_week", "2026-03-01 00:00", "2026-03-08 00:00"},
        {"en_US", 2026, 3, 7, 10, "next_week", "2026-03-08 00:00", "2026-03-15 00:00"},
        {"en_US", 2026, 3, 7, 10, "this_weekend", "2026-03-07 00:00", "2026-03-09 00:00"},
        {"en_US", 2026, 3, 7, 10, "this_monday", "2026-03-02 00:00", "2026-03-03 00:00"},
        {"de_DE", 2026, 3, 7, 10, "this_week", "2026-03-02 00:00", "2026-03-09 00:00"},
        {"de_DE", 2026, 3, 29, 10, "this_weekend", "2026-03-28 00:00", "2026-03-30 00:00"},
        // A Sunday in a week that starts on Sunday: the weekend is six days ahead.
        {"en_US", 2026, 3, 8, 10, "this_weekend", "2026-03-14 00:00", "2026-03-16 00:00"},
        {"en_US", 2026, 3, 8, 10, "next_weekend", "2026-03-21 00:00", "2026-03-23 00:00"},
        // "next Monday" said on a Monday is the Monday of next week.
        {"de_DE", 2026, 3, 2, 9, "next_monday", "2026-03-09 00:00", "2026-03-10 00:00"},
        {"de_DE", 2026, 3, 2, 9, "this_monday", "2026-03-02 00:00", "2026-03-03 00:00"},
        {"de_DE", 2026, 3, 6, 9, "this_monday", "2026-03-02 00:00", "2026-03-03 00:00"},
        // Month ends, the leap day, the year's turn.
        {"en_US", 2026, 1, 31, 23, "this_month", "2026-01-01 00:00", "2026-02-01 00:00"},
        {"en_US", 2026, 1, 31, 23, "next_month", "2026-02-01 00:00", "2026-03-01 00:00"},
        {"en_US", 2028, 2, 28, 12, "tomorrow", "2028-02-29 00:00", "2028-03-01 00:00"},
        {"en_US", 2028, 2, 29, 12, "next_month", "2028-03-01 00:00", "2028-04-01 00:00"},
        {"en_US", 2026, 12, 31, 12, "tomorrow", "2027-01-01 00:00", "2027-01-02 00:00"},
        {"en_US", 2026, 12, 31, 12, "next_week", "2027-01-03 00:00", "2027-01-10 00:00"},
        // Around Berlin's autumn change.
        {"de_DE", 2026, 10, 24, 12, "tomorrow", "2026-10-25 00:00", "2026-10-26 00:00"},
    };
    for (const Case& c : cases) {
        const GregorianCalendar calendar(GetParam(), c.locale);
        const TimePoint now = *calendar.date(c.year, c.month, c.day, c.hour);
        const auto resolved = CalendarRangeResolver::parse(c.token, now, calendar);
        ASSERT_TRUE(resolved) << c.token;
        EXPECT_EQ(local(resolved->start, calendar), c.start) << c.token << " " << c.day;
        EXPECT_EQ(local(resolved->end, calendar), c.end) << c.token << " " << c.day;
    }
    const GregorianCalendar calendar(GetParam(), "en_US");
    for (const char* foreign : {"someday", "TOMORROW", "next_funday", "this_", ""})
        EXPECT_FALSE(CalendarRangeResolver::parse(foreign, *calendar.date(2026, 3, 7), calendar));
}

INSTANTIATE_TEST_SUITE_P(Zones, CalendarRangeResolverInZone,
                         testing::Values("America/New_York", "Europe/Berlin", "Asia/Seoul"));

TEST(CalendarRangeResolver, LabelsInTheInterfaceLanguage) {
    const GregorianCalendar calendar("Asia/Seoul", "ko_KR");
    const TimePoint now = *calendar.date(2026, 3, 7, 10);
    const auto label = [&](const char* token, core::AppLanguage language) {
        return CalendarRangeResolver::label(
            token, *CalendarRangeResolver::parse(token, now, calendar), calendar, language,
            core::LocalizedStrings::strings(language));
    };
    EXPECT_EQ(label("tomorrow", core::AppLanguage::en), "Tomorrow, March 8");
    EXPECT_EQ(label("tomorrow", core::AppLanguage::ko),
              core::LocalizedStrings::ko().calendarTomorrowLabel + ", 3월 8일");
    EXPECT_EQ(label("next_week", core::AppLanguage::ja),
              core::LocalizedStrings::ja().calendarNextWeekLabel);
    EXPECT_EQ(label("next_friday", core::AppLanguage::en), "Friday, March 13");
    EXPECT_EQ(label("next_friday", core::AppLanguage::ko), "3월 13일 금요일");
    EXPECT_EQ(label("this_monday", core::AppLanguage::zh), "Monday, March 2");
}

}  // namespace
}  // namespace nuvrel::personal
