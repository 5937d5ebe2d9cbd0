#pragma once
// Reduces a fetched HTML page to the plain paragraphs worth reading. No main container and no
// scoring: every <p> of the page is kept or dropped by tests on its own text, its ancestors'
// class and id, and its share of link text. Stateless, pure, safe from any thread; never
// throws.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wayfen::ReadabilityExtractor {

// Paragraph texts, white space collapsed, in document order. Nothing when the page does not
// parse or no paragraph qualifies; never an empty list. `html` is UTF-8 text: a charset the
// page declares in a meta tag is ignored, since the bytes were decoded before.
std::optional<std::vector<std::string>> extract(std::string_view html);

}  // namespace wayfen::ReadabilityExtractor
