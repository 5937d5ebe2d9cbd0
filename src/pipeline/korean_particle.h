#pragma once
// Turns an inflected Korean word back into its noun: "사진을 좀" → "사진". It cannot tell a
// particle from a noun's own last syllable, so a noun ending in "은" loses it; that
// over-stripping is accepted.

#include <array>
#include <string>
#include <string_view>

namespace nuvrel::pipeline::KoreanParticle {

inline constexpr std::string_view trailingPunctuation = "?？!！.。~…";
inline constexpr std::array<std::string_view, 4> trailingParticles = {"을", "를", "은", "는"};
inline constexpr std::array<std::string_view, 2> trailingFillers = {"좀", "쫌"};

// Trims, then strips a trailing particle and a trailing filler, in either order and repeatedly,
// trimming after each.
std::string stripTrailingObjectParticle(std::string_view text);
// Trims, drops trailing characters of trailingPunctuation, trims again.
std::string stripTrailingPunctuation(std::string_view text);

}  // namespace nuvrel::pipeline::KoreanParticle
