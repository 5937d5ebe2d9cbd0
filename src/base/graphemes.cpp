#include "base/graphemes.h"

#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>

#include <climits>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>

#include "base/utf8.h"

namespace nuvrel::base::text {
namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

// Most text (Latin, Han, Kana, precomposed Hangul) is made of code points whose
// Grapheme_Cluster_Break class is Other, Control, CR, LF, LV or LVT. Between two such code
// points there is always a boundary, except inside "\r\n": no rule of UAX #29 looks further
// back than that pair unless one side is Extend, ZWJ, SpacingMark, Prepend, a regional
// indicator or a conjoining jamo. So those texts are segmented code point by code point, and
// ICU segments only the runs around the other classes.

inline bool isSimple(char32_t c) {
    if (c < 0x80) return true;
    if (c >= 0xAC00 && c <= 0xD7A3) return true;  // Hangul syllables: LV and LVT
    if (c >= 0x4E00 && c <= 0x9FFF) return true;  // CJK unified ideographs: Other
    switch (u_getIntPropertyValue(static_cast<UChar32>(c), UCHAR_GRAPHEME_CLUSTER_BREAK)) {
        case U_GCB_OTHER:
        case U_GCB_CONTROL:
        case U_GCB_CR:
        case U_GCB_LF:
        case U_GCB_LV:
        case U_GCB_LVT:
            return true;
        default:
            return false;
    }
}

inline bool certainBoundary(char32_t a, char32_t b) {
    return isSimple(a) && isSimple(b) && !(a == '\r' && b == '\n');
}

icu::BreakIterator& characterIterator() {
    // Break iterators are not thread-safe; each thread clones its own from one prototype.
    // No sink below segments text itself, so a thread never needs two at once.
    static std::mutex prototypeMutex;
    static const std::unique_ptr<icu::BreakIterator> prototype = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> iterator(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        if (U_FAILURE(status) || !iterator) {
            throw std::runtime_error(std::string("ICU character break iterator unavailable: ") +
                                     u_errorName(status));
        }
        return iterator;
    }();
    thread_local std::unique_ptr<icu::BreakIterator> iterator;
    if (!iterator) {
        std::lock_guard lock(prototypeMutex);
        iterator.reset(prototype->clone());
        if (!iterator) throw std::bad_alloc();
    }
    return *iterator;
}

// ICU's view of one text, opened on the first run that needs it and reused for the rest.
class IcuSegmenter {
public:
    explicit IcuSegmenter(std::string_view text) : text_(text) {}
    ~IcuSegmenter() {
        if (open_) utext_close(&utext_);
    }
    IcuSegmenter(const IcuSegmenter&) = delete;
    IcuSegmenter& operator=(const IcuSegmenter&) = delete;

    // Calls sink for the boundaries after `start` up to and including `end`, both of which are
    // boundaries. Returns false when sink asked to stop.
    template <class Sink>
    bool run(std::size_t start, std::size_t end, Sink& sink) {
        if (text_.size() > static_cast<std::size_t>(INT32_MAX)) {
            // Beyond the iterator's index range: code points stand in for characters.
            for (std::size_t pos = start; pos < end;) {
                nextCodePoint(text_, pos);
                if (!sink(pos)) return false;
            }
            return true;
        }
        icu::BreakIterator& iterator = open();
        std::size_t last = start;
        for (int32_t b = iterator.following(static_cast<int32_t>(start));
             b != icu::BreakIterator::DONE && static_cast<std::size_t>(b) < end;
             b = iterator.next()) {
            if (static_cast<std::size_t>(b) <= last) continue;
            last = static_cast<std::size_t>(b);
            if (!sink(last)) return false;
        }
        return sink(end);
    }

private:
    icu::BreakIterator& open() {
        icu::BreakIterator& iterator = characterIterator();
        if (open_) return iterator;
        UErrorCode status = U_ZERO_ERROR;
        utext_openUTF8(&utext_, text_.data(), static_cast<int64_t>(text_.size()), &status);
        iterator.setText(&utext_, status);
        open_ = true;
        if (U_FAILURE(status))
            throw std::runtime_error(std::string("ICU break iterator failed: ") +
                                     u_errorName(status));
        return iterator;
    }

    std::string_view text_;
    UText utext_ = UTEXT_INITIALIZER;
    bool open_ = false;
};

// Calls sink(boundary) for every character boundary after 0, in increasing order, ending with
// text.size(); stops when sink returns false.
template <class Sink>
void forEachBoundary(std::string_view text, Sink&& sink) {
    if (text.empty()) return;
    IcuSegmenter icu(text);
    std::size_t lastBoundary = 0;
    std::size_t next = 0;
    char32_t a = nextCodePoint(text, next);
    bool aSimple = isSimple(a);
    while (next < text.size()) {
        std::size_t after = next;
        char32_t b = nextCodePoint(text, after);
        bool bSimple = isSimple(b);
        if (!aSimple || !bSimple) {
            // ICU segments only the run up to the next certain boundary: no rule looks across
            // one, so the run's boundaries do not depend on what lies outside it.
            std::size_t runEnd = text.size();
            while (after < text.size()) {
                std::size_t following = after;
                const char32_t c = nextCodePoint(text, following);
                const bool cSimple = isSimple(c);
                const bool certain = bSimple && cSimple && !(b == '\r' && c == '\n');
                b = c;
                bSimple = cSimple;
                if (certain) {
                    runEnd = after;
                    after = following;
                    break;
                }
                after = following;
            }
            if (!icu.run(lastBoundary, runEnd, sink)) return;
            if (runEnd == text.size()) return;
            lastBoundary = runEnd;
        } else if (!(a == '\r' && b == '\n')) {
            lastBoundary = next;
            if (!sink(next)) return;
        }
        a = b;
        aSimple = bSimple;
        next = after;
    }
    sink(text.size());
}

// Start of the last character of text[0, end) when the two code points before `end` make it
// certain without looking further back.
std::optional<std::size_t> quickLastStart(std::string_view text, std::size_t end) {
    std::size_t p = end;
    const char32_t b = previousCodePoint(text, p);
    if (b == replacementCharacter) return std::nullopt;
    if (p == 0) return 0;
    std::size_t q = p;
    const char32_t a = previousCodePoint(text, q);
    if (a == replacementCharacter || !certainBoundary(a, b)) return std::nullopt;
    return p;
}

// Byte offset where the last n characters of text begin (0 when it has n or fewer).
std::size_t startOfLast(std::string_view text, std::size_t n) {
    std::size_t end = text.size();
    for (; n > 0 && end > 0; --n) {
        if (const auto start = quickLastStart(text, end)) {
            end = *start;
            continue;
        }
        std::vector<std::size_t> starts{0};
        forEachBoundary(text.substr(0, end), [&](std::size_t boundary) {
            starts.push_back(boundary);
            return true;
        });
        // starts holds 0, every inner boundary and `end`: starts.size() - 1 characters.
        return n >= starts.size() - 1 ? 0 : starts[starts.size() - 1 - n];
    }
    return end;
}

std::size_t endOfFirst(std::string_view text, std::size_t n) {
    if (n == 0) return 0;
    std::size_t end = text.size();
    std::size_t seen = 0;
    forEachBoundary(text, [&](std::size_t boundary) {
        if (++seen < n) return true;
        end = boundary;
        return false;
    });
    return end;
}

}  // namespace

std::size_t count(std::string_view text) {
    std::size_t n = 0;
    forEachBoundary(text, [&n](std::size_t) {
        ++n;
        return true;
    });
    return n;
}

std::string prefix(std::string_view text, std::size_t n) {
    return std::string(text.substr(0, endOfFirst(text, n)));
}

std::string suffix(std::string_view text, std::size_t n) {
    if (n == 0) return {};
    return std::string(text.substr(startOfLast(text, n)));
}

std::string dropLast(std::string_view text, std::size_t n) {
    return std::string(text.substr(0, startOfLast(text, n)));
}

std::string lastGrapheme(std::string_view text) {
    return suffix(text, 1);
}

std::vector<std::string> graphemes(std::string_view text) {
    std::vector<std::string> out;
    std::size_t start = 0;
    forEachBoundary(text, [&](std::size_t boundary) {
        out.emplace_back(text.substr(start, boundary - start));
        start = boundary;
        return true;
    });
    return out;
}

bool isOneOf(std::string_view character, std::string_view characters) {
    if (character.empty()) return false;
    bool found = false;
    std::size_t start = 0;
    forEachBoundary(characters, [&](std::size_t boundary) {
        found = characters.substr(start, boundary - start) == character;
        start = boundary;
        return !found;
    });
    return found;
}

std::string stripTrailing(std::string_view text, std::string_view characters) {
    std::size_t end = text.size();
    while (end > 0) {
        const std::string_view head = text.substr(0, end);
        const std::size_t start = startOfLast(head, 1);
        if (!isOneOf(head.substr(start), characters)) break;
        end = start;
    }
    return std::string(text.substr(0, end));
}

}  // namespace nuvrel::base::text
