// The readability extractor: nothing, or a non-empty list of paragraphs whose white space is
// collapsed, and which are valid UTF-8 when the page was (the fetcher hands it only decoded
// text).

#include "base/text.h"
#include "fuzz_support.h"
#include "wayfen/readability_extractor.h"

using namespace nuvrel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view html = fuzz::text(data, size);
    const auto paragraphs = wayfen::ReadabilityExtractor::extract(html);
    if (!paragraphs) return 0;
    FUZZ_CHECK(!paragraphs->empty());
    for (const auto& paragraph : *paragraphs) {
        FUZZ_CHECK(!paragraph.empty());
        FUZZ_CHECK(base::text::isValidUtf8(paragraph) || !base::text::isValidUtf8(html));
        FUZZ_CHECK(paragraph == base::text::trim(paragraph));
        FUZZ_CHECK(paragraph.find("  ") == std::string::npos);
    }
    return 0;
}
