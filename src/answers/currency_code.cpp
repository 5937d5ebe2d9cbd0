#include "answers/currency_code.h"

#include <utility>

#include "base/text.h"

namespace nuvrel::answers {

std::string_view rawValue(CurrencyCode code) {
    switch (code) {
        case CurrencyCode::usd:
            return "USD";
        case CurrencyCode::krw:
            return "KRW";
        case CurrencyCode::jpy:
            return "JPY";
        case CurrencyCode::eur:
            return "EUR";
        case CurrencyCode::gbp:
            return "GBP";
        case CurrencyCode::cny:
            return "CNY";
    }
    return {};
}

namespace CurrencyFastPath {

namespace {

constexpr std::pair<std::string_view, CurrencyCode> symbols[] = {
    {"$", CurrencyCode::usd}, {"₩", CurrencyCode::krw}, {"¥", CurrencyCode::jpy},
    {"€", CurrencyCode::eur}, {"£", CurrencyCode::gbp},
};

constexpr std::pair<std::string_view, CurrencyCode> words[] = {
    {"달러", CurrencyCode::usd},   {"dollar", CurrencyCode::usd}, {"dollars", CurrencyCode::usd},
    {"usd", CurrencyCode::usd},    {"원", CurrencyCode::krw},     {"원화", CurrencyCode::krw},
    {"won", CurrencyCode::krw},    {"krw", CurrencyCode::krw},    {"엔", CurrencyCode::jpy},
    {"엔화", CurrencyCode::jpy},   {"yen", CurrencyCode::jpy},    {"jpy", CurrencyCode::jpy},
    {"유로", CurrencyCode::eur},   {"euro", CurrencyCode::eur},   {"euros", CurrencyCode::eur},
    {"eur", CurrencyCode::eur},    {"파운드", CurrencyCode::gbp}, {"pound", CurrencyCode::gbp},
    {"pounds", CurrencyCode::gbp}, {"gbp", CurrencyCode::gbp},    {"위안", CurrencyCode::cny},
    {"yuan", CurrencyCode::cny},   {"rmb", CurrencyCode::cny},    {"cny", CurrencyCode::cny},
};

template <std::size_t N>
std::optional<CurrencyCode> lookUp(const std::pair<std::string_view, CurrencyCode> (&table)[N],
                                   std::string_view key) {
    for (const auto& [text, code] : table) {
        if (text == key) return code;
    }
    return std::nullopt;
}

}  // namespace

CurrencyTable symbolTable() {
    return symbols;
}

CurrencyTable wordTable() {
    return words;
}

std::optional<CurrencyCode> symbolToCurrency(std::string_view symbol) {
    return lookUp(symbols, symbol);
}

std::optional<CurrencyCode> wordToCurrency(std::string_view word) {
    return lookUp(words, word);
}

std::optional<CurrencyCode> currencyCode(std::string_view text) {
    const std::string trimmed = base::text::trim(text);
    if (auto code = wordToCurrency(base::text::lower(trimmed))) return code;
    const std::string upper = base::text::upper(trimmed);
    for (CurrencyCode code : allCurrencyCodes) {
        if (rawValue(code) == upper) return code;
    }
    return std::nullopt;
}

}  // namespace CurrencyFastPath

}  // namespace nuvrel::answers
