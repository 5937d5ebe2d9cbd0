#pragma once
// A transport's timeoutInterval, in seconds, as the whole-call limit of one request.

#include <algorithm>
#include <chrono>
#include <cmath>

namespace wayfen {

inline std::chrono::milliseconds requestTimeout(double seconds) {
    if (!(seconds > 0)) return std::chrono::milliseconds(0);
    // A positive interval never rounds down to zero, which would mean no limit at all.
    return std::chrono::milliseconds(std::max<long long>(1, std::llround(seconds * 1000.0)));
}

}  // namespace wayfen
