// A SearXNG HTML results page: every result it reads survives the wire shape.

#include "fuzz_support.h"
#include "wayfen/searxng_transport.h"
#include "wire_shape_check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    nuvrel::fuzz::checkWireShapeRoundTrip(
        wayfen::SearXNGTransport::parseSearXNGHTML(nuvrel::fuzz::text(data, size)));
    return 0;
}
