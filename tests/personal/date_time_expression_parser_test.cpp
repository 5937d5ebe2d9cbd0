#include "personal/date_time_expression_parser.h"

#include <gtest/gtest.h>

namespace nuvrel::personal {
namespace {

using DateTimeExpressionParser::parse;
using DateTimeExpressionParser::Result;

TEST(DateTimeExpressionParser, ReadsTitleDateAndTimeInFourLanguages) {
    struct Case {
        const char* text;
        Result expected;
    };
    const Case cases[] = {
        {"내일 오후 3시 치과", {"치과", "tomorrow", 15, 0, true}},
        {"다음주 금요일에 회의", {"회의", "next_friday", std::nullopt, 0, true}},
        {"금요일 회의", {"회의", "this_friday", std::nullopt, 0, true}},
        {"모레 9시 반에 미팅", {"미팅", "day_after_tomorrow", 9, 30, true}},
        {"밤 12시 약", {"약", "today", 0, 0, false}},
        {"낮 12시 약", {"약", "today", 12, 0, false}},
        {"오전 12시 약", {"약", "today", 0, 0, false}},
        {"낮 1시 약", {"약", "today", 13, 0, false}},
        {"오후 13시 약", {"약", "today", 13, 0, false}},
        {"0시 약", {"약", "today", 0, 0, false}},
        {"25시 약", {"약", "today", 25, 0, false}},
        {"晚上12点 吃药", {"吃药", "today", 0, 0, false}},
        {"中午12点 吃饭", {"吃饭", "today", 12, 0, false}},
        {"明天下午3点半 开会", {"开会", "tomorrow", 15, 30, true}},
        {"下周一 开会", {"开会", "next_monday", std::nullopt, 0, true}},
        {"下星期五 开会", {"开会", "next_friday", std::nullopt, 0, true}},
        {"水曜日 会議", {"会議", "this_wednesday", std::nullopt, 0, true}},
        {"来週金曜日 午後3時 会議", {"会議", "next_friday", 15, 0, true}},
        {"call mom at 12am", {"call mom", "today", 0, 0, false}},
        {"call mom at 12pm", {"call mom", "today", 12, 0, false}},
        {"meeting at 3:30", {"meeting at 3:30", "today", std::nullopt, 0, false}},
        {"meeting at 15:30", {"meeting", "today", 15, 30, false}},
        {"meeting at 03:30", {"meeting", "today", 3, 30, false}},
        {"meeting at 24:00", {"meeting at 24:00", "today", std::nullopt, 0, false}},
        {"Dentist Tomorrow at 3PM", {"Dentist", "tomorrow", 15, 0, true}},
        {"lunch next Monday", {"lunch", "next_monday", std::nullopt, 0, true}},
        {"점심시간에 약 먹기", {"약 먹기", "today", 12, 0, false}},
        {"아침 7시 운동", {"운동", "today", 7, 0, false}},
        {"아침 운동", {"운동", "today", 8, 0, false}},
        {"우유 사기 알려줘", {"우유 사기", "today", std::nullopt, 0, false}},
        {"알려줘", {"알려줘", "today", std::nullopt, 0, false}},
        {"내일 ５시 회의를", {"회의", "tomorrow", 5, 0, true}},
    };
    for (const Case& c : cases) {
        const auto parsed = parse(c.text);
        ASSERT_TRUE(parsed) << c.text;
        EXPECT_EQ(*parsed, c.expected) << c.text;
    }
    for (const char* nothing : {"", "  ", "내일", "오후 3시", "tomorrow at 3pm"})
        EXPECT_FALSE(parse(nothing)) << nothing;
}

TEST(DateTimeExpressionParser, APastTimeWithoutDateWordRollsToTheSameClockTimeTomorrow) {
    // Across the spring change in each zone: the next day is a calendar day, not 24 hours.
    struct Zone {
        const char* id;
        int year, month, day;  // the day before the change
    };
    for (const Zone zone : {Zone{"America/New_York", 2026, 3, 7},
                            Zone{"Europe/Berlin", 2026, 3, 28}, Zone{"Asia/Seoul", 2026, 3, 7}}) {
        const GregorianCalendar calendar(zone.id, "en_US");
        const TimePoint threeOClock = *calendar.date(zone.year, zone.month, zone.day, 3);
        const TimePoint fourPM = *calendar.date(zone.year, zone.month, zone.day, 16);
        const TimePoint rolled =
            DateTimeExpressionParser::rollingPastTimeForward(threeOClock, false, fourPM, calendar);
        const DateParts parts = calendar.parts(rolled);
        EXPECT_EQ(std::tuple(parts.day, parts.hour, parts.minute), std::tuple(zone.day + 1, 3, 0))
            << zone.id;
        EXPECT_EQ(
            DateTimeExpressionParser::rollingPastTimeForward(threeOClock, true, fourPM, calendar),
            threeOClock);
        EXPECT_EQ(
            DateTimeExpressionParser::rollingPastTimeForward(fourPM, false, threeOClock, calendar),
            fourPM);
        // At exactly now it has passed.
        EXPECT_NE(DateTimeExpressionParser::rollingPastTimeForward(fourPM, false, fourPM, calendar),
                  fourPM);
    }
}

}  // namespace
}  // namespace nuvrel::personal
