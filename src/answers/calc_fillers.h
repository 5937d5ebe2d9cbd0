#pragma once
// Filler phrases that wrap a sum without being part of it: "calc 2+2", "what is 15% of 200",
// "3+4 계산해줘".

#include <array>
#include <string>
#include <string_view>

namespace nuvrel::answers::CalculatorFastPath {

// Long forms stand before their own prefixes so that removing one leaves nothing of it behind.
inline constexpr std::array<std::string_view, 19> calcTriggerWords = {
    "계산해주세요", "계산해줘", "계산해봐", "계산 좀",   "계산좀", "계산", "얼마입니까",
    "얼마인가요",   "얼마예요", "얼마야",   "얼마",      "결과는", "결과", "값은",
    "what's",       "what is",  "compute",  "calculate", "calc",
};

// Replaces every occurrence of each trigger word, in list order, by one blank. The search is
// case-insensitive and literal, and finds words inside other words ("calcium" → " ium").
std::string removeFillers(std::string_view text);

// Every case-insensitive occurrence of `needle`, left to right and without rescanning the
// replacement, replaced by `replacement`. Case is compared by simple case folding, code point
// by code point; ill-formed bytes pass through and match nothing.
std::string replaceAllIgnoringCase(std::string_view text, std::string_view needle,
                                   std::string_view replacement);

}  // namespace nuvrel::answers::CalculatorFastPath
