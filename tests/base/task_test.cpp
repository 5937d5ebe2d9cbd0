#include "base/task.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>

#include "base/sleep.h"

namespace nuvrel::base {
namespace {

using namespace std::chrono_literals;

TEST(Task, GivesItsValueOrRethrowsWhatItThrew) {
    Task<int> answer([] { return 42; });
    EXPECT_EQ(answer.value(), 42);

    Task<std::string> failing([]() -> std::string { throw std::runtime_error("boom"); });
    EXPECT_THROW(failing.value(), std::runtime_error);

    std::atomic<bool> ran{false};
    Task<void> effect([&] { ran = true; });
    effect.value();
    EXPECT_TRUE(ran);
}

TEST(Task, CancelWakesASleepingBodyAtOnce) {
    const auto start = std::chrono::steady_clock::now();
    Task<void> sleeper([] { liveSleep(30s); });
    std::this_thread::sleep_for(20ms);
    sleeper.cancel();
    EXPECT_THROW(sleeper.value(), Cancelled);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
}

TEST(Task, ChildrenInheritTheParentsStopRequestEvenAfterTheyStarted) {
    std::atomic<bool> childSawCancel{false};
    Task<void> parent([&] {
        Task<void> child([&] {
            try {
                liveSleep(30s);
            } catch (const Cancelled&) {
                childSawCancel = true;
                throw;
            }
        });
        child.value();
    });
    std::this_thread::sleep_for(20ms);
    parent.cancel();
    EXPECT_THROW(parent.value(), Cancelled);
    EXPECT_TRUE(childSawCancel);
}

TEST(Task, CancellingAChildLeavesTheParentRunning) {
    Task<bool> parent([] {
        Task<void> child([] { liveSleep(30s); });
        child.cancel();
        EXPECT_THROW(child.value(), Cancelled);
        return isCancelled();
    });
    EXPECT_FALSE(parent.value());
}

TEST(Task, ATaskStartedFromACancelledTaskStartsCancelled) {
    Task<bool> parent([] {
        currentCancellation()->cancel();
        Task<bool> child([] { return isCancelled(); });
        return child.value();
    });
    EXPECT_TRUE(parent.value());
}

TEST(Task, DestroyingATaskStopsAndJoinsIt) {
    std::atomic<bool> stopped{false};
    {
        Task<void> sleeper([&] {
            try {
                liveSleep(30s);
            } catch (const Cancelled&) {
                stopped = true;
            }
        });
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_TRUE(stopped);
}

TEST(TaskGroup, CollectsInAddOrderAndInCompletionOrder) {
    TaskGroup<int> group;
    group.add([] {
        liveSleep(60ms);
        return 1;
    });
    group.add([] { return 2; });
    auto first = group.next();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->first, 1u);
    EXPECT_EQ(first->second, 2);
    auto second = group.next();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->second, 1);
    EXPECT_FALSE(group.next());

    TaskGroup<int> ordered;
    for (int i = 0; i < 5; ++i)
        ordered.add([i] {
            liveSleep(std::chrono::milliseconds(5 * (5 - i)));
            return i;
        });
    EXPECT_EQ(ordered.waitAll(), (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST(TaskGroup, FirstFailureCancelsTheRestAndIsRethrown) {
    std::atomic<int> cancelledSiblings{0};
    TaskGroup<int> group;
    for (int i = 0; i < 3; ++i) {
        group.add([&] {
            try {
                liveSleep(30s);
            } catch (const Cancelled&) {
                ++cancelledSiblings;
                throw;
            }
            return 0;
        });
    }
    group.add([]() -> int { throw std::logic_error("first"); });
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THROW(group.waitAll(), std::logic_error);
    EXPECT_EQ(cancelledSiblings, 3);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
}

TEST(Cancellation, CallbacksRunOnceAndNotAfterRemoval) {
    auto state = CancellationState::make();
    int calls = 0, removedCalls = 0;
    state->addCallback([&] { ++calls; });
    auto removed = state->addCallback([&] { ++removedCalls; });
    state->removeCallback(removed);
    state->cancel();
    state->cancel();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(removedCalls, 0);

    int late = 0;
    state->addCallback([&] { ++late; });
    EXPECT_EQ(late, 1) << "a callback added after cancellation runs at once";
}

TEST(Cancellation, OutsideAnyTaskNothingIsCancelled) {
    EXPECT_FALSE(isCancelled());
    EXPECT_NO_THROW(checkCancellation());
    auto state = CancellationState::make();
    {
        CancellationScope scope(state);
        state->cancel();
        EXPECT_THROW(checkCancellation(), Cancelled);
    }
    EXPECT_FALSE(isCancelled()) << "the scope restores the previous state";
}

}  // namespace
}  // namespace nuvrel::base
