#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <vector>

#include "base/cancellation.h"
#include "wayfen/duckduckgo_request_pacer.h"

namespace wayfen {
namespace {

using namespace std::chrono_literals;
using TimePoint = std::chrono::steady_clock::time_point;

// A clock that moves only when told to, and a sleep that records and can move it.
struct FakeTime {
    std::shared_ptr<TimePoint> now = std::make_shared<TimePoint>(TimePoint{} + 1000s);
    std::shared_ptr<std::vector<std::chrono::nanoseconds>> sleeps =
        std::make_shared<std::vector<std::chrono::nanoseconds>>();
    std::shared_ptr<bool> sleepAdvancesClock = std::make_shared<bool>(false);
    std::shared_ptr<bool> sleepIsCancelled = std::make_shared<bool>(false);

    DuckDuckGoRequestPacer pacer(double seconds) const {
        return DuckDuckGoRequestPacer(
            std::chrono::duration<double>(seconds), [now = now] { return *now; },
            [*this](std::chrono::nanoseconds d) {
                sleeps->push_back(d);
                if (*sleepIsCancelled) throw nuvrel::base::Cancelled();
                if (*sleepAdvancesClock) *now += d;
            });
    }
};

TEST(DuckDuckGoRequestPacer, SpacesTurnsByTheMinimumInterval) {
    FakeTime time;
    auto pacer = time.pacer(2.0);

    pacer.waitForTurn();
    EXPECT_TRUE(time.sleeps->empty());
    pacer.waitForTurn();
    ASSERT_EQ(time.sleeps->size(), 1u);
    EXPECT_EQ(time.sleeps->at(0), 2'000'000'000ns);

    *time.now += 500ms;
    pacer.waitForTurn();
    ASSERT_EQ(time.sleeps->size(), 2u);
    EXPECT_EQ(time.sleeps->at(1), 1'500'000'000ns);

    *time.now += 2s;
    pacer.waitForTurn();
    EXPECT_EQ(time.sleeps->size(), 2u);
}

TEST(DuckDuckGoRequestPacer, TurnStartsWhenTheWaitIsOver) {
    FakeTime time;
    *time.sleepAdvancesClock = true;
    auto pacer = time.pacer(0.3);

    pacer.waitForTurn();
    pacer.waitForTurn();  // sleeps 0.3 s, so this turn starts 0.3 s later
    *time.now += 100ms;
    pacer.waitForTurn();

    ASSERT_EQ(time.sleeps->size(), 2u);
    EXPECT_EQ(time.sleeps->at(0), 300ms);
    EXPECT_EQ(time.sleeps->at(1), 200ms);
}

TEST(DuckDuckGoRequestPacer, CancelledSleepLeavesTheLastTurnAsItWas) {
    FakeTime time;
    auto pacer = time.pacer(2.0);
    pacer.waitForTurn();
    *time.now += 1s;

    *time.sleepIsCancelled = true;
    EXPECT_THROW(pacer.waitForTurn(), nuvrel::base::Cancelled);
    *time.sleepIsCancelled = false;
    pacer.waitForTurn();

    ASSERT_EQ(time.sleeps->size(), 2u);
    EXPECT_EQ(time.sleeps->at(1), 1s);
}

}  // namespace
}  // namespace wayfen
