#include "personal/timer_fast_path.h"

#include <gtest/gtest.h>

namespace nuvrel::personal {
namespace {

TEST(TimerFastPath, ReadsDurationsInFourLanguages) {
    struct Case {
        const char* query;
        std::int64_t seconds;
        const char* display;
    };
    const Case cases[] = {
        {"5분 타이머", 300, "5분"},
        {"タイマー3分", 180, "3 minutes"},
        {"计时器10分钟", 600, "10 minutes"},
        {"set a 5 minute timer", 300, "5 minutes"},
        {"timer for an hour", 3600, "1 hour"},
        {"timer for a quarter of an hour", 900, "15 minutes"},
        {"Timer for Half an Hour", 1800, "30 minutes"},
        {"타이머 1시간 30분 10초", 5410, "1시간 30분 10초"},
        {"2 hour 5분 타이머", 7500, "2시간 5분"},
        {"timer 1 hr 1 min 1 sec", 3661, "1 hour 1 minute 1 second"},
        {"5 min 5 min timer", 600, "10 minutes"},
        {"timer for an hour and a half", 3600, "1 hour"},
        {"타임머 ５분", 300, "5분"},
    };
    for (const Case& c : cases) {
        const auto request = TimerFastPath::match(c.query);
        ASSERT_TRUE(request) << c.query;
        EXPECT_EQ(*request, (core::TimerRequest{c.seconds, c.display})) << c.query;
    }
    for (const char* nothing :
         {"5분", "timers 5 min", "timer-app 5 min", "egg-timer 5 min", "3분의 1 타이머",
          "0분 타이머", "timer 5 minx", "remind me in 10 minutes timer",
          "타이머 100000000000000000000분", "타이머 007766279631452241919분"})
        EXPECT_FALSE(TimerFastPath::match(nothing)) << nothing;
    EXPECT_EQ(TimerFastPath::request("ten minutes"), std::nullopt);
    EXPECT_EQ(TimerFastPath::request("10 minutes"), (core::TimerRequest{600, "10 minutes"}));
}

TEST(TimerFastPath, CancelsOnlyWithoutASetVerb) {
    for (const char* cancel : {"타이머 취소", "타이머 꺼줘", "cancel timer", "Stop the timer!",
                               "タイマーキャンセル", "取消计时器"})
        EXPECT_TRUE(TimerFastPath::matchCancel(cancel)) << cancel;
    for (const char* other : {"타이머 설정 취소", "cancel and set a timer for 5 minutes",
                              "stop the timer in 5 minutes", "cancel timers", "취소"})
        EXPECT_FALSE(TimerFastPath::matchCancel(other)) << other;
}

}  // namespace
}  // namespace nuvrel::personal
