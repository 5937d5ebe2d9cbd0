#pragma once
// Helpers for the sum types of core, which wrap a std::variant whose alternatives are the cases.

#include <type_traits>
#include <variant>

namespace nuvrel::core {

template <typename T, typename Variant>
struct IsVariantAlternative : std::false_type {};

template <typename T, typename... Alternatives>
struct IsVariantAlternative<T, std::variant<Alternatives...>>
    : std::bool_constant<(std::is_same_v<T, Alternatives> || ...)> {};

// Exactly one of the variant's alternatives, after removing references and const.
template <typename T, typename Variant>
concept VariantCase = IsVariantAlternative<std::remove_cvref_t<T>, Variant>::value;

}  // namespace nuvrel::core
