#include "answers/unit_conversion.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <utility>

#include "answers/calc_number_format.h"
#include "base/text.h"

namespace nuvrel::answers::CalculatorFastPath {
namespace {

std::vector<UnitAlias> aliasTable() {
    std::vector<UnitAlias> table;
    const auto add = [&](const UnitKind& kind, std::string_view symbol,
                         std::initializer_list<std::string_view> aliases) {
        for (const std::string_view alias : aliases) {
            table.push_back({std::string(alias), kind, std::string(symbol)});
        }
    };
    // "in" is no inch (it is a connective here), "c" and "f" are no temperatures, and there is
    // no byte: each would turn ordinary phrases into conversions. Data sizes are binary.
    add(UnitKind::linear("length", 0.001), "mm", {"mm", "밀리미터", "밀리"});
    add(UnitKind::linear("length", 0.01), "cm", {"cm", "센티미터", "센티"});
    add(UnitKind::linear("length", 1000), "km", {"km", "킬로미터"});
    add(UnitKind::linear("length", 1609.344), "mile", {"miles", "mile", "마일"});
    add(UnitKind::linear("length", 0.3048), "ft", {"feet", "foot", "ft", "피트"});
    add(UnitKind::linear("length", 0.0254), "in", {"inches", "inch", "인치"});
    add(UnitKind::linear("length", 1), "m", {"m", "미터"});
    add(UnitKind::linear("weight", 1000), "kg", {"kg", "킬로그램"});
    add(UnitKind::linear("weight", 1000000), "ton", {"tonnes", "tonne", "tons", "ton", "톤"});
    add(UnitKind::linear("weight", 453.59237), "lb", {"lbs", "lb", "파운드"});
    add(UnitKind::linear("weight", 28.349523125), "oz", {"oz", "온스"});
    add(UnitKind::linear("weight", 1), "g", {"g", "그램", "그람"});
    add(UnitKind::linear("data", 1099511627776.0), "TB", {"tb", "테라바이트"});
    add(UnitKind::linear("data", 1073741824.0), "GB", {"gb", "기가바이트"});
    add(UnitKind::linear("data", 1048576.0), "MB", {"mb", "메가바이트"});
    add(UnitKind::linear("data", 1024), "KB", {"kb", "킬로바이트"});
    add(UnitKind::celsius(), "°C", {"celsius", "섭씨", "°c", "℃"});
    add(UnitKind::fahrenheit(), "°F", {"fahrenheit", "화씨", "°f", "℉"});
    return table;
}

// Escapes every ASCII character that the regex dialect treats specially.
std::string escapeForRegex(std::string_view literal) {
    static constexpr std::string_view metacharacters = R"(\^$.|?*+()[]{}-#&~/ )";
    std::string escaped;
    for (const char c : literal) {
        if (metacharacters.find(c) != std::string_view::npos) escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string withPlural(const std::string& symbol, double number) {
    const bool pluralizable = std::find(pluralizableSymbols.begin(), pluralizableSymbols.end(),
                                        symbol) != pluralizableSymbols.end();
    return pluralizable && std::fabs(number - 1) > 0.0001 ? symbol + "s" : symbol;
}

}  // namespace

const std::vector<UnitAlias>& unitAliases() {
    static const std::vector<UnitAlias> sorted = [] {
        std::vector<UnitAlias> table = aliasTable();
        std::stable_sort(table.begin(), table.end(), [](const UnitAlias& a, const UnitAlias& b) {
            return base::text::count(a.alias) > base::text::count(b.alias);
        });
        return table;
    }();
    return sorted;
}

const std::string& unitAlternationPattern() {
    static const std::string pattern = [] {
        std::string joined;
        for (const UnitAlias& alias : unitAliases()) {
            if (!joined.empty()) joined += '|';
            joined += escapeForRegex(alias.alias);
        }
        return joined;
    }();
    return pattern;
}

const base::Regex& unitConversionRegex() {
    // noexcept: a pattern that does not compile is a programming error and ends the process.
    static const base::Regex regex = []() noexcept {
        return base::Regex(R"(^\s*(\d+(?:\.\d+)?)\s*()" + unitAlternationPattern() +
                               R"()(?:을|를)?\s*(?:to|in)?\s*()" + unitAlternationPattern() +
                               R"()(?:로|으로)?\s*\??\s*$)",
                           base::Regex::caseInsensitive);
    }();
    return regex;
}

std::optional<UnitAlias> resolveUnitAlias(std::string_view text) {
    const std::string unit = base::text::lower(text);
    for (const UnitAlias& alias : unitAliases()) {
        if (alias.alias == unit) return alias;
    }
    return std::nullopt;
}

std::optional<double> convert(double value, const UnitKind& from, const UnitKind& to) {
    using Linear = UnitKind::Linear;
    std::optional<double> result;
    if (const auto* source = std::get_if<Linear>(&from.value)) {
        const auto* target = std::get_if<Linear>(&to.value);
        if (target && source->category == target->category) {
            result = value * source->factorToBase / target->factorToBase;
        }
    } else if (std::holds_alternative<Linear>(to.value)) {
        return std::nullopt;
    } else if (from.value.index() == to.value.index()) {
        result = value;
    } else if (std::holds_alternative<UnitKind::Celsius>(from.value)) {
        result = value * 9 / 5 + 32;
    } else {
        result = (value - 32) * 5 / 9;
    }
    if (result && !std::isfinite(*result)) return std::nullopt;
    return result;
}

std::optional<CalcResult> matchUnitConversion(std::string_view query) {
    const std::string_view text = base::text::trimView(query);
    if (text.empty()) return std::nullopt;
    // After trimming, the pattern can only match from a leading decimal digit (\d is \p{Nd});
    // most queries are refused here without the regex.
    std::size_t start = 0;
    const char32_t first = base::text::nextCodePoint(text, start);
    if (u_charType(static_cast<UChar32>(first)) != U_DECIMAL_DIGIT_NUMBER) return std::nullopt;
    const std::optional<base::RegexMatch> found = unitConversionRegex().firstMatch(text);
    if (!found) return std::nullopt;
    const std::string_view numberText = found->group(1);
    const std::optional<double> value = base::text::parseDecimal(numberText);
    if (!value) return std::nullopt;
    const std::optional<UnitAlias> from = resolveUnitAlias(found->group(2));
    const std::optional<UnitAlias> to = resolveUnitAlias(found->group(3));
    if (!from || !to) return std::nullopt;
    const std::optional<double> result = convert(*value, from->kind, to->kind);
    if (!result) return std::nullopt;
    return CalcResult{std::string(numberText) + " " + withPlural(from->canonicalSymbol, *value) +
                      " = " + formatNumber(*result, 2) + " " +
                      withPlural(to->canonicalSymbol, *result)};
}

}  // namespace nuvrel::answers::CalculatorFastPath
