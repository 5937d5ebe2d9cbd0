#include "answers/calculator_fast_path.h"

#include <array>
#include <cmath>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "answers/arithmetic.h"
#include "base/text.h"

namespace nuvrel::answers::CalculatorFastPath {
namespace {

constexpr std::array<bool, 256> allowedTable = [] {
    std::array<bool, 256> table{};
    for (const char c : arithmeticAllowedCharacters) table[static_cast<unsigned char>(c)] = true;
    return table;
}();

// Both match functions below take the text with its fillers already removed, so that match()
// removes them once for both.

std::optional<CalcResult> percentageOf(std::string_view withoutFillers) {
    const std::string_view text = base::text::trimView(withoutFillers);
    // Most queries hold no "%": spare them the regular expression.
    if (text.find('%') == std::string_view::npos) return std::nullopt;
    const std::optional<base::RegexMatch> found = percentageOfRegex().firstMatch(text);
    if (!found) return std::nullopt;
    const std::optional<double> percentage = base::text::parseDecimal(found->group(3));
    const std::optional<double> amount = base::text::parseDecimal(found->group(4));
    if (!percentage || !amount) return std::nullopt;
    const double share = *percentage / 100 * *amount;
    std::string display;
    double result = share;
    // A base that does not parse (it overflowed) leaves the share alone, as a base-less sum.
    const std::optional<double> baseValue = found->matched(1) && found->matched(2)
                                                ? base::text::parseDecimal(found->group(1))
                                                : std::nullopt;
    if (baseValue && std::isfinite(*baseValue)) {
        result = found->group(2) == "+" ? *baseValue + share : *baseValue - share;
        display = std::string(found->group(1)) + " " + std::string(found->group(2)) + " ";
    }
    if (!std::isfinite(result)) return std::nullopt;
    display += std::string(found->group(3)) + "% of " + std::string(found->group(4)) + " = " +
               formatNumber(result, 2);
    return CalcResult{std::move(display)};
}

std::optional<CalcResult> arithmetic(std::string_view withoutFillers) {
    if (withoutFillers.empty()) return std::nullopt;
    for (const char c : withoutFillers) {
        if (!allowedTable[static_cast<unsigned char>(c)]) return std::nullopt;
    }
    constexpr std::string_view edge = "=? \t\n";
    const std::size_t first = withoutFillers.find_first_not_of(edge);
    if (first == std::string_view::npos) return std::nullopt;
    const std::string_view text =
        withoutFillers.substr(first, withoutFillers.find_last_not_of(edge) - first + 1);
    if (looksLikeNonMathNumericIdiom(text)) return std::nullopt;
    if (text.find_first_of("+-*/^%") == std::string_view::npos) return std::nullopt;

    const std::optional<std::vector<ArithmeticToken>> tokens = ArithmeticTokenizer::tokenize(text);
    if (!tokens || tokens->empty()) return std::nullopt;
    ArithmeticParser parser(*tokens);
    const std::optional<double> value = parser.parseExpression();
    if (!value || !parser.atEnd() || !std::isfinite(*value)) return std::nullopt;
    return CalcResult{ArithmeticTokenizer::prettyPrint(*tokens) + " = " + formatNumber(*value, 6)};
}

}  // namespace

const base::Regex& percentageOfRegex() {
    // noexcept: a pattern that does not compile is a programming error and ends the process.
    static const base::Regex regex = []() noexcept {
        return base::Regex(
            R"(^\s*(?:([+-]?\d+(?:\.\d+)?)\s*([+\-])\s*)?(\d+(?:\.\d+)?)\s*%\s*of\s+(\d+(?:\.\d+)?)\s*\??\s*$)",
            base::Regex::caseInsensitive);
    }();
    return regex;
}

bool looksLikeNonMathNumericIdiom(std::string_view text) {
    static const base::Regex idiom = []() noexcept {
        return base::Regex(R"(^\+?\d+([-/]\d+)+$)");
    }();
    const std::string_view trimmed = base::text::trimView(text);
    // The pattern needs at least one separator; "2+2" need not pay for the regex.
    if (trimmed.find_first_of("-/") == std::string_view::npos) return false;
    return idiom.search(trimmed);
}

std::optional<CalcResult> matchPercentageOf(std::string_view query) {
    return percentageOf(removeFillers(query));
}

std::optional<CalcResult> matchArithmetic(std::string_view query) {
    return arithmetic(removeFillers(query));
}

std::optional<CalcResult> match(std::string_view query) {
    // Matching refuses texts beyond the regex layer's size limit by throwing, and allocation
    // can fail; a fast path answers nothing rather than fail the run. (A pattern that does not
    // compile never gets here: it ends the process.)
    try {
        const std::string withoutFillers = removeFillers(query);
        if (auto result = percentageOf(withoutFillers)) return result;
        if (auto result = arithmetic(withoutFillers)) return result;
        return matchUnitConversion(query);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

}  // namespace nuvrel::answers::CalculatorFastPath
