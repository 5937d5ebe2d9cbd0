// The model update manifest from the network: decoding throws nothing but a decoding error; a
// decoded entry has a URL that parses and survives its own encoding; the decision never offers
// an entry that fails validation; versions compare the same both ways round.

#include "core/decoding_error.h"
#include "fuzz_support.h"
#include "llm/model_update_checker.h"

using namespace nuvrel;
namespace Checker = llm::ModelUpdateChecker;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto [json, version] = fuzz::split(fuzz::text(data, size));
    FUZZ_CHECK(Checker::compareVersions(json, version) == -Checker::compareVersions(version, json));
    FUZZ_CHECK(Checker::compareVersions(version, version) == 0);

    llm::ModelUpdateManifest manifest;
    try {
        manifest = Checker::decodeManifest(json);
    } catch (const core::DecodingError&) {
        return 0;
    }
    FUZZ_CHECK(base::Url::parse(manifest.router.url).has_value());
    const auto again = Checker::decodeManifest(
        nlohmann::json{{"router", Checker::encodeEntry(manifest.router)}}.dump());
    FUZZ_CHECK(again == manifest);

    const auto decision = Checker::decide(manifest, {"installed.gguf"}, version);
    if (decision.kind == llm::ModelUpdateDecision::Kind::available) {
        FUZZ_CHECK(decision.entry == manifest.router);
        FUZZ_CHECK(manifest.router.sha256.size() == 64 && manifest.router.sizeBytes >= 1);
        FUZZ_CHECK(manifest.router.fileName != "installed.gguf");
    }
    return 0;
}
