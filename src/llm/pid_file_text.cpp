#include "llm/pid_file_text.h"

#include <charconv>

namespace nuvrel::llm::PIDFileText {

std::vector<std::string> fields(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    text = text.substr(first, text.find_last_not_of(blanks) - first + 1);

    std::vector<std::string> fields;
    while (!text.empty()) {
        const std::size_t colon = text.find(':');
        if (fields.size() == 2 || colon == std::string_view::npos) {
            fields.emplace_back(text);
            break;
        }
        if (colon > 0) fields.emplace_back(text.substr(0, colon));
        text.remove_prefix(colon + 1);
    }
    return fields;
}

std::optional<std::int32_t> parsePID(std::string_view text) {
    bool negative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (text.empty() || text.front() == '+' || text.front() == '-') return std::nullopt;
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    if (negative) value = -value;
    if (value < INT32_MIN || value > INT32_MAX) return std::nullopt;
    return static_cast<std::int32_t>(value);
}

}  // namespace nuvrel::llm::PIDFileText
