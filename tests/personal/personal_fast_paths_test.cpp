#include <gtest/gtest.h>

#include "personal/calendar_fast_path.h"
#include "personal/reminder_fast_path.h"

namespace nuvrel::personal {
namespace {

TEST(ReminderFastPath, StrongPhrasesAlwaysWeakOnesOnlyWithADateOrTime) {
    struct Case {
        const char* query;
        ReminderCandidate expected;
    };
    const Case cases[] = {
        {"내일 아침 8시에 약 먹기 미리알림", {"약 먹기", "tomorrow", 8, 0, true}},
        {"약 먹기 미리알림 추가해줘요", {"약 먹기", "today", std::nullopt, 0, false}},
        {"메일 미리알림 추가해줘", {"메일", "today", std::nullopt, 0, false}},
        {"내일 3시 회의 알림", {"회의", "tomorrow", 3, 0, true}},
        {"remind me to call mom at 3pm", {"call mom", "today", 15, 0, false}},
        {"Remind Me To call Mom today at 3pm", {"call Mom", "today", 15, 0, true}},
    };
    for (const Case& c : cases) {
        const auto candidate = ReminderFastPath::match(c.query);
        ASSERT_TRUE(candidate) << c.query;
        EXPECT_EQ(*candidate, c.expected) << c.query;
    }
    for (const char* nothing : {"메일 알림", "메일 알림 설정해줘", "푸시 알림", "미리알림",
                                "remind me to tomorrow", "call mom at 3pm"})
        EXPECT_FALSE(ReminderFastPath::match(nothing)) << nothing;
}

TEST(DeleteFastPaths, KeepOnlyTheWordsThatNameTheItem) {
    struct ReminderCase {
        const char* query;
        const char* keyword;
    };
    for (const auto& c :
         {ReminderCase{"미리알림 삭제", ""}, ReminderCase{"우유 사기 미리알림 지워줘", "우유 사기"},
          ReminderCase{"delete the milk reminder", "milk"},
          ReminderCase{"Remove my Dentist reminders.", "Dentist"}}) {
        const auto candidate = ReminderDeleteFastPath::match(c.query);
        ASSERT_TRUE(candidate) << c.query;
        EXPECT_EQ(candidate->keyword, c.keyword) << c.query;
    }
    struct CalendarCase {
        const char* query;
        CalendarDeleteCandidate expected;
    };
    const CalendarCase calendarCases[] = {
        {"일정 삭제", {"today", "", false}},
        {"내일 회의 일정 취소해줘", {"tomorrow", "회의", true}},
        {"내일 일정 삭제", {"tomorrow", "", true}},
        {"delete the dentist event", {"today", "dentist", false}},
        {"delete the dentist event tomorrow at 3pm", {"tomorrow", "dentist", true}},
        {"明日 の 予定を削除して", {"tomorrow", "", true}},
    };
    for (const CalendarCase& c : calendarCases) {
        const auto candidate = CalendarDeleteFastPath::match(c.query);
        ASSERT_TRUE(candidate) << c.query;
        EXPECT_EQ(*candidate, c.expected) << c.query;
    }
    for (const char* nothing : {"delete the dentist", "dentist event", "타이머 취소", ""}) {
        EXPECT_FALSE(CalendarDeleteFastPath::match(nothing)) << nothing;
        EXPECT_FALSE(ReminderDeleteFastPath::match(nothing)) << nothing;
    }
}

TEST(CalendarAddEventFastPath, NeedsNoDateOrTime) {
    struct Case {
        const char* query;
        CalendarAddEventCandidate expected;
    };
    const Case cases[] = {
        {"내일 3시 치과 일정 추가해줘", {"치과", "tomorrow", 3, 0, true}},
        {"치과 일정 잡아줘", {"치과", "today", std::nullopt, 0, false}},
        {"add event Dentist tomorrow at 3pm", {"Dentist", "tomorrow", 15, 0, true}},
        {"Schedule Event Team sync next friday",
         {"Team sync", "next_friday", std::nullopt, 0, true}},
    };
    for (const Case& c : cases) {
        const auto candidate = CalendarAddEventFastPath::match(c.query);
        ASSERT_TRUE(candidate) << c.query;
        EXPECT_EQ(*candidate, c.expected) << c.query;
    }
    for (const char* nothing : {"일정 추가해줘", "add event tomorrow", "dentist tomorrow"})
        EXPECT_FALSE(CalendarAddEventFastPath::match(nothing)) << nothing;
}

}  // namespace
}  // namespace nuvrel::personal
