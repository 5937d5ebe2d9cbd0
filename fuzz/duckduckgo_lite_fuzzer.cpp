// The DuckDuckGo Lite results page: at most `limit` results, each with a title, a readable
// address and no junk host, and the first results of a smaller limit are the same ones.

#include "base/text.h"
#include "fuzz_support.h"
#include "wayfen/duckduckgo_lite_parser.h"

using namespace nuvrel;
using wayfen::DuckDuckGoLiteParser::parse;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view html = fuzz::text(data, size);
    const auto all = parse(html, 10);
    FUZZ_CHECK(all.size() <= 10);
    for (const auto& result : all) {
        FUZZ_CHECK(!result.title.empty());
        FUZZ_CHECK(base::text::isValidUtf8(result.url));
        FUZZ_CHECK(!wayfen::DuckDuckGoLiteParser::isJunkHost(result.host));
    }
    const auto first = parse(html, 2);
    FUZZ_CHECK(first.size() == std::min<std::size_t>(all.size(), 2));
    for (std::size_t i = 0; i < first.size(); ++i) FUZZ_CHECK(first[i] == all[i]);
    (void)wayfen::DuckDuckGoLiteParser::isBotChallenge(html);
    return 0;
}
