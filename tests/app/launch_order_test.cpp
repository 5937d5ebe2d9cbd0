// The program as launch assembles it, with recording stand-ins for the settings, the key
// store, the model runtime and the web providers: what is looked at when, and what a
// diagnostic report made afterwards holds.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <mutex>

#include "app/app_test_support.h"
#include "app/launch.h"
#include "app/lazy_llm_runtime.h"
#include "app/settings_keys.h"
#include "base/paths.h"
#include "platform/live_llm.h"
#include "support/helper_process.h"
#include "support/loopback_server.h"
#include "support/scripted_backend.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

// What the stand-ins saw, in order, from any thread.
struct Steps {
    void note(std::string step) {
        std::lock_guard lock(mutex);
        seen.push_back(std::move(step));
    }
    std::vector<std::string> take() {
        std::lock_guard lock(mutex);
        return std::exchange(seen, {});
    }
    std::mutex mutex;
    std::vector<std::string> seen;
};

class RecordingKeychain final : public KeychainStoring {
public:
    explicit RecordingKeychain(Steps& steps) : steps_(steps) {}
    std::optional<std::string> secret(std::string_view key) const override {
        steps_.note("key " + std::string(key));
        return std::string("fc-test-key");
    }
    void setSecret(std::string_view, std::optional<std::string>) override {}

private:
    Steps& steps_;
};

class LaunchedProgram : public ::testing::Test {
protected:
    LaunchedProgram()
        : providers(
              [this](httplib::Server& http) {
                  for (const char* name : {"tavily", "firecrawl"})
                      http.Post(std::string("/") + name, [this, name](const auto&, auto& reply) {
                          steps.note(std::string("search ") + name);
                          reply.status = name == std::string("tavily") ? 500 : 200;
                          reply.set_content(resultsOnTheWeb, "application/json");
                      });
              },
              "127.0.0.2") {
        defaults->onRead = [this](std::string_view key) {
            if (key == settingsKey::searxngEndpoint || key == settingsKey::networkFeaturesEnabled)
                steps.note("setting " + std::string(key));
        };
        defaults->set(settingsKey::searxngEndpoint, "http://127.0.0.2:1/searx");
        fs::create_directories(paths.dataHome / "nuvrel" / "contacts");
        std::ofstream(paths.dataHome / "nuvrel" / "contacts" / "sam.vcf")
            << "BEGIN:VCARD\nVERSION:3.0\nFN:Sam Park\nTEL:+1 555 0100\nEND:VCARD\n";

        LaunchSettings launch{defaults, runtime, false};
        launch.networkLog = std::make_shared<NetworkActivityLog>(std::chrono::system_clock::now,
                                                                 paths.networkActivityFile());
        launch.keychain = std::make_shared<RecordingKeychain>(steps);
        launch.session = std::make_shared<base::HttpSession>();
        launch.webEndpoints = WebServiceEndpoints{
            .tavily = *base::Url::parse(providers.url("/tavily")),
            .firecrawl = *base::Url::parse(providers.url("/firecrawl")),
            .wikipediaHosts = wayfen::WikipediaTransport::HostMap{{"en", "127.0.0.2"}},
            .wikipediaPort = 1,
            .unreachable = *base::Url::parse(providers.url("/dead"))};
        makePipeline = makePipelineFactory(launch);
    }

    core::PipelineOutcome ask(std::string_view sentence) {
        return makePipeline(core::AppLanguage::en)->run(sentence);
    }

    static constexpr const char* resultsOnTheWeb =
        R"({"data":{"web":[{"title":"Bibimbap","url":"http://127.0.0.1:1/bibimbap",)"
        R"("description":"Bibimbap is mixed rice with gochujang and namul"}]}})";

    nuvrel::test::TemporaryHome home;
    base::XdgPaths paths = base::XdgPaths::fromEnvironment();
    Steps steps;
    nuvrel::test::LoopbackServer providers;
    std::shared_ptr<test::InMemorySettingsStore> defaults =
        std::make_shared<test::InMemorySettingsStore>();
    static constexpr const char* unknown =
        R"({"intent":"system.unknown","confidence":0.9,"slots":{}})";
    // Set before the first sentence that reaches the model.
    std::shared_ptr<testing::ScriptedBackend> router = std::make_shared<testing::ScriptedBackend>(
        std::vector<testing::ScriptedBackend::Step>(2, testing::reply(unknown)));
    std::shared_ptr<LazyLLMRuntime> runtime = std::make_shared<LazyLLMRuntime>([this] {
        steps.note("model resolved");
        LLMRuntime made;
        made.manager = std::make_shared<llm::LlamaServerManager>(
            paths.dataHome / "nuvrel" / "models" / "qwen2.5-1.5b-instruct-q4_k_m.gguf", 1, nullptr,
            llm::LlamaServerMode::chat, 2048,
            platform::liveLlamaServerEnvironment(base::Diagnostics()));
        made.routingBackend = router;
        made.summaryBackend = std::make_shared<testing::ScriptedBackend>(
            std::vector<testing::ScriptedBackend::Step>(4, testing::reply("Mixed rice.")));
        return made;
    });
    AppState::MakePipeline makePipeline;
};

TEST_F(LaunchedProgram, ModelKeyAndChainWaitForTheFirstSentenceThatNeedsThemAndComeOnce) {
    using Seen = std::vector<std::string>;
    // Launch itself resolves no model, asks no key store and builds no web chain.
    EXPECT_EQ(steps.take(), Seen{});
    // Each run reads the network switch anew, so that a change needs no restart.
    EXPECT_TRUE(ask("2+2").asResult());
    EXPECT_EQ(steps.take(), Seen{"setting networkFeaturesEnabled"});
    // A sentence for the model resolves it; a search folds the chain in its order, the key
    // store asked for Firecrawl's key before the user's SearXNG address is read.
    defaults->set(settingsKey::searxngEndpoint, "http://127.0.0.2:2/changed");
    ask("what is bibimbap");
    EXPECT_EQ(steps.take(),
              (Seen{"setting networkFeaturesEnabled", "model resolved", "key firecrawlAPIKey",
                    "setting searxngEndpoint", "search tavily", "search firecrawl"}));
    // Later searches reuse both.
    ask("what is bibimbap");
    EXPECT_EQ(steps.take(),
              (Seen{"setting networkFeaturesEnabled", "search tavily", "search firecrawl"}));
}

TEST_F(LaunchedProgram, ADiagnosticReportAfterAMessageASearchAndANoteHoldsNoneOfTheirWords) {
    router = std::make_shared<testing::ScriptedBackend>(std::vector<testing::ScriptedBackend::Step>{
        testing::reply(R"({"intent":"message.send","confidence":0.93,"slots":)"
                       R"({"recipient":"Sam Park","body":"the pharmacy closes at six",)"
                       R"("channel":"sms"}})"),
        testing::reply(unknown)});
    EXPECT_TRUE(ask("text Sam Park the pharmacy closes at six").asConfirm());
    ask("what is bibimbap");
    ask("take a note: ask the landlord about the boiler");
    ASSERT_TRUE(fs::exists(paths.dataHome / "nuvrel" / "notes"));

    const auto diagnostics = nuvrel::test::runToEnd({NUVREL_PATH, "diagnostics"}, 30s);
    ASSERT_EQ(diagnostics.exitCode, 0);
    const std::string& report = diagnostics.output;
    // The search reached the log: the report shows its host, and only that.
    EXPECT_NE(report.find("127.0.0.2 — "), std::string::npos) << report;
    for (const char* personal : {"Sam", "555", "pharmacy", "bibimbap", "Bibimbap", "gochujang",
                                 "landlord", "boiler", "fc-test-key", "what is"}) {
        EXPECT_EQ(report.find(personal), std::string::npos) << personal << "\n" << report;
    }
}

}  // namespace
}  // namespace nuvrel::app
