#pragma once
// What the date-time expression parser reads out of a reminder or event phrase ("call mom
// tomorrow at 3pm"). The parser itself lives beside this record once it lands; until then
// callers receive the parse as a function.

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::pipeline::DateTimeExpressionParser {

struct Result {
    // The text left after the date word, the time and the request verb are removed.
    std::string title{};
    // One token of the date vocabulary ("tomorrow", "next_friday", ...); "today" when the text
    // named no date.
    std::string dateToken{};
    // On a 24-hour clock; absent when no time was found.
    std::optional<int> hour{};
    // 0 when no time was found or none was said.
    int minute = 0;
    bool hasExplicitDateWord = false;

    bool operator==(const Result&) const = default;
};

// A parse of one text: nothing when it holds no usable date or time expression.
using Parse = std::function<std::optional<Result>(std::string_view)>;

}  // namespace nuvrel::pipeline::DateTimeExpressionParser
