// Charset decoding of a page: whatever decodes is valid UTF-8, a UTF-8 page decodes to
// itself, and a declared charset ICU knows gives the same text as its converter does.
// Input: the Content-Type header, a NUL, then the page bytes.

#include "base/text.h"
#include "fuzz_support.h"
#include "wayfen/html_decoding.h"

using namespace nuvrel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto [header, page] = fuzz::split(fuzz::text(data, size));
    const std::optional<std::string> contentType =
        header.empty() ? std::nullopt : std::optional<std::string>(header);
    const auto decoded = wayfen::decodeHTML(page, contentType, 1024);
    if (decoded) FUZZ_CHECK(base::text::isValidUtf8(*decoded));

    const auto declared = wayfen::charsetParameter(contentType);
    if (declared) FUZZ_CHECK(!declared->empty());
    if (const auto encoding = wayfen::characterEncoding(header)) {
        if (const auto text = encoding->decode(page)) FUZZ_CHECK(base::text::isValidUtf8(*text));
    }
    if (!contentType && !wayfen::charsetFromMetaTag(page, 1024) && base::text::isValidUtf8(page)) {
        FUZZ_CHECK(decoded == std::optional<std::string>(page));
    }
    return 0;
}
