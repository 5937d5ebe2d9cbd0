#pragma once
// ICU regular expressions matched directly on UTF-8: every offset is a byte offset into the
// text that was searched.
//
// Convention: a pattern is compiled once per process, as a function-local static next to the
// code that uses it:
//
//     static const Regex pattern(R"(^(\d+)\s*분$)");
//     if (auto m = pattern.firstMatch(query)) use(m->group(1));
//
// A Regex is immutable after construction and may be shared by any number of threads; each
// call makes its own matcher. The dialect is ICU's (that of NSRegularExpression): \d, \s and
// \w are Unicode-aware, so "\d" admits full-width digits. Ill-formed UTF-8 in the searched
// text reads as U+FFFD.

#include <unicode/uversion.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

U_NAMESPACE_BEGIN
class RegexPattern;
U_NAMESPACE_END

namespace nuvrel::base {

// One match. It refers into the searched text: that text must outlive the match.
class RegexMatch {
public:
    static constexpr std::size_t npos = std::string_view::npos;

    // The text of group i (0 is the whole match); empty when the group did not take part.
    std::string_view group(std::size_t i = 0) const;
    // Whether group i took part in the match.
    bool matched(std::size_t i) const;
    // Byte offsets of group i in the searched text; npos when the group did not take part.
    std::size_t begin(std::size_t i = 0) const;
    std::size_t end(std::size_t i = 0) const;
    // Number of capture groups in the pattern, not counting group 0.
    std::size_t groupCount() const { return ranges_.size() - 1; }

    // A group index beyond groupCount() throws std::out_of_range from every accessor.

private:
    friend class Regex;
    using Range = std::pair<std::size_t, std::size_t>;
    RegexMatch(std::string_view text, std::vector<Range> ranges)
        : text_(text), ranges_(std::move(ranges)) {}
    const Range& range(std::size_t i) const;

    std::string_view text_;
    std::vector<Range> ranges_;  // {npos, npos} for a group that did not take part
};

class Regex {
public:
    enum Option : unsigned {
        none = 0,
        caseInsensitive = 1,
        anchorsMatchLines = 2,         // ^ and $ also match at line starts and ends
        dotMatchesLineSeparators = 4,  // . also matches line ends
    };

    // Throws std::invalid_argument naming the pattern when it does not compile.
    explicit Regex(std::string_view pattern, unsigned options = none);
    ~Regex();
    Regex(Regex&&) noexcept;
    Regex& operator=(Regex&&) noexcept;

    // A match anywhere in the text.
    bool search(std::string_view text) const;
    // The whole text matches.
    bool fullMatch(std::string_view text) const;
    // The first match starting at or after byte `fromByte` (a position inside a multi-byte
    // character starts at the next character). Nothing when fromByte is past the end.
    std::optional<RegexMatch> firstMatch(std::string_view text, std::size_t fromByte = 0) const;
    // Every non-overlapping match, left to right.
    std::vector<RegexMatch> allMatches(std::string_view text) const;
    // Replaces every match by the template, in which "$n" stands for group n and a backslash
    // takes the next character literally ("\$"). Throws std::invalid_argument when the
    // template names a group the pattern does not have. Ill-formed input bytes come out as U+FFFD.
    std::string replaceAll(std::string_view text, std::string_view templ) const;

    const std::string& pattern() const { return source_; }

private:
    std::string source_;
    std::unique_ptr<icu::RegexPattern> compiled_;
};

}  // namespace nuvrel::base
