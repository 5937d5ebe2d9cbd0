#include "base/utf8.h"

namespace nuvrel::base::text {
namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

}  // namespace

char32_t previousCodePoint(std::string_view text, std::size_t& pos) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const std::size_t end = pos;
    if (bytes[end - 1] < 0x80) return bytes[--pos];
    // Find a lead byte at most three trail bytes back and decode forwards from it: the
    // sequence counts only if it ends exactly at `end`, so both directions agree.
    std::size_t lead = end - 1;
    while (lead > 0 && end - lead < 4 && U8_IS_TRAIL(bytes[lead])) --lead;
    std::size_t after = lead;
    const char32_t c = nextCodePoint(text, after);
    if (after == end) {
        pos = lead;
        return c;
    }
    pos = end - 1;
    return replacementCharacter;
}

void appendUtf8(std::string& out, char32_t c) {
    if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = replacementCharacter;
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

std::u32string toUtf32(std::string_view text) {
    std::u32string out;
    out.reserve(text.size());
    for (std::size_t pos = 0; pos < text.size();) out.push_back(nextCodePoint(text, pos));
    return out;
}

std::string fromUtf32(std::u32string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char32_t c : text) appendUtf8(out, c);
    return out;
}

bool isValidUtf8(std::string_view text) {
    for (std::size_t pos = 0; pos < text.size();) {
        const std::size_t start = pos;
        if (nextCodePoint(text, pos) == replacementCharacter &&
            text.substr(start, pos - start) != "\xEF\xBF\xBD") {
            return false;
        }
    }
    return true;
}

std::string validUtf8(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t pos = 0; pos < text.size();) {
        const std::size_t start = pos;
        const char32_t c = nextCodePoint(text, pos);
        if (c == replacementCharacter)
            appendUtf8(out, c);
        else
            out.append(text.substr(start, pos - start));
    }
    return out;
}

bool isAscii(std::string_view text) {
    unsigned char any = 0;
    for (const char c : text) any |= static_cast<unsigned char>(c);
    return any < 0x80;
}

}  // namespace nuvrel::base::text
