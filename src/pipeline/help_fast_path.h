#pragma once
// Help requests ("what can you do?", "도움말", "使い方") and the one normal form that keys every
// phrase table of the fast paths: lower-cased, all white space removed, trailing punctuation
// dropped. Tables keyed by it hold their phrases with no spaces.

#include <string>
#include <string_view>
#include <unordered_set>

#include "base/regex.h"

namespace nuvrel::pipeline::HelpFastPath {

// Characters dropped from the end of a normalised text.
inline constexpr std::string_view trailingPunctuation = "?？!！.。~…";

// The help phrases in normal form, built on first use.
const std::unordered_set<std::string>& phrases();
// Korean "what can you do" in its many spellings, matched against the normal form.
const base::Regex& koreanPattern();

// Lower-case, remove every white-space character, then drop trailing punctuation. May be empty.
std::string normalize(std::string_view text);
// Whether the query asks what the launcher can do.
bool match(std::string_view query);

}  // namespace nuvrel::pipeline::HelpFastPath
