#include "answers/calc_fillers.h"

#include <unicode/uchar.h>

#include <tuple>
#include <utility>
#include <vector>

#include "base/text.h"

namespace nuvrel::answers::CalculatorFastPath {
namespace {

char32_t fold(char32_t c) {
    if (c < 0x80) return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
    return static_cast<char32_t>(u_foldCase(static_cast<UChar32>(c), U_FOLD_CASE_DEFAULT));
}

// Nothing else folds to an ASCII non-letter or a Hangul syllable, so a needle made only of
// those can be found byte for byte, which Korean queries against Korean fillers rely on.
bool foldsOnlyToItself(char32_t c) {
    const bool asciiLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    return (c < 0x80 && !asciiLetter) || (c >= 0xAC00 && c <= 0xD7A3);
}

struct Needle {
    std::string bytes;
    std::vector<char32_t> folded;
    bool caseless = true;

    explicit Needle(std::string_view text) : bytes(text) {
        for (std::size_t pos = 0; pos < text.size();) {
            const char32_t c = base::text::nextCodePoint(text, pos);
            caseless = caseless && foldsOnlyToItself(c);
            folded.push_back(fold(c));
        }
    }
};

// The byte length of the match of the needle at byte `start`, or 0.
std::size_t matchLength(std::string_view text, std::size_t start, const Needle& needle) {
    std::size_t pos = start;
    for (const char32_t expected : needle.folded) {
        if (pos >= text.size()) return 0;
        const std::size_t before = pos;
        const char32_t c = base::text::nextCodePoint(text, pos);
        // U+FFFD from an ill-formed byte must not pass for a U+FFFD of the needle.
        if (c == 0xFFFD && text.substr(before, pos - before) != "\xEF\xBF\xBD") return 0;
        if (fold(c) != expected) return 0;
    }
    return pos - start;
}

// The first match at or after byte `from`: its start and byte length, or {npos, 0}.
std::pair<std::size_t, std::size_t> find(std::string_view text, std::size_t from,
                                         const Needle& needle) {
    if (needle.caseless) {
        // A needle starting with a lead byte can only match at a character boundary.
        const std::size_t pos = text.find(needle.bytes, from);
        return {pos, pos == std::string_view::npos ? 0 : needle.bytes.size()};
    }
    std::size_t pos = from;
    while (pos < text.size()) {
        const unsigned char byte = static_cast<unsigned char>(text[pos]);
        // Only an ASCII letter's own two cases fold to it from ASCII, so most ASCII bytes are
        // ruled out without decoding.
        if (byte < 0x80 && fold(byte) != needle.folded.front()) {
            ++pos;
            continue;
        }
        if (const std::size_t length = matchLength(text, pos, needle)) return {pos, length};
        base::text::nextCodePoint(text, pos);
    }
    return {std::string_view::npos, 0};
}

std::string replaceEach(std::string_view text, const Needle& needle, std::string_view replacement) {
    if (needle.folded.empty()) return std::string(text);
    std::string out;
    std::size_t done = 0;
    for (auto [pos, length] = find(text, 0, needle); pos != std::string_view::npos;
         std::tie(pos, length) = find(text, pos + length, needle)) {
        out.append(text, done, pos - done);
        out += replacement;
        done = pos + length;
    }
    out.append(text, done);
    return out;
}

}  // namespace

std::string replaceAllIgnoringCase(std::string_view text, std::string_view needle,
                                   std::string_view replacement) {
    return replaceEach(text, Needle(needle), replacement);
}

std::string removeFillers(std::string_view text) {
    static const std::vector<Needle> triggers = [] {
        std::vector<Needle> needles;
        for (const std::string_view trigger : calcTriggerWords) needles.emplace_back(trigger);
        return needles;
    }();
    std::string result(text);
    for (const Needle& trigger : triggers) {
        // Most queries hold none of the words: no copy then.
        if (find(result, 0, trigger).first == std::string_view::npos) continue;
        result = replaceEach(result, trigger, " ");
    }
    return result;
}

}  // namespace nuvrel::answers::CalculatorFastPath
