#include "pipeline/currency_fast_path.h"

#include <algorithm>
#include <string>
#include <vector>

#include "base/regex.h"
#include "base/text.h"
#include "pipeline/fast_path_yield.h"

namespace nuvrel::pipeline::CurrencyFastPath {
namespace {

using answers::CurrencyCode;
namespace tables = answers::CurrencyFastPath;

constexpr std::string_view magnitudes[] = {"천", "만", "억", "조"};

double magnitude(std::string_view word) {
    if (word == "천") return 1e3;
    if (word == "만") return 1e4;
    if (word == "억") return 1e8;
    if (word == "조") return 1e12;
    return 1;
}

std::string symbolAlternatives() {
    std::string joined;
    for (const auto& [symbol, code] : tables::symbolTable()) {
        if (!joined.empty()) joined += '|';
        joined += symbol == "$" ? "\\$" : std::string(symbol);
    }
    return joined;
}

// Longest first, so that "dollars" is tried before "dollar" and "원화" before "원".
std::string wordAlternatives() {
    std::vector<std::string_view> sorted;
    for (const auto& [word, code] : tables::wordTable()) sorted.push_back(word);
    std::stable_sort(sorted.begin(), sorted.end(), [](std::string_view a, std::string_view b) {
        return base::text::count(a) > base::text::count(b);
    });
    std::string joined;
    for (std::string_view word : sorted) {
        if (!joined.empty()) joined += '|';
        joined += word;
    }
    return joined;
}

const base::Regex& amountRegex() {
    static const base::Regex regex = [] {
        const std::string sym = symbolAlternatives();
        std::string mag;
        for (std::string_view word : magnitudes)
            mag += (mag.empty() ? "" : "|") + std::string(word);
        return base::Regex("(?:(" + sym + R"()\s*(\d[\d,]*\.?\d*))|(?:(\d[\d,]*\.?\d*)\s*()" + mag +
                               R"()?\s*((?:)" + wordAlternatives() + ")(?![A-Za-z-])|" + sym + "))",
                           base::Regex::caseInsensitive);
    }();
    return regex;
}

const base::Regex& bareTokenRegex() {
    static const base::Regex regex(
        symbolAlternatives() + R"(|\b(?:)" + wordAlternatives() + R"()\b)",
        base::Regex::caseInsensitive);
    return regex;
}

std::optional<CurrencyCode> codeOfToken(std::string_view token) {
    if (base::text::count(token) == 1) {
        if (auto code = tables::symbolToCurrency(token)) return code;
    }
    return tables::wordToCurrency(base::text::lower(token));
}

struct AmountAndCurrency {
    double amount;
    CurrencyCode code;
    std::size_t end;
};

std::optional<AmountAndCurrency> firstAmountAndCurrency(std::string_view text) {
    const auto match = amountRegex().firstMatch(text);
    if (!match) return std::nullopt;
    std::string_view token, amountText;
    double factor = 1;
    if (match->matched(1)) {
        token = match->group(1);
        amountText = match->group(2);
    } else {
        amountText = match->group(3);
        token = match->group(5);
        if (match->matched(4)) factor = magnitude(match->group(4));
    }
    const auto amount = base::text::parseDecimal(base::text::replaceAll(amountText, ",", ""));
    if (!amount) return std::nullopt;
    const auto code = codeOfToken(token);
    if (!code) return std::nullopt;
    return AmountAndCurrency{*amount * factor, *code, match->end()};
}

std::optional<CurrencyCode> firstCurrencyToken(std::string_view text) {
    const auto match = bareTokenRegex().firstMatch(text);
    if (!match) return std::nullopt;
    return codeOfToken(match->group());
}

}  // namespace

std::optional<answers::CurrencyConversionRequest> match(std::string_view text) {
    if (FastPathYield::shouldYield(text)) return std::nullopt;
    const auto found = firstAmountAndCurrency(text);
    if (!found) return std::nullopt;
    const auto target = firstCurrencyToken(text.substr(found->end));
    answers::CurrencyConversionRequest request{found->amount, found->code, CurrencyCode::krw};
    if (target && *target != found->code) {
        request.to = *target;
    } else {
        request.to = found->code == CurrencyCode::krw ? CurrencyCode::usd : CurrencyCode::krw;
    }
    return request;
}

}  // namespace nuvrel::pipeline::CurrencyFastPath
