#pragma once
// The retrieval path's one wire shape: the results page of DuckDuckGo Lite. Every transport
// writes its results in this shape (see SearXNGTransport::reserialize) and this parser reads
// them back. Stateless; patterns are compiled once per process. Never throws.

#include <string>
#include <string_view>
#include <vector>

namespace wayfen::DuckDuckGoLiteParser {

struct Result {
    std::string title;
    std::string snippet;
    // The host, with the URL's path behind it when that path is neither empty nor "/".
    std::string host;
    std::string url;
    friend bool operator==(const Result&, const Result&) = default;
};

// At most `limit` usable results, in page order; anchors passed over do not count.
std::vector<Result> parse(std::string_view html, int limit);

// True only when all three challenge markers are on the page.
bool isBotChallenge(std::string_view html);

// A stock-photo or image-licensing host, or a subdomain of one. The text is tested as it
// stands: a host with a path behind it does not match.
bool isJunkHost(std::string_view host);

// The entity decoding of the wire shape: "&amp;" last, so an escaped entity survives once.
std::string decodeEntities(std::string_view text);

}  // namespace wayfen::DuckDuckGoLiteParser
