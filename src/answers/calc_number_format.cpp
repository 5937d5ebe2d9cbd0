#include "answers/calc_number_format.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <vector>

namespace nuvrel::answers::CalculatorFastPath {

std::string formatNumber(double value, int decimals) {
    if (std::isfinite(value) && value == std::trunc(value) && std::fabs(value) < 1e15) {
        char buffer[24];
        const auto end =
            std::to_chars(buffer, buffer + sizeof buffer, static_cast<std::int64_t>(value)).ptr;
        return std::string(buffer, end);
    }
    if (!std::isfinite(value)) return std::isnan(value) ? "nan" : (value < 0 ? "-inf" : "inf");
    // to_chars in fixed form is printf's "%.Nf" in the C locale: a German process locale must
    // not turn the point into a comma. 1e308 needs 309 digits before the point.
    decimals = std::clamp(decimals, 0, 100);
    std::vector<char> buffer(330 + static_cast<std::size_t>(decimals));
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                      std::chars_format::fixed, decimals);
    std::string text(buffer.data(), result.ptr);
    // Only a fraction loses its zeros; "%.0f" of 20.0 must stay "20".
    if (text.find('.') != std::string::npos) {
        while (!text.empty() && text.back() == '0') text.pop_back();
        if (!text.empty() && text.back() == '.') text.pop_back();
    }
    return text;
}

}  // namespace nuvrel::answers::CalculatorFastPath
