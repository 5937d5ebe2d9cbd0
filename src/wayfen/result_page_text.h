#pragma once
// Text of a result page's fragment as a reader sees it: markup removed, entities decoded.
// Shared by the two result-page parsers so that they clean text the same way.

#include <string>
#include <string_view>

namespace wayfen {

// Tags deleted, entities decoded, white space trimmed at both ends.
std::string trimmedPageText(std::string_view fragment);

// Tags deleted, entities decoded, every run of white space made one blank, none at the ends.
std::string collapsedPageText(std::string_view fragment);

}  // namespace wayfen
