#pragma once
// The saved-search file that hands a keyword over to the desktop's own file search, over the
// whole disk, for a user who wants to look further than the card's hits.

#include <filesystem>
#include <string>
#include <string_view>

namespace nuvrel::desktop::FinderSavedSearch {

inline constexpr std::string_view fileName = "Nuvrel-search.savedSearch";

// The XML property list of the search, UTF-8, indented by four spaces.
std::string propertyList(std::string_view keyword);

// Writes the property list atomically to `fileName` in `folder`, replacing an earlier one, and
// gives its path. Throws std::filesystem::filesystem_error when it cannot.
std::filesystem::path write(std::string_view keyword, const std::filesystem::path& folder);

}  // namespace nuvrel::desktop::FinderSavedSearch
