// The router's reading of a model reply: an intent only from a reply whose first object
// decodes, exactly that intent, asked once; any other reply is retried once and ends as
// invalid output with the empty intent.

#include <nlohmann/json.hpp>

#include "core/routed_intent.h"
#include "fuzz_support.h"
#include "llm/json_object_extraction.h"
#include "pipeline/router.h"
#include "reply_backend.h"

using namespace nuvrel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string reply(fuzz::text(data, size));
    auto backend = std::make_shared<fuzz::ReplyBackend>(reply);
    pipeline::Router router;
    router.backend = backend;
    const auto detailed = router.routeDetailed("what is the weather");

    std::optional<core::RoutedIntent> expected;
    if (const auto object = llm::extractJSONObject(reply)) {
        try {
            expected = core::RoutedIntent::decode(*object);
        } catch (const nlohmann::json::exception&) {
        }
    }
    if (expected) {
        FUZZ_CHECK(!detailed.failure && backend->calls == 1);
        // NaN is never equal to itself; everything else must be.
        FUZZ_CHECK(detailed.routed == *expected || expected->confidence != expected->confidence);
    } else {
        FUZZ_CHECK(detailed.failure == core::RouteFailure::invalidOutput);
        FUZZ_CHECK(backend->calls == 2);
        FUZZ_CHECK(detailed.routed == core::RoutedIntent{});
    }
    return 0;
}
