#pragma once
// The one lookup of an enumeration case by its raw value; each enumeration gives its cases
// and an overload of rawValue.

#include <initializer_list>
#include <iterator>
#include <optional>
#include <string_view>
#include <type_traits>

namespace nuvrel::core {

template <class Cases>
auto caseWithRawValue(const Cases& cases, std::string_view raw)
    -> std::optional<std::decay_t<decltype(*std::begin(cases))>> {
    for (const auto& value : cases) {
        if (rawValue(value) == raw) return value;
    }
    return std::nullopt;
}

}  // namespace nuvrel::core
