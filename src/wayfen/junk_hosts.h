#pragma once
// Hosts whose result pages are image-licensing storefronts: nothing to read for an answer.

#include <set>
#include <string>

namespace wayfen {

// Twelve lower-case stock-photo and image-licensing domains.
const std::set<std::string, std::less<>>& junkHostSuffixes();

}  // namespace wayfen
