#pragma once
// User-perceived characters: ICU extended grapheme clusters. "é" written as e + U+0301, a flag,
// a family emoji joined by ZWJ and "\r\n" each count as one. Lengths, prefixes and "the last
// character" throughout the program are counted this way.
//
// Pieces of the input come back byte for byte: ill-formed bytes pass through, each stray
// sequence counting as one character. Safe to call from any thread.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nuvrel::base::text {

// Number of characters.
std::size_t count(std::string_view text);
// The first n characters (the whole text if it has fewer).
std::string prefix(std::string_view text, std::size_t n);
// The last n characters (the whole text if it has fewer).
std::string suffix(std::string_view text, std::size_t n);
// The text without its last n characters (empty if it has n or fewer).
std::string dropLast(std::string_view text, std::size_t n = 1);
// The last character, or empty for an empty text.
std::string lastGrapheme(std::string_view text);
// Every character in order.
std::vector<std::string> graphemes(std::string_view text);
// True when `character` is exactly one of the characters of `characters`
// (isOneOf("？", "?？!") is true; isOneOf("?!", "?？!") is false).
bool isOneOf(std::string_view character, std::string_view characters);
// Drops last characters while the last one is one of `characters`.
std::string stripTrailing(std::string_view text, std::string_view characters);

}  // namespace nuvrel::base::text
