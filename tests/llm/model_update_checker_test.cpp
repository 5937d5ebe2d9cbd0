#include "llm/model_update_checker.h"

#include <gtest/gtest.h>

#include "core/decoding_error.h"
#include "llm/curated_models.h"

namespace nuvrel::llm {
namespace {

namespace Checker = ModelUpdateChecker;
using Kind = ModelUpdateDecision::Kind;

const std::string digest64(64, 'A');

std::string manifestJSON(const std::string& entryFields) {
    return R"({"router": {)" + entryFields + "}}";
}
const std::string complete = R"("fileName": "nuvrel-nano-router-v6-q4_k_m.gguf",
    "url": "https://models.example/v6.gguf", "sizeBytes": 5, "sha256": ")" +
                             digest64 + "\"";

TEST(ModelUpdateChecker, DecisionOverManifests) {
    struct Case {
        const char* name;
        std::string extraFields;  // appended to the complete entry; later keys win
        std::vector<std::string> installed;
        Kind expected;
    };
    const std::vector<Case> cases = {
        {"offer", "", {}, Kind::available},
        {"63 digits even though installed",
         R"(, "sha256": ")" + std::string(63, 'a') + "\"",
         {"nuvrel-nano-router-v6-q4_k_m.gguf"},
         Kind::malformed},
        {"not a gguf", R"(, "fileName": "v6.bin")", {}, Kind::malformed},
        {"empty file", R"(, "sizeBytes": 0)", {}, Kind::malformed},
        {"same file installed", "", {"nuvrel-nano-router-v6-q4_k_m.gguf"}, Kind::upToDate},
        {"newer app needed", R"(, "minAppVersion": "0.2")", {}, Kind::blockedByAppVersion},
        {"equal version", R"(, "minAppVersion": "0.1.0.0")", {}, Kind::available},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto manifest = Checker::decodeManifest(manifestJSON(complete + c.extraFields));
        const auto decision = Checker::decide(manifest, c.installed, "0.1");
        EXPECT_EQ(decision.kind, c.expected) << decision.reason;
        if (c.expected == Kind::available) {
            EXPECT_EQ(decision.entry, manifest.router);
        }
    }
    const auto blocked = Checker::decide(
        Checker::decodeManifest(manifestJSON(complete + R"(, "minAppVersion": "0.2")")), {}, "0.1");
    EXPECT_EQ(blocked.required, "0.2");
    EXPECT_EQ(blocked.current, "0.1");

    // A missing key rejects the whole manifest.
    for (const char* key : {"fileName", "url", "sizeBytes", "sha256"}) {
        auto document = nlohmann::json::parse(manifestJSON(complete));
        document["router"].erase(key);
        EXPECT_THROW(Checker::decodeManifest(document.dump()), core::DecodingError) << key;
    }
}

TEST(ModelUpdateChecker, OnceADayAndOnlyWhenEnabled) {
    const auto url = base::Url::parse(Checker::manifestURL);
    const std::chrono::system_clock::time_point last{std::chrono::seconds(1'700'000'000)};
    EXPECT_TRUE(Checker::shouldCheck(url, true, last, last + std::chrono::seconds(86'400)));
    EXPECT_FALSE(Checker::shouldCheck(url, true, last, last + std::chrono::seconds(86'399)));
    EXPECT_TRUE(Checker::shouldCheck(url, true, std::nullopt, last));
    EXPECT_FALSE(Checker::shouldCheck(url, false, std::nullopt, last));
    EXPECT_FALSE(Checker::shouldCheck(std::nullopt, true, std::nullopt, last));
    EXPECT_EQ(Checker::compareVersions("1.2", "1.2.0"), 0);
    EXPECT_LT(Checker::compareVersions("1.9", "1.10"), 0);
}

TEST(ModelCatalogSources, MirrorReplacesTheHostAndKeepsThePath) {
    const auto source = *base::Url::parse("https://models.nuvrel.app/v1/a.gguf");
    EXPECT_EQ(ModelCatalog::applyingMirror(source, "http://127.0.0.1:9000").text(),
              "http://127.0.0.1:9000/v1/a.gguf");
    EXPECT_EQ(ModelCatalog::applyingMirror(source, "https://mirror.example/nuvrel/").text(),
              "https://mirror.example/nuvrel/v1/a.gguf");
    EXPECT_EQ(ModelCatalog::applyingMirror(source, "").text(), source.text());
    EXPECT_EQ(ModelCatalog::applyingMirror(source, "ftp://mirror.example").text(), source.text());
}

}  // namespace
}  // namespace nuvrel::llm
