#pragma once
// Text in UTF-8: case mapping in the root locale, NFC, Unicode White_Space, plain substrings
// and locale-independent decimal parsing. This header also brings in characters (graphemes.h)
// and code points (utf8.h): including it gives the whole text layer.
//
// Ill-formed UTF-8 never crashes or hangs any function. Functions that return pieces of their
// input (prefix, trim, splitBlanks, ...) pass ill-formed bytes through untouched, each stray
// sequence counting as one character; lower and upper pass them through as well; nfc, toUtf32
// and validUtf8 replace them with U+FFFD.
//
// All functions are pure and safe to call from any thread.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/graphemes.h"
#include "base/utf8.h"

namespace nuvrel::base::text {

// Case and normal form

// Full case mapping in the root locale: upper("ß") == "SS", lower("İ") == "i̇", whatever the
// process locale is.
std::string lower(std::string_view text);
std::string upper(std::string_view text);
// Canonical composition (NFC); ill-formed sequences become U+FFFD, so the result is always
// well-formed. Input that is already NFC comes back unchanged after a quick check.
std::string nfc(std::string_view text);

// White space

// The Unicode White_Space property: ASCII blanks and line ends, NBSP, U+0085, U+2028/2029,
// the ideographic space U+3000, ...
bool isWhiteSpace(char32_t c);
// The text without white space at either end.
std::string trim(std::string_view text);
// As trim, without a copy; the view refers into `text`.
std::string_view trimView(std::string_view text);
// Words between runs of white space; never an empty word.
std::vector<std::string> splitBlanks(std::string_view text);
// The text with every white-space character removed, wherever it stands.
std::string removeWhiteSpace(std::string_view text);

// Plain substrings

// Replaces every occurrence of `from`, left to right, without rescanning replaced text.
// An empty `from` leaves the text unchanged.
std::string replaceAll(std::string_view text, std::string_view from, std::string_view to);
// Byte containment; on well-formed UTF-8 this is containment of whole code points.
bool contains(std::string_view text, std::string_view needle);

// Numbers

// Whole-text decimal number: optional sign, digits with an optional point ("100.", ".5" are
// fine), optional exponent. Any Unicode decimal digit counts as its value ("５" is 5). No white
// space, hex, inf or nan; independent of the process locale. A value beyond the range of double
// gives nothing; one too small to represent gives zero.
std::optional<double> parseDecimal(std::string_view text);

}  // namespace nuvrel::base::text
