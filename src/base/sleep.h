#pragma once
// The injected sleep. The live one wakes early and throws Cancelled when the current task is
// asked to stop; tests inject one that records the durations and returns.

#include <chrono>
#include <functional>

namespace nuvrel::base {

using SleepFn = std::function<void(std::chrono::nanoseconds)>;

void liveSleep(std::chrono::nanoseconds duration);

}  // namespace nuvrel::base
