#include "base/text.h"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdint>
#include <stdexcept>

namespace nuvrel::base::text {
namespace {

template <class Map>
std::string mapAscii(std::string_view text, Map map) {
    std::string out(text);
    for (char& c : out) c = map(c);
    return out;
}

std::string icuCase(std::string_view text, bool toUpper) {
    std::string out;
    out.reserve(text.size() + text.size() / 8);
    icu::StringByteSink<std::string> sink(&out);
    UErrorCode status = U_ZERO_ERROR;
    const icu::StringPiece piece(text.data(), static_cast<int32_t>(text.size()));
    // "" is the root locale: no Turkish or Lithuanian rules, whatever the process locale.
    if (toUpper)
        icu::CaseMap::utf8ToUpper("", 0, piece, sink, nullptr, status);
    else
        icu::CaseMap::utf8ToLower("", 0, piece, sink, nullptr, status);
    if (U_FAILURE(status))
        throw std::runtime_error(std::string("ICU case mapping failed: ") + u_errorName(status));
    return out;
}

bool fitsIcuLength(std::string_view text) {
    return text.size() <= static_cast<std::size_t>(INT32_MAX);
}

}  // namespace

// Case and normal form

std::string lower(std::string_view text) {
    if (isAscii(text))
        return mapAscii(text, [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    if (!fitsIcuLength(text)) throw std::length_error("text too long for case mapping");
    return icuCase(text, false);
}

std::string upper(std::string_view text) {
    if (isAscii(text))
        return mapAscii(text, [](char c) { return c >= 'a' && c <= 'z' ? char(c - 32) : c; });
    if (!fitsIcuLength(text)) throw std::length_error("text too long for case mapping");
    return icuCase(text, true);
}

std::string nfc(std::string_view text) {
    if (isAscii(text)) return std::string(text);
    if (!fitsIcuLength(text)) throw std::length_error("text too long for normalisation");
    // ICU copies ill-formed bytes through; NFC text is where text enters the program, so it
    // must come out well-formed.
    std::string repaired;
    if (!isValidUtf8(text)) {
        repaired = validUtf8(text);
        text = repaired;
    }
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFCInstance(status);
    const icu::StringPiece piece(text.data(), static_cast<int32_t>(text.size()));
    if (U_SUCCESS(status) && normalizer->isNormalizedUTF8(piece, status)) return std::string(text);
    std::string out;
    out.reserve(text.size());
    icu::StringByteSink<std::string> sink(&out);
    if (U_SUCCESS(status)) normalizer->normalizeUTF8(0, piece, sink, nullptr, status);
    if (U_FAILURE(status))
        throw std::runtime_error(std::string("ICU normalisation failed: ") + u_errorName(status));
    return out;
}

// White space

bool isWhiteSpace(char32_t c) {
    if (c < 0x80) return c == ' ' || (c >= '\t' && c <= '\r');
    return c <= 0x10FFFF && u_isUWhiteSpace(static_cast<UChar32>(c));
}

std::string_view trimView(std::string_view text) {
    std::size_t begin = 0;
    while (begin < text.size()) {
        std::size_t next = begin;
        if (!isWhiteSpace(nextCodePoint(text, next))) break;
        begin = next;
    }
    // Decode backwards only within what is left, so that a stray byte cannot reach into the
    // white space already skipped.
    const std::string_view rest = text.substr(begin);
    std::size_t end = rest.size();
    while (end > 0) {
        std::size_t previous = end;
        if (!isWhiteSpace(previousCodePoint(rest, previous))) break;
        end = previous;
    }
    return rest.substr(0, end);
}

std::string trim(std::string_view text) {
    return std::string(trimView(text));
}

std::vector<std::string> splitBlanks(std::string_view text) {
    std::vector<std::string> words;
    std::size_t wordStart = std::string_view::npos;
    for (std::size_t pos = 0; pos < text.size();) {
        const std::size_t start = pos;
        const bool blank = isWhiteSpace(nextCodePoint(text, pos));
        if (blank && wordStart != std::string_view::npos) {
            words.emplace_back(text.substr(wordStart, start - wordStart));
            wordStart = std::string_view::npos;
        } else if (!blank && wordStart == std::string_view::npos) {
            wordStart = start;
        }
    }
    if (wordStart != std::string_view::npos) words.emplace_back(text.substr(wordStart));
    return words;
}

std::string removeWhiteSpace(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t pos = 0; pos < text.size();) {
        const std::size_t start = pos;
        if (!isWhiteSpace(nextCodePoint(text, pos))) out.append(text.substr(start, pos - start));
    }
    return out;
}

// Plain substrings

std::string replaceAll(std::string_view text, std::string_view from, std::string_view to) {
    if (from.empty()) return std::string(text);
    std::string out;
    out.reserve(text.size());
    std::size_t start = 0;
    for (std::size_t hit = text.find(from); hit != std::string_view::npos;
         hit = text.find(from, start)) {
        out.append(text.substr(start, hit - start));
        out.append(to);
        start = hit + from.size();
    }
    out.append(text.substr(start));
    return out;
}

bool contains(std::string_view text, std::string_view needle) {
    return text.find(needle) != std::string_view::npos;
}

// Numbers

std::optional<double> parseDecimal(std::string_view text) {
    // Rewrite into ASCII while checking the grammar, so that from_chars never sees anything it
    // would read differently (inf, nan, hex, a second sign).
    std::string ascii;
    ascii.reserve(text.size());
    bool negative = false;
    std::size_t pos = 0;
    long long firstDigitScale = LLONG_MIN;  // decimal exponent of the first non-zero digit
    long long integerDigits = 0, fractionDigits = 0;
    bool inFraction = false, pointSeen = false;

    auto digitAt = [&](std::size_t& p) -> int {
        std::size_t q = p;
        const char32_t c = nextCodePoint(text, q);
        if (c >= '0' && c <= '9') {
            p = q;
            return static_cast<int>(c - '0');
        }
        if (c < 0x80 || u_charType(static_cast<UChar32>(c)) != U_DECIMAL_DIGIT_NUMBER) return -1;
        p = q;
        return u_charDigitValue(static_cast<UChar32>(c));
    };

    if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) negative = text[pos++] == '-';
    while (pos < text.size()) {
        if (text[pos] == '.' && !pointSeen) {
            pointSeen = inFraction = true;
            ascii.push_back('.');
            ++pos;
            continue;
        }
        const int digit = digitAt(pos);
        if (digit < 0) break;
        if (inFraction)
            ++fractionDigits;
        else
            ++integerDigits;
        if (digit != 0 && firstDigitScale == LLONG_MIN) {
            firstDigitScale = inFraction ? -fractionDigits : integerDigits;
        }
        ascii.push_back(static_cast<char>('0' + digit));
    }
    if (integerDigits + fractionDigits == 0) return std::nullopt;
    long long exponent = 0;
    if (pos < text.size() && (text[pos] == 'e' || text[pos] == 'E')) {
        ascii.push_back('e');
        ++pos;
        if (pos < text.size() && (text[pos] == '+' || text[pos] == '-'))
            ascii.push_back(text[pos++]);
        const bool exponentNegative = ascii.back() == '-';
        std::size_t exponentDigits = 0;
        int digit;
        while (pos < text.size() && (digit = digitAt(pos)) >= 0) {
            ascii.push_back(static_cast<char>('0' + digit));
            exponent = std::min(exponent * 10 + digit, 1'000'000'000LL);
            ++exponentDigits;
        }
        if (exponentDigits == 0) return std::nullopt;
        if (exponentNegative) exponent = -exponent;
    }
    if (pos != text.size()) return std::nullopt;

    double value = 0;
    const auto [end, error] = std::from_chars(ascii.data(), ascii.data() + ascii.size(), value);
    if (end != ascii.data() + ascii.size()) return std::nullopt;
    if (error == std::errc::result_out_of_range) {
        // Too large is no usable number; too small is zero, as strtod gives.
        if (firstDigitScale != LLONG_MIN && firstDigitScale + exponent > 0) return std::nullopt;
        value = 0;
    } else if (error != std::errc()) {
        return std::nullopt;
    }
    return negative ? -value : value;
}

}  // namespace nuvrel::base::text
