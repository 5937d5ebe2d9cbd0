#pragma once
// Code points of UTF-8 text. An ill-formed sequence reads as U+FFFD and is skipped as a whole
// (its maximal ill-formed part, at least one byte), the same way forwards and backwards.

#include <unicode/utf8.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace nuvrel::base::text {

// Decodes the code point starting at byte `pos` and moves `pos` past it. Requires
// pos < text.size().
inline char32_t nextCodePoint(std::string_view text, std::size_t& pos) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    if (bytes[pos] < 0x80) return bytes[pos++];
    UChar32 c;
    const std::size_t length = text.size();
    U8_NEXT_OR_FFFD(bytes, pos, length, c);
    return static_cast<char32_t>(c);
}

// Decodes the code point ending at byte `pos` and moves `pos` to its start. Requires pos > 0.
char32_t previousCodePoint(std::string_view text, std::size_t& pos);
// Appends the UTF-8 form of `c`; a surrogate or a value beyond U+10FFFF appends U+FFFD.
void appendUtf8(std::string& out, char32_t c);

std::u32string toUtf32(std::string_view text);
std::string fromUtf32(std::u32string_view text);
bool isValidUtf8(std::string_view text);
// The text with every ill-formed sequence replaced by U+FFFD.
std::string validUtf8(std::string_view text);
bool isAscii(std::string_view text);

}  // namespace nuvrel::base::text
