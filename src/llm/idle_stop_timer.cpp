#include "llm/idle_stop_timer.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "base/cancellation.h"

namespace nuvrel::llm {
namespace {

// Seconds as nanoseconds, clamped to the range a 64-bit count holds.
std::chrono::nanoseconds nanoseconds(double seconds) {
    const double count = seconds * 1e9;
    if (!(count > 0)) return std::chrono::nanoseconds(0);
    if (count >= double(std::numeric_limits<std::int64_t>::max()))
        return std::chrono::nanoseconds::max();
    return std::chrono::nanoseconds(std::int64_t(count));
}

}  // namespace

IdleStopTimer::IdleStopTimer(std::shared_ptr<ServerManaging> manager,
                             std::optional<double> intervalSeconds, base::SleepFn sleepFn)
    : manager_(std::move(manager)),
      intervalSeconds_(intervalSeconds),
      sleepFn_(std::move(sleepFn)) {}

IdleStopTimer::~IdleStopTimer() {
    disarm();
}

void IdleStopTimer::disarm() {
    std::unique_ptr<base::Task<void>> pending;
    {
        std::lock_guard lock(mutex_);
        pending = std::move(idleStopTask_);
    }
    // Destroying the task cancels its sleep and joins it, outside the lock.
    if (pending) pending->cancel();
}

void IdleStopTimer::arm() {
    if (!intervalSeconds_) return;
    disarm();
    // A fresh scope: the caller's stop request must not cancel the idle stop.
    base::CancellationScope detached(base::CancellationState::make());
    auto task = std::make_unique<base::Task<void>>(
        [manager = manager_, sleep = sleepFn_, wait = nanoseconds(*intervalSeconds_)] {
            sleep(wait);
            if (base::isCancelled()) return;
            manager->stop();
        });
    std::unique_ptr<base::Task<void>> replaced;
    {
        std::lock_guard lock(mutex_);
        replaced = std::exchange(idleStopTask_, std::move(task));
    }
    if (replaced) replaced->cancel();
}

}  // namespace nuvrel::llm
