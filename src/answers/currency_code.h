#pragma once
// The currencies the launcher converts between, and how the user and the model name them.

#include <array>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace nuvrel::answers {

enum class CurrencyCode { usd, krw, jpy, eur, gbp, cny };

inline constexpr std::array<CurrencyCode, 6> allCurrencyCodes{CurrencyCode::usd, CurrencyCode::krw,
                                                              CurrencyCode::jpy, CurrencyCode::eur,
                                                              CurrencyCode::gbp, CurrencyCode::cny};

// "USD", "KRW", ...
std::string_view rawValue(CurrencyCode code);

struct CurrencyConversionRequest {
    double amount = 0;
    CurrencyCode from = CurrencyCode::usd;
    CurrencyCode to = CurrencyCode::krw;
    bool operator==(const CurrencyConversionRequest&) const = default;
};

namespace CurrencyFastPath {

using CurrencyTable = std::span<const std::pair<std::string_view, CurrencyCode>>;
// The tables in their order: the symbols, and the words in lower case.
CurrencyTable symbolTable();
CurrencyTable wordTable();

// "$" → usd; one character of text.
std::optional<CurrencyCode> symbolToCurrency(std::string_view symbol);
// A currency word in lower case: "달러", "dollars", "usd", ...
std::optional<CurrencyCode> wordToCurrency(std::string_view word);
// A currency as the model put it in a slot: a word of the table in any case, or a code.
std::optional<CurrencyCode> currencyCode(std::string_view text);

}  // namespace CurrencyFastPath

}  // namespace nuvrel::answers
