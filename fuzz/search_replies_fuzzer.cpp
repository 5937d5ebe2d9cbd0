// The JSON replies of Tavily, Firecrawl and Wikipedia (opensearch titles and a summary). The
// first byte picks the decoder. A body either decodes or fails with the transport's own
// undecodable error, and whatever decodes survives the wire shape.

#include "fuzz_support.h"
#include "wayfen/firecrawl_transport.h"
#include "wayfen/tavily_transport.h"
#include "wayfen/wikipedia_transport.h"
#include "wire_shape_check.h"

using namespace nuvrel;
using wayfen::SearXNGResultItem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view body = fuzz::text(data + 1, size - 1);
    switch (data[0] % 4) {
        case 0:
            try {
                fuzz::checkWireShapeRoundTrip(wayfen::TavilyTransport::decodeResults(body));
            } catch (const wayfen::TavilyTransportError& error) {
                FUZZ_CHECK(error.kind() == wayfen::TavilyTransportError::Kind::undecodableBody);
            }
            break;
        case 1:
            try {
                fuzz::checkWireShapeRoundTrip(wayfen::FirecrawlTransport::decodeResults(body));
            } catch (const wayfen::FirecrawlTransportError& error) {
                FUZZ_CHECK(error.kind() == wayfen::FirecrawlTransportError::Kind::undecodableBody);
            }
            break;
        case 2: {
            const auto titles = wayfen::WikipediaTransport::decodeOpenSearchTitles(body);
            for (const auto& title : titles) FUZZ_CHECK(base::text::isValidUtf8(title));
            break;
        }
        default: {
            const auto item =
                wayfen::WikipediaTransport::decodeSummaryItem(body, "Seoul", "en.wikipedia.org");
            if (item) {
                FUZZ_CHECK(!item->snippet.empty());
                FUZZ_CHECK(item->snippet == base::text::trim(item->snippet));
                if (!base::text::trim(item->title).empty()) {
                    fuzz::checkWireShapeRoundTrip({*item});
                }
            }
        }
    }
    return 0;
}
