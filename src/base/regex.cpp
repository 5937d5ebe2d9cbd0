#include "base/regex.h"

#include <unicode/regex.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <climits>
#include <stdexcept>

#include "base/text.h"

namespace nuvrel::base {
namespace {

// A matcher over a UTF-8 view: the UText reads the caller's bytes in place, so the matcher's
// native indices are byte offsets.
class Search {
public:
    Search(const icu::RegexPattern& pattern, std::string_view text) {
        if (text.size() > static_cast<std::size_t>(INT32_MAX)) {
            throw std::length_error("text too long for a regular expression");
        }
        UErrorCode status = U_ZERO_ERROR;
        utext_openUTF8(&utext_, text.data(), static_cast<int64_t>(text.size()), &status);
        matcher_.reset(pattern.matcher(status));
        if (U_SUCCESS(status)) matcher_->reset(&utext_);
        if (U_FAILURE(status) || !matcher_) {
            matcher_.reset();
            utext_close(&utext_);
            throw std::runtime_error(std::string("ICU regex matcher failed: ") +
                                     u_errorName(status));
        }
    }
    ~Search() {
        matcher_.reset();
        utext_close(&utext_);
    }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    icu::RegexMatcher& operator*() { return *matcher_; }
    icu::RegexMatcher* operator->() { return matcher_.get(); }

private:
    UText utext_ = UTEXT_INITIALIZER;
    std::unique_ptr<icu::RegexMatcher> matcher_;
};

std::pair<std::size_t, std::size_t> rangeOf(icu::RegexMatcher& matcher, int32_t group) {
    UErrorCode status = U_ZERO_ERROR;
    const int64_t begin = matcher.start64(group, status);
    const int64_t end = matcher.end64(group, status);
    if (U_FAILURE(status) || begin < 0 || end < 0) return {RegexMatch::npos, RegexMatch::npos};
    return {static_cast<std::size_t>(begin), static_cast<std::size_t>(end)};
}

uint32_t icuFlags(unsigned options) {
    uint32_t flags = 0;
    if (options & Regex::caseInsensitive) flags |= UREGEX_CASE_INSENSITIVE;
    if (options & Regex::anchorsMatchLines) flags |= UREGEX_MULTILINE;
    if (options & Regex::dotMatchesLineSeparators) flags |= UREGEX_DOTALL;
    return flags;
}

// Moves a byte offset that falls inside a well-formed multi-byte character to the character's
// end; the matcher must only ever be started on a character boundary.
std::size_t characterStartAtOrAfter(std::string_view text, std::size_t pos) {
    if (pos == 0 || pos >= text.size() || !U8_IS_TRAIL(static_cast<uint8_t>(text[pos]))) return pos;
    std::size_t lead = pos;
    while (lead > 0 && pos - lead < 3 && U8_IS_TRAIL(static_cast<uint8_t>(text[lead]))) --lead;
    std::size_t after = lead;
    text::nextCodePoint(text, after);
    return after > pos ? after : pos;
}

}  // namespace

// --- RegexMatch ---

const RegexMatch::Range& RegexMatch::range(std::size_t i) const {
    if (i >= ranges_.size()) {
        throw std::out_of_range("regex group " + std::to_string(i) + " of " +
                                std::to_string(groupCount()));
    }
    return ranges_[i];
}

std::string_view RegexMatch::group(std::size_t i) const {
    const Range& r = range(i);
    if (r.first == npos) return {};
    return text_.substr(r.first, r.second - r.first);
}

bool RegexMatch::matched(std::size_t i) const {
    return range(i).first != npos;
}
std::size_t RegexMatch::begin(std::size_t i) const {
    return range(i).first;
}
std::size_t RegexMatch::end(std::size_t i) const {
    return range(i).second;
}

// --- Regex ---

Regex::Regex(std::string_view pattern, unsigned options) : source_(pattern) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError{};
    const icu::UnicodeString unicodePattern = icu::UnicodeString::fromUTF8(
        icu::StringPiece(pattern.data(), static_cast<int32_t>(pattern.size())));
    compiled_.reset(
        icu::RegexPattern::compile(unicodePattern, icuFlags(options), parseError, status));
    if (U_FAILURE(status) || !compiled_) {
        compiled_.reset();
        throw std::invalid_argument("invalid regular expression \"" + source_ +
                                    "\": " + u_errorName(status) + " at offset " +
                                    std::to_string(parseError.offset));
    }
}

Regex::~Regex() = default;
Regex::Regex(Regex&&) noexcept = default;
Regex& Regex::operator=(Regex&&) noexcept = default;

bool Regex::search(std::string_view text) const {
    Search search(*compiled_, text);
    return search->find();
}

bool Regex::fullMatch(std::string_view text) const {
    Search search(*compiled_, text);
    UErrorCode status = U_ZERO_ERROR;
    return search->matches(status) && U_SUCCESS(status);
}

std::optional<RegexMatch> Regex::firstMatch(std::string_view text, std::size_t fromByte) const {
    if (fromByte > text.size()) return std::nullopt;
    Search search(*compiled_, text);
    UErrorCode status = U_ZERO_ERROR;
    const auto start = static_cast<int64_t>(characterStartAtOrAfter(text, fromByte));
    if (!search->find(start, status) || U_FAILURE(status)) return std::nullopt;
    const int32_t groups = search->groupCount();
    std::vector<RegexMatch::Range> ranges;
    ranges.reserve(static_cast<std::size_t>(groups) + 1);
    for (int32_t g = 0; g <= groups; ++g) ranges.push_back(rangeOf(*search, g));
    return RegexMatch(text, std::move(ranges));
}

std::vector<RegexMatch> Regex::allMatches(std::string_view text) const {
    Search search(*compiled_, text);
    const int32_t groups = search->groupCount();
    std::vector<RegexMatch> matches;
    while (search->find()) {
        std::vector<RegexMatch::Range> ranges;
        ranges.reserve(static_cast<std::size_t>(groups) + 1);
        for (int32_t g = 0; g <= groups; ++g) ranges.push_back(rangeOf(*search, g));
        matches.push_back(RegexMatch(text, std::move(ranges)));
    }
    return matches;
}

std::string Regex::replaceAll(std::string_view text, std::string_view templ) const {
    Search search(*compiled_, text);
    if (!search->find()) return std::string(text);
    const icu::UnicodeString replacement = icu::UnicodeString::fromUTF8(
        icu::StringPiece(templ.data(), static_cast<int32_t>(templ.size())));
    icu::UnicodeString out;
    do {
        UErrorCode status = U_ZERO_ERROR;
        search->appendReplacement(out, replacement, status);
        if (U_FAILURE(status)) {
            throw std::invalid_argument("invalid replacement \"" + std::string(templ) +
                                        "\" for \"" + source_ + "\": " + u_errorName(status));
        }
    } while (search->find());
    search->appendTail(out);
    std::string result;
    out.toUTF8String(result);
    return result;
}

}  // namespace nuvrel::base
