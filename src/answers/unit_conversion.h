#pragma once
// Unit conversions typed as "<number> <unit> [to|in] <unit>", with Korean particles
// ("10km를 마일로"): length, weight, binary data sizes and the two temperature scales.
// The tables are built once on first use; everything here is pure and thread-safe.

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "answers/calc_result.h"
#include "base/regex.h"

namespace nuvrel::answers::CalculatorFastPath {

struct UnitKind {
    // A unit that is a fixed multiple of its category's base (metre, gram, byte).
    struct Linear {
        std::string category;
        double factorToBase = 1;
        bool operator==(const Linear&) const = default;
    };
    struct Celsius {
        bool operator==(const Celsius&) const = default;
    };
    struct Fahrenheit {
        bool operator==(const Fahrenheit&) const = default;
    };

    std::variant<Linear, Celsius, Fahrenheit> value;

    static UnitKind linear(std::string category, double factorToBase) {
        return {Linear{std::move(category), factorToBase}};
    }
    static UnitKind celsius() { return {Celsius{}}; }
    static UnitKind fahrenheit() { return {Fahrenheit{}}; }

    bool operator==(const UnitKind&) const = default;
};

struct UnitAlias {
    std::string alias;  // a spelling accepted in a query, in lower case
    UnitKind kind;
    std::string canonicalSymbol;  // what the result prints
    bool operator==(const UnitAlias&) const = default;
};

// Symbols that take an "s" when their number is not 1.
inline constexpr std::array<std::string_view, 2> pluralizableSymbols = {"mile", "ton"};

// Every alias, stably sorted by length in characters, longest first, so that "miles" is tried
// before "m" and "tons" before "ton".
const std::vector<UnitAlias>& unitAliases();
// The sorted aliases, regex-escaped, joined by "|".
const std::string& unitAlternationPattern();
// Case-insensitive; groups: 1 the number, 2 the source unit, 3 the target unit.
const base::Regex& unitConversionRegex();

// The first alias in sorted order equal to the lower-cased text.
std::optional<UnitAlias> resolveUnitAlias(std::string_view text);

// Within one linear category by the factors, or between temperature scales. Nothing across
// categories or between a temperature and a linear unit.
std::optional<double> convert(double value, const UnitKind& from, const UnitKind& to);

// "5 kg in lbs" → "5 kg = 11.02 lb". Nothing unless the whole query is one conversion with a
// finite result.
std::optional<CalcResult> matchUnitConversion(std::string_view query);

}  // namespace nuvrel::answers::CalculatorFastPath
