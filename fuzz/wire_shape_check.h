#pragma once
// Every transport writes its results in the wire shape that the DuckDuckGo Lite parser reads
// back: what a decoder gives must come back through that parser unchanged in its address and
// order, and whatever is dropped is dropped whole.

#include <climits>
#include <vector>

#include "base/text.h"
#include "fuzz_support.h"
#include "wayfen/duckduckgo_lite_parser.h"
#include "wayfen/searxng_transport.h"

namespace nuvrel::fuzz {

inline void checkWireShapeRoundTrip(const std::vector<wayfen::SearXNGResultItem>& items) {
    for (const auto& item : items) {
        FUZZ_CHECK(!item.url.empty());
        FUZZ_CHECK(!base::text::trim(item.title).empty());
    }
    const auto results =
        wayfen::DuckDuckGoLiteParser::parse(wayfen::SearXNGTransport::reserialize(items), INT_MAX);
    FUZZ_CHECK(results.size() <= items.size());
    std::size_t next = 0;
    for (const auto& result : results) {
        while (next < items.size() && items[next].url != result.url) ++next;
        FUZZ_CHECK(next < items.size());
        FUZZ_CHECK(!result.title.empty());
        ++next;
    }
}

}  // namespace nuvrel::fuzz
