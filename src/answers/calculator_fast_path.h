#pragma once
// Answers sums, "percent of" questions and unit conversions from the query text alone: no
// model, no network. Strict by design: whatever it is not sure of gives nothing, and the
// query goes on down the cascade. Pure, thread-safe, never throws.

#include <optional>
#include <string_view>

#include "answers/calc_fillers.h"
#include "answers/calc_number_format.h"
#include "answers/calc_result.h"
#include "answers/unit_conversion.h"
#include "base/regex.h"

namespace nuvrel::answers::CalculatorFastPath {

// The only characters an arithmetic query may hold once its fillers are gone.
inline constexpr std::string_view arithmeticAllowedCharacters = "0123456789+-*/^%().=? \t\n";

// Tries matchPercentageOf, matchArithmetic, matchUnitConversion in that order; the query as
// typed.
std::optional<CalcResult> match(std::string_view query);

// "15% of 200" → "15% of 200 = 30"; "100 - 15% of 200" → "100 - 15% of 200 = 70".
std::optional<CalcResult> matchPercentageOf(std::string_view query);
// "2*(3+4)" → "2 × (3 + 4) = 14". Only the characters above; idioms such as "24/7" or
// "2024-01-15" are refused.
std::optional<CalcResult> matchArithmetic(std::string_view query);

// Case-insensitive; groups: 1 optional base with its sign, 2 the operator after it,
// 3 the percentage, 4 the amount.
const base::Regex& percentageOfRegex();

// A phone number, date, fraction or range written without blanks ("010-1234-5678", "3/4",
// "+82-10-1234"): digits joined only by "-" or "/".
bool looksLikeNonMathNumericIdiom(std::string_view text);

}  // namespace nuvrel::answers::CalculatorFastPath
