#include "base/time_text.h"

#include <ctime>

namespace nuvrel::base {

std::string formatTime(std::chrono::system_clock::time_point time, const char* format, bool utc) {
    const std::time_t seconds =
        std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(time));
    std::tm parts{};
    if (utc) {
        gmtime_r(&seconds, &parts);
    } else {
        localtime_r(&seconds, &parts);
    }
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, format, &parts);
    return std::string(text, length);
}

std::string iso8601Timestamp(std::chrono::system_clock::time_point time) {
    return formatTime(time, "%Y-%m-%dT%H:%M:%SZ", true);
}

}  // namespace nuvrel::base
