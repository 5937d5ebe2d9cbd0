#pragma once
// What the date-time expression parser reads out of a reminder or event phrase ("call mom
// tomorrow at 3pm"), as routed dispatch sees it: the parser's own record, and a parse handed
// in as a function so that tests can script it.

#include <functional>
#include <optional>
#include <string_view>

#include "personal/date_time_expression_parser.h"

namespace nuvrel::pipeline::DateTimeExpressionParser {

using Result = personal::DateTimeExpressionParser::Result;

// A parse of one text: nothing when it holds no usable date or time expression.
using Parse = std::function<std::optional<Result>(std::string_view)>;

}  // namespace nuvrel::pipeline::DateTimeExpressionParser
