#pragma once
// The plainest file searches, caught before the model is asked: one file-name-like token
// before "찾아줘" and its kin, or behind "find " and its kin. Pure; safe from any thread.

#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::desktop::FinderSearchFastPath {

// The keyword; nothing for anything that might mean something else (several words, a web
// address, a file-type or date word that the router reads better).
std::optional<std::string> match(std::string_view query);

// A "." that is not the first character, and behind the last one 1 to 5 letters or digits.
bool looksLikeFileName(std::string_view text);

}  // namespace nuvrel::desktop::FinderSearchFastPath
