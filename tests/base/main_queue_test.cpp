#include "base/main_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <vector>

#include "base/task.h"

namespace nuvrel::base {
namespace {

using namespace std::chrono_literals;

TEST(MainQueue, RunSyncRunsOnTheMainThreadAndCarriesValuesAndErrors) {
    MainQueue queue;
    std::atomic<bool> done{false};
    bool ranOnMain = false;
    int value = 0;
    bool threw = false;
    Task<void> worker([&] {
        value = queue.runSync([&] {
            ranOnMain = queue.isMainThread();
            return 7;
        });
        try {
            queue.runSync([]() -> int { throw std::runtime_error("x"); });
        } catch (const std::runtime_error&) {
            threw = true;
        }
        done = true;
        queue.wake();
    });
    queue.runUntil([&] { return done.load(); });
    worker.value();
    EXPECT_TRUE(ranOnMain);
    EXPECT_EQ(value, 7);
    EXPECT_TRUE(threw);
}

TEST(MainQueue, RunSyncOnTheMainThreadRunsInline) {
    MainQueue queue;
    EXPECT_EQ(queue.runSync([] { return 3; }), 3);
    EXPECT_EQ(queue.drain(), 0u);
}

TEST(MainQueue, JobsRunInPostingOrder) {
    MainQueue queue;
    std::vector<int> order;
    for (int i = 0; i < 4; ++i) queue.post([&, i] { order.push_back(i); });
    EXPECT_EQ(queue.drain(), 4u);
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3}));
}

TEST(MainQueue, ACancelledWaiterDropsItsJobAndDoesNotDeadlockAJoin) {
    MainQueue queue;
    std::atomic<bool> jobRan{false};
    {
        Task<void> worker([&] { queue.runSync([&] { jobRan = true; }); });
        std::this_thread::sleep_for(20ms);
        // The main thread is busy here (not draining): cancelling and joining must not hang.
    }
    queue.drain();
    EXPECT_FALSE(jobRan);
}

TEST(MainQueue, StopEndsRun) {
    MainQueue queue;
    Task<void> stopper([&] { queue.post([&] { queue.stop(); }); });
    queue.run();
    stopper.value();
    SUCCEED();
}

}  // namespace
}  // namespace nuvrel::base
