#pragma once
// Times as text, to whole seconds (a fraction is dropped, never rounded up).

#include <chrono>
#include <string>

namespace nuvrel::base {

// strftime of the time, in UTC or in the local time zone.
std::string formatTime(std::chrono::system_clock::time_point time, const char* format, bool utc);

// "2026-11-22T07:15:03Z".
std::string iso8601Timestamp(std::chrono::system_clock::time_point time);

}  // namespace nuvrel::base
