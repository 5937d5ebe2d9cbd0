// URL parsing and resolution: a parsed URL re-serialises to a text that parses to the same
// URL, its parts agree with its text, and a resolved reference is such a URL too. Input: the
// base, a NUL, then a reference.

#include "base/url.h"
#include "fuzz_support.h"

using namespace nuvrel;
using base::Url;

namespace {

void checkStable(const Url& url) {
    const auto again = Url::parse(url.text());
    FUZZ_CHECK(again.has_value());
    FUZZ_CHECK(*again == url);
    FUZZ_CHECK(again->host() == url.host());
    FUZZ_CHECK(again->path() == url.path());
    FUZZ_CHECK(!url.path().empty());
    FUZZ_CHECK(url.text().starts_with(url.scheme() + ":"));
    if (url.port()) FUZZ_CHECK(*url.port() >= 0 && *url.port() <= 65535);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto [first, second] = fuzz::split(fuzz::text(data, size));
    FUZZ_CHECK(base::percentDecode(base::percentEncode(first)) == first);
    const auto url = Url::parse(first);
    if (!url) return 0;
    checkStable(*url);
    if (const auto resolved = url->resolve(second)) checkStable(*resolved);
    checkStable(url->appendingPath(second));
    checkStable(url->withQueryItems({{std::string(second), "v"}}));
    return 0;
}
