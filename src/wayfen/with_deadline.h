#pragma once
// Runs an operation against a timer: whichever finishes first decides, and the other is
// cancelled and waited for before the call returns. The timer sleeps through an injected
// SleepFn, so that tests drive the deadline without waiting.
//
// Threading: blocks on the caller's task; the operation and the timer run on child tasks that
// inherit the caller's stop request, so cancelling the caller ends both (base::Cancelled).

#include <chrono>
#include <cmath>
#include <optional>
#include <type_traits>
#include <utility>

#include "base/sleep.h"
#include "base/task.h"
#include "wayfen/page_transport.h"

namespace wayfen {

// Whole nanoseconds, rounded; a negative or NaN time is no time at all, and a huge one is
// capped instead of overflowing.
inline std::chrono::nanoseconds deadlineDuration(double seconds) {
    const double nanoseconds = seconds * 1e9;
    if (!(nanoseconds > 0)) return std::chrono::nanoseconds(0);
    constexpr auto longest = std::chrono::nanoseconds::max();
    if (nanoseconds >= static_cast<double>(longest.count())) return longest;
    return std::chrono::nanoseconds(std::llround(nanoseconds));
}

// The operation's value or error when it finishes first; PageFetchError::timedOut when the
// timer does.
template <class Operation>
auto withDeadline(double seconds, const nuvrel::base::SleepFn& sleep, Operation&& operation)
    -> std::invoke_result_t<Operation&> {
    using Value = std::invoke_result_t<Operation&>;
    static_assert(!std::is_void_v<Value>, "withDeadline needs an operation with a value");

    // The timer has no value of its own, hence the optional.
    nuvrel::base::TaskGroup<std::optional<Value>> group;
    group.add([&operation]() -> std::optional<Value> { return std::optional<Value>(operation()); });
    group.add([&sleep, duration = deadlineDuration(seconds)]() -> std::optional<Value> {
        sleep(duration);
        throw PageFetchError::timedOut();
    });
    // What the first child threw leaves here; the group's destructor then cancels the other
    // child and joins it, so nothing outlives the call.
    auto first = group.next();
    group.cancelAll();
    if (!first || !first->second) throw PageFetchError::timedOut();
    return std::move(*first->second);
}

}  // namespace wayfen
