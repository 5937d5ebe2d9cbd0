// The real llama-server with the tiny test model: how long a spawn takes to become healthy,
// and what the program adds to one routed call compared with the same request sent with
// plain libcurl. Needs scripts/install-llama-server.sh and tools/make-test-model.sh to
// have run (./test runs both).
#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include <memory>
#include <string>

#include "base/http.h"
#include "base/paths.h"
#include "llm/llama_request_builder.h"
#include "llm/llama_server_backend.h"
#include "llm/llama_server_manager.h"
#include "llm/managed_llama_backend.h"
#include "platform/live_llm.h"
#include "support/real_llama_server.h"
#include "support/temporary_home.h"

namespace {

using namespace nuvrel;

constexpr int benchPort = 18690;
constexpr int maxTokens = 24;
constexpr std::string_view systemPrompt = "Route the query.";
constexpr std::string_view userPrompt = "what is the weather in seoul";
constexpr std::string_view schema =
    R"({"type":"object","properties":{"intent":{"type":"string"}},"required":["intent"]})";

struct RealServer {
    test::TemporaryHome home;
    std::shared_ptr<base::HttpSession> session = std::make_shared<base::HttpSession>();
    std::shared_ptr<llm::LlamaServerManager> manager;

    RealServer() {
        auto environment = platform::liveLlamaServerEnvironment({});
        environment.findServerBinary = [] { return std::optional(test::realServerBinary()); };
        environment.timing.healthPollInterval = std::chrono::milliseconds(20);
        manager = std::make_shared<llm::LlamaServerManager>(test::tinyTestModel(), benchPort,
                                                            session, llm::LlamaServerMode::chat,
                                                            2048, environment);
    }
    llm::LlamaServerBackend backend() const {
        return llm::LlamaServerBackend(
            *base::Url::parse("http://127.0.0.1:" + std::to_string(benchPort)), session,
            std::string(llm::LlamaServerBackend::modelName), 0.0, maxTokens, 30.0, 0, 0);
    }
};

bool serverAvailable(benchmark::State& state) {
    if (test::realServerAvailable()) return true;
    state.SkipWithError("no llama-server or test model: run ./test once");
    return false;
}

void BM_SpawnToHealthy(benchmark::State& state) {
    if (!serverAvailable(state)) return;
    RealServer server;
    for (auto _ : state) {
        server.manager->ensureRunning();
        state.PauseTiming();
        server.manager->stop();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_SpawnToHealthy)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();

size_t discard(char*, size_t size, size_t count, void*) {
    return size * count;
}

// The same body to the same server through libcurl alone: the floor for one call.
void BM_RoutedCallStraightWithCurl(benchmark::State& state) {
    if (!serverAvailable(state)) return;
    RealServer server;
    server.manager->ensureRunning();
    const std::string body = llm::LlamaRequestBuilder::body(
        systemPrompt, userPrompt, schema, llm::LlamaServerBackend::modelName, 0.0, maxTokens,
        llm::LlamaServerBackend::schemaName, std::nullopt);
    const std::string url =
        "http://127.0.0.1:" + std::to_string(benchPort) + "/v1/chat/completions";
    CURL* curl = curl_easy_init();
    curl_slist* headers = curl_slist_append(nullptr, "Content-Type: application/json");
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.c_str());
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, discard);
    for (auto _ : state) {
        if (curl_easy_perform(curl) != CURLE_OK) state.SkipWithError("curl failed");
    }
    curl_slist_free_all(headers);
    curl_easy_cleanup(curl);
    server.manager->stop();
}
BENCHMARK(BM_RoutedCallStraightWithCurl)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(20)
    ->UseRealTime();

void BM_RoutedCallThroughManagedBackend(benchmark::State& state) {
    if (!serverAvailable(state)) return;
    RealServer server;
    server.manager->ensureRunning();
    llm::ManagedLlamaBackend managed(server.manager, server.backend(), "routing");
    for (auto _ : state)
        benchmark::DoNotOptimize(managed.complete(systemPrompt, userPrompt, schema));
    server.manager->stop();
}
BENCHMARK(BM_RoutedCallThroughManagedBackend)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(20)
    ->UseRealTime();

}  // namespace
