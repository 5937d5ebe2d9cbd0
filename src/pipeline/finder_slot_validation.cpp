// File search: which of the model's slots the query bears out.

#include <algorithm>

#include "base/text.h"
#include "core/slot_enums.h"
#include "desktop/finder_query_builder.h"
#include "pipeline/validator.h"
#include "pipeline/validator_detail.h"

namespace nuvrel::pipeline::Validator {
namespace {

namespace text = base::text;
using desktop::FinderQueryBuilder::categoryContains;

bool isAsciiAlnum(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

template <std::size_t N>
bool isIn(const std::array<std::string_view, N>& set, std::string_view value) {
    return std::find(set.begin(), set.end(), value) != set.end();
}

std::string_view trimTrailingWhiteSpace(std::string_view value) {
    std::size_t end = value.size();
    while (end > 0) {
        std::size_t start = end;
        if (!text::isWhiteSpace(text::previousCodePoint(value, start))) break;
        end = start;
    }
    return value.substr(0, end);
}

void replaceEach(std::string& value, std::string_view phrase) {
    if (text::contains(value, phrase)) value = text::replaceAll(value, phrase, " ");
}

}  // namespace

// --- Text forms ---

std::string normalizedForFinderMatching(std::string_view input) {
    std::string joined;
    joined.reserve(input.size());
    bool blankPending = false;
    bool ascii = true;
    for (std::size_t pos = 0; pos < input.size();) {
        const std::size_t start = pos;
        if (text::isWhiteSpace(text::nextCodePoint(input, pos))) {
            blankPending = !joined.empty();
            continue;
        }
        if (blankPending) joined.push_back(' ');
        blankPending = false;
        for (std::size_t i = start; i < pos; ++i) {
            char c = input[i];
            if (static_cast<unsigned char>(c) >= 0x80)
                ascii = false;
            else if (c >= 'A' && c <= 'Z')
                c = static_cast<char>(c + ('a' - 'A'));
            joined.push_back(c);
        }
    }
    // ASCII is lower-cased on the way; anything else needs full case mapping.
    return ascii ? joined : text::lower(joined);
}

bool containsWholeWord(std::string_view haystack, std::string_view phrase) {
    if (phrase.empty()) return false;
    for (std::size_t at = haystack.find(phrase); at != std::string_view::npos;
         at = haystack.find(phrase, at + 1)) {
        const std::size_t end = at + phrase.size();
        // Bytes of multi-byte characters are never ASCII, so one byte on each side decides:
        // "hwp파일" and "한글pdf" match, "photos" and "xhwp" do not.
        const bool freeBefore = at == 0 || !isAsciiAlnum(haystack[at - 1]);
        const bool freeAfter = end == haystack.size() || !isAsciiAlnum(haystack[end]);
        if (freeBefore && freeAfter) return true;
    }
    return false;
}

bool phraseMatches(std::string_view haystack, std::string_view phrase,
                   FinderFileTypeCueMatchKind kind) {
    if (phrase.empty()) return false;
    return kind == FinderFileTypeCueMatchKind::wholeWord ? containsWholeWord(haystack, phrase)
                                                         : text::contains(haystack, phrase);
}

bool queryMentionsInstaller(std::string_view normalized) {
    return std::any_of(
        installerCueWords.begin(), installerCueWords.end(),
        [&](const CuePhrase& cue) { return phraseMatches(normalized, cue.phrase, cue.matchKind); });
}

FinderCueText::FinderCueText(std::string_view query)
    : normalized(normalizedForFinderMatching(query)), cleaned(normalized) {
    for (const std::string_view compound : fileTypeCueUnrelatedCompounds)
        replaceEach(cleaned, compound);
    // Someone looking for the Python installer is not looking for Python files.
    if (queryMentionsInstaller(cleaned)) {
        for (const std::string_view name : installerSensitiveAppNameCues)
            replaceEach(cleaned, name);
    }
}

// --- File type ---

std::optional<std::string_view> firstMatchingFileType(std::span<const FinderFileTypeCue> among,
                                                      const FinderCueText& query) {
    for (const FinderFileTypeCue& cue : among) {
        if (phraseMatches(query.cleaned, cue.phrase, cue.matchKind)) return cue.fileType;
    }
    return std::nullopt;
}

std::optional<std::string_view> firstMatchingFileType(std::span<const FinderFileTypeCue> among,
                                                      std::string_view query) {
    return firstMatchingFileType(among, FinderCueText(query));
}

std::optional<std::string_view> deterministicFinderFileType(const FinderCueText& query) {
    return firstMatchingFileType(finderFileTypeCues, query);
}

std::optional<std::string_view> deterministicFinderFileType(std::string_view query) {
    return deterministicFinderFileType(FinderCueText(query));
}

bool isFileTypeTokenGrounded(std::string_view token, const FinderCueText& query) {
    if (token.empty()) return false;
    for (const FinderFileTypeCue& cue : finderFileTypeCues) {
        if (cue.fileType == token && phraseMatches(query.cleaned, cue.phrase, cue.matchKind))
            return true;
    }
    std::string plural(token);
    plural.push_back('s');
    return containsWholeWord(query.cleaned, token) || containsWholeWord(query.cleaned, plural);
}

bool isFileTypeTokenGrounded(std::string_view token, std::string_view query) {
    return isFileTypeTokenGrounded(token, FinderCueText(query));
}

std::optional<std::string_view> exactCueFinderFileType(std::string_view keyword,
                                                       const FinderCueText& trimmedQuery) {
    const std::string normalized = normalizedForFinderMatching(keyword);
    if (normalized.empty()) return std::nullopt;
    if (isIn(installerSensitiveAppNameCues, normalized) &&
        queryMentionsInstaller(trimmedQuery.normalized)) {
        return std::nullopt;
    }
    for (const FinderFileTypeCue& cue : finderFileTypeCues) {
        if (cue.phrase == normalized) return cue.fileType;
    }
    return std::nullopt;
}

std::optional<std::string_view> exactCueFinderFileType(std::string_view keyword,
                                                       std::string_view trimmedQuery) {
    return exactCueFinderFileType(keyword, FinderCueText(trimmedQuery));
}

std::optional<std::string> validatedFinderFileType(const core::Slots& slots,
                                                   const FinderCueText& trimmedQuery,
                                                   double confidence) {
    const auto slot = stringSlot(slots, "file_type");
    if (!slot) return std::nullopt;
    std::string token = text::lower(*slot);
    if (!core::SlotEnums::finderFileType().contains(token)) return std::nullopt;

    const bool grounded = isFileTypeTokenGrounded(token, trimmedQuery);
    const auto safe = firstMatchingFileType(safeFileTypeOverrideCues, trimmedQuery);
    // A clear cue such as "엑셀" beats a type the user never named; a narrower type of the
    // cue's own category ("png" for "사진") is no contradiction and stays.
    if (safe && *safe != token && !categoryContains(*safe, token)) {
        if (grounded) return token;
        return std::string(*safe);
    }
    if (confidence >= 0.6 || grounded) return token;
    return std::nullopt;
}

std::optional<std::string> validatedFinderFileType(const core::Slots& slots,
                                                   std::string_view trimmedQuery,
                                                   double confidence) {
    return validatedFinderFileType(slots, FinderCueText(trimmedQuery), confidence);
}

// --- Date range and keyword ---

std::optional<std::string> validatedFinderDateRange(const core::Slots& slots,
                                                    std::string_view trimmedQuery) {
    const auto slot = stringSlot(slots, "date_range");
    if (!slot) return std::nullopt;
    std::string token = text::lower(*slot);
    if (!core::SlotEnums::finderDateRange().contains(token)) return std::nullopt;
    const std::string query = text::lower(trimmedQuery);
    const bool dated =
        std::any_of(finderDateCueWords.begin(), finderDateCueWords.end(),
                    [&](std::string_view cue) { return text::contains(query, cue); });
    if (!dated) return std::nullopt;
    return token;
}

std::optional<std::string> finderKeywordStrippingTrailingFiller(std::string_view keyword) {
    // A keyword shorter than a filler cannot end with it, so ends-with alone skips those rows.
    std::optional<std::string> lowered;
    for (const TrailingFiller& row : finderKeywordTrailingFillers) {
        bool matched = false;
        if (!row.wholeWord) {
            matched = keyword.ends_with(row.filler);
        } else {
            if (!lowered) lowered = text::lower(keyword);
            if (lowered->ends_with(row.filler)) {
                const std::size_t at = lowered->size() - row.filler.size();
                matched = at == 0 || !isAsciiAlnum((*lowered)[at - 1]);
            }
        }
        // Only ASCII letters lower-case to the ASCII fillers, so the filler takes as many
        // bytes of the keyword as of its lower-cased form.
        if (matched) {
            return std::string(
                trimTrailingWhiteSpace(keyword.substr(0, keyword.size() - row.filler.size())));
        }
    }
    return std::nullopt;
}

// --- The search ---

core::ValidationOutcome validateFinderSearch(const core::Slots& slots,
                                             std::string_view trimmedQuery, double confidence) {
    const FinderCueText query(trimmedQuery);

    std::optional<std::string> keyword = stringSlot(slots, "keyword");
    if (keyword) {
        const std::string normalized = normalizedForFinderMatching(*keyword);
        if (normalized.empty() || !text::contains(query.normalized, normalized) ||
            isIn(finderKeywordRequestStoplist, normalized) ||
            isIn(finderKeywordMeaninglessNounDropSet, normalized)) {
            keyword.reset();
        }
    }
    std::optional<std::string> fileType = validatedFinderFileType(slots, query, confidence);
    // The location is a closed list and is not looked for in the query.
    std::optional<std::string> location;
    if (const auto slot = stringSlot(slots, "location")) {
        std::string lowered = text::lower(*slot);
        if (core::SlotEnums::finderLocation().contains(lowered)) location = std::move(lowered);
    }
    std::optional<std::string> dateRange = validatedFinderDateRange(slots, trimmedQuery);

    const auto complete = [&] {
        return core::ValidationOutcome::plan(
            core::FinderQuery{keyword, fileType, location, dateRange});
    };
    // A search always has something to search for: with nothing grounded, the whole query.
    const auto lastResort = [&] {
        if (const auto derived = deterministicFinderFileType(query))
            fileType = std::string(*derived);
        if (!fileType && !location && !dateRange) {
            return core::ValidationOutcome::plan(
                core::FinderQuery{.keyword = std::string(trimmedQuery)});
        }
        return complete();
    };
    // A keyword that is itself a file-type word ("엑셀") is a file type, not a name to look for;
    // the query's own first cue wins over it.
    const auto keywordAsFileType = [&](std::string_view exactCue) {
        const auto derived = deterministicFinderFileType(query);
        fileType = std::string(derived ? *derived : exactCue);
        keyword.reset();
    };

    if (!keyword) return fileType ? complete() : lastResort();

    const auto exactCue = exactCueFinderFileType(*keyword, query);
    if (exactCue && !fileType) {
        keywordAsFileType(*exactCue);
        return complete();
    }
    if (!exactCue) {
        if (auto stripped = finderKeywordStrippingTrailingFiller(*keyword)) {
            if (stripped->empty()) {
                keyword.reset();
                return fileType ? complete() : lastResort();
            }
            keyword = std::move(*stripped);
            if (!fileType) {
                if (const auto cue = exactCueFinderFileType(*keyword, query))
                    keywordAsFileType(*cue);
            }
        }
        return complete();
    }

    // Both a keyword that names a file type and a file type: keep whichever is narrower.
    if (*exactCue == *fileType || categoryContains(*exactCue, *fileType)) {
        keyword.reset();
    } else if (categoryContains(*fileType, *exactCue)) {
        keyword.reset();
        fileType = std::string(*exactCue);
    }
    return complete();
}

}  // namespace nuvrel::pipeline::Validator
