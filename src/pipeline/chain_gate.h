#pragma once
// A cheap text test for whether one sentence might hold several requests ("remind me to call
// Sam and then play jazz"). It runs on every query, so it stays a pure string test; only a
// query that passes it costs a call to the summary model.

#include <array>
#include <string_view>

namespace nuvrel::pipeline::ChainGate {

// Compared against the lower-cased query.
inline constexpr std::array<std::string_view, 18> connectorPhrases = {
    "그리고 나서", "그러고 나서", "그런 다음",  "그 다음에", "그다음에", "이어서",
    "그리고",      "and then",    "after that", "and also",  "そして",   "それから",
    "その後で",    "そのあとで",  "然后",       "之后再",    "，还有",   "、还有",
};

// Korean verbs in their linking form, each with its trailing blank. One counts only when
// something follows it: "불 꺼주고" alone is not a chain.
inline constexpr std::array<std::string_view, 7> verbEndingConnectors = {
    "주고 ", "드리고 ", "추고 ", "하고 ", "내고 ", "놓고 ", "두고 ",
};

// Thread-safe and allocation-light; never calls a model.
bool mightBeChain(std::string_view query);

}  // namespace nuvrel::pipeline::ChainGate
