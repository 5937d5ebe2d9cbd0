#pragma once
// The validator's steps, one function each, visible so that tests can hold each rule on its
// own. Callers outside the validator use validator.h.
//
// File types and extensions are returned as views of the static tables, valid for the whole
// run of the program.

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "core/plan_records.h"
#include "core/slot_value.h"
#include "core/validation_outcome.h"
#include "pipeline/validator_tables.h"

namespace nuvrel::pipeline::Validator {

// --- Text forms -------------------------------------------------------------------------------

// Words separated by single blanks, lower-cased: "  Swift\u3000FILES" → "swift files".
std::string normalizedForFinderMatching(std::string_view text);

// Whether some occurrence of `phrase` in `text` has no ASCII letter or digit directly before
// or after it. An empty phrase never matches.
bool containsWholeWord(std::string_view text, std::string_view phrase);

// Whether `phrase` occurs in `text` by `kind`. An empty phrase never matches.
bool phraseMatches(std::string_view text, std::string_view phrase, FinderFileTypeCueMatchKind kind);

// Whether any installer word occurs in `text` (normalised) by its kind.
bool queryMentionsInstaller(std::string_view text);

// A query in the two forms the file-type rules read, made once per validation.
struct FinderCueText {
    // normalizedForFinderMatching(query)
    std::string normalized;
    // `normalized` with each unrelated compound ("한글날") replaced by a blank and, when the
    // query speaks of an installer, each installer-sensitive application name as well.
    std::string cleaned;

    explicit FinderCueText(std::string_view query);
};

// --- File type --------------------------------------------------------------------------------

// The file type of the first row of `among` whose phrase occurs in the cleaned query.
std::optional<std::string_view> firstMatchingFileType(std::span<const FinderFileTypeCue> among,
                                                      const FinderCueText& query);
std::optional<std::string_view> firstMatchingFileType(std::span<const FinderFileTypeCue> among,
                                                      std::string_view query);

// firstMatchingFileType over all of finderFileTypeCues.
std::optional<std::string_view> deterministicFinderFileType(const FinderCueText& query);
std::optional<std::string_view> deterministicFinderFileType(std::string_view query);

// Whether the user named `token` (lower case): a cue of that file type occurs in the cleaned
// query, or the token itself or its plural with "s" stands there as a whole word.
bool isFileTypeTokenGrounded(std::string_view token, const FinderCueText& query);
bool isFileTypeTokenGrounded(std::string_view token, std::string_view query);

// The file type whose cue phrase is exactly the normalised keyword. Nothing for an empty
// keyword, or for an application name while the query speaks of its installer.
std::optional<std::string_view> exactCueFinderFileType(std::string_view keyword,
                                                       const FinderCueText& trimmedQuery);
std::optional<std::string_view> exactCueFinderFileType(std::string_view keyword,
                                                       std::string_view trimmedQuery);

// The slot "file_type" when the query bears it out. A safe cue in the query overrides a
// different ungrounded token unless the token is an extension of the cue's category; without
// grounding the token needs confidence of 0.6 or more.
std::optional<std::string> validatedFinderFileType(const core::Slots& slots,
                                                   const FinderCueText& trimmedQuery,
                                                   double confidence);
std::optional<std::string> validatedFinderFileType(const core::Slots& slots,
                                                   std::string_view trimmedQuery,
                                                   double confidence);

// --- Date range and keyword -------------------------------------------------------------------

// The slot "date_range", lower-cased, when it is a file-search range and the lower-cased query
// holds one of finderDateCueWords.
std::optional<std::string> validatedFinderDateRange(const core::Slots& slots,
                                                    std::string_view trimmedQuery);

// The keyword without its first matching trailing filler ("report files" → "report") and
// trailing blanks; may be empty. Nothing when no filler matches.
std::optional<std::string> finderKeywordStrippingTrailingFiller(std::string_view keyword);

// --- Per intent -------------------------------------------------------------------------------

// Always a finderSearch plan; a search with nothing grounded searches for the whole query.
core::ValidationOutcome validateFinderSearch(const core::Slots& slots,
                                             std::string_view trimmedQuery, double confidence);

// A calendarQuery plan; the range defaults to "today".
core::ValidationOutcome validateCalendarQuery(const core::Slots& slots);

// A messageSend plan, or the missing slot "recipient", then "body".
core::ValidationOutcome validateMessageSend(const core::Slots& slots,
                                            std::string_view trimmedQuery);

// `mail` when the query speaks of mail ("email", "메일", "メール", "邮件", ...) other than a
// Japanese short mail, which is a text message; else nothing.
std::optional<core::MessageDraft::Channel> deterministicMailChannel(std::string_view query);

// A musicPlay plan; the action defaults to `play`, and a query of only request verbs and
// generic nouns becomes no query.
core::ValidationOutcome validateMusicPlay(const core::Slots& slots);

// Drops trailing request verbs ("틀어줘", "play"), then a Korean particle or filler from the
// new last word. Nothing when nothing is left.
std::optional<std::string> musicQueryStrippingTrailingRequestVerb(std::string_view query);
// Drops trailing generic nouns ("노래", "songs"). Nothing when nothing is left.
std::optional<std::string> musicQueryStrippingTrailingGenericNoun(std::string_view query);

}  // namespace nuvrel::pipeline::Validator
