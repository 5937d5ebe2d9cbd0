// The summary and embedding backends against the real llama-server and the tiny test model.
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <cmath>
#include <thread>

#include "app/model_backends.h"
#include "base/files.h"
#include "base/paths.h"
#include "llm/embedding_backend.h"
#include "llm/llama_server_backend.h"
#include "llm/summary_model.h"
#include "platform/live_process_control.h"
#include "support/real_llama_server.h"
#include "support/temporary_home.h"
#include "wayfen/chunk_selector.h"

namespace nuvrel::llm {
namespace {

using namespace std::chrono_literals;

class RealModelBackendsTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(nuvrel::test::realServerAvailable()); }

    std::shared_ptr<LlamaServerManager> manager(int port, LlamaServerMode mode) {
        LlamaServerManager::Environment environment;
        environment.processes = platform::liveProcessControl();
        environment.findServerBinary = [] {
            return std::optional(nuvrel::test::realServerBinary());
        };
        environment.logsDirectory = base::XdgPaths::fromEnvironment().logsDirectory();
        environment.timing.healthPollInterval = 50ms;
        return std::make_shared<LlamaServerManager>(mode == LlamaServerMode::chat
                                                        ? nuvrel::test::tinyTestModel()
                                                        : nuvrel::test::tinyEmbeddingTestModel(),
                                                    port, session, mode, 2048, environment);
    }
    base::Url url(int port) {
        return *base::Url::parse("http://127.0.0.1:" + std::to_string(port));
    }
    static bool alive(std::int32_t pid) { return ::kill(pid, 0) == 0; }
    // Our child on the port, from the PID file the manager keeps ("owner:child:model").
    static std::int32_t child(int port) {
        const auto record = base::readFile(base::XdgPaths::fromEnvironment().logsDirectory() /
                                           ("llama-server-" + std::to_string(port) + ".pid"));
        if (!record) return 0;
        const auto first = record->find(':');
        return std::stoi(record->substr(first + 1));
    }

    nuvrel::test::TemporaryHome home;
    std::shared_ptr<base::HttpSession> session = std::make_shared<base::HttpSession>();
};

TEST_F(RealModelBackendsTest, SummaryServerStartsOnDemandIsReusedAndIdlesOut) {
    constexpr int port = 18671;
    auto server = manager(port, LlamaServerMode::chat);
    const auto backend = std::make_shared<LlamaServerBackend>(
        url(port), session, std::string(LlamaServerBackend::modelName), 0.0, 8, 30.0, 0, 0);
    auto summary = std::make_unique<SummaryModelBackend>(std::make_shared<ManagerHandle>(server),
                                                         backend, 1.0, "tiny.gguf");
    const std::string schema = R"({"type":"object","properties":{"summary":{"type":"string"}}})";
    EXPECT_EQ(child(port), 0);
    EXPECT_FALSE(summary->complete("Summarize.", "one", schema).empty());
    const std::int32_t first = child(port);
    EXPECT_FALSE(summary->complete("Summarize.", "two", schema).empty());
    ASSERT_NE(first, 0);
    EXPECT_EQ(child(port), first);
    EXPECT_TRUE(alive(first));

    // One idle second later the server is gone; the next call starts a new one.
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (alive(first) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(100ms);
    EXPECT_FALSE(alive(first));
    EXPECT_FALSE(summary->complete("Summarize.", "three", schema).empty());
    const std::int32_t second = child(port);
    EXPECT_NE(second, first);
    EXPECT_TRUE(alive(second));
    summary.reset();
    server->stop();
    EXPECT_FALSE(alive(second));
}

TEST_F(RealModelBackendsTest, EmbeddingServerGivesOneVectorPerPassageAndRanksByIt) {
    constexpr int port = 18672;
    auto server = manager(port, LlamaServerMode::embedding);
    auto embeddings = std::make_shared<EmbeddingModelBackend>(
        std::make_shared<ManagerHandle>(server),
        std::make_shared<LlamaEmbeddingBackend>(url(port), session), 180.0);
    const std::vector<std::string> passages = {"river bank", "bank bank bank river", "apple"};
    std::vector<std::vector<float>> vectors;
    for (const auto& passage : passages) vectors.push_back(embeddings->embed(passage, false));
    ASSERT_FALSE(vectors[0].empty());
    for (const auto& vector : vectors) EXPECT_EQ(vector.size(), vectors[0].size());
    EXPECT_NE(vectors[0], vectors[2]);

    // Term frequency favours the chunk that repeats the query's words; the embeddings favour
    // the one that reads like the query, and the selector follows them.
    namespace selector = wayfen::ChunkSelector;
    const std::string query = "river bank erosion";
    const std::vector<selector::SourceChunk> chunks = {
        {"bank bank bank river river erosion erosion notes on many unrelated topics", "a", "a", 0},
        {"river bank erosion", "b", "b", 0}};
    const auto cosine = [&](const std::string& text) {
        const auto q = embeddings->embed(query, true), d = embeddings->embed(text, false);
        double dot = 0, qq = 0, dd = 0;
        for (std::size_t i = 0; i < q.size(); ++i)
            dot += q[i] * d[i], qq += q[i] * q[i], dd += d[i] * d[i];
        return dot / std::sqrt(qq * dd);
    };
    ASSERT_GT(cosine(chunks[1].text), cosine(chunks[0].text));
    EXPECT_EQ(selector::select(chunks, query, 1).front().sourceHost, "a");
    const auto provider = std::make_shared<app::EmbeddingBackendAdapter>(embeddings);
    EXPECT_EQ(selector::select(chunks, query, 1, provider).front().sourceHost, "b");
    server->stop();
}

}  // namespace
}  // namespace nuvrel::llm
