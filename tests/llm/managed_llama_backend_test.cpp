#include "llm/managed_llama_backend.h"

#include <gtest/gtest.h>

#include <atomic>
#include <nlohmann/json.hpp>
#include <optional>
#include <regex>
#include <string>

#include "base/cancellation.h"
#include "base/task.h"
#include "llm/error_capture.h"
#include "llm/llm_error.h"
#include "llm/scripted_llama_server.h"
#include "support/recording_sink.h"

namespace nuvrel::llm {
namespace {

using namespace std::chrono_literals;
using test::ScriptedLlamaServer;

constexpr std::string_view schema = R"({"type":"object"})";

// Stands in for the server manager: the server behind it is the scripted one.
class FakeManager : public ServerEnsuring {
public:
    FakeManager(const ScriptedLlamaServer& server, std::optional<LLMError> failure = std::nullopt)
        : server_(server), failure_(std::move(failure)) {}

    void ensureRunning() override {
        ++calls;
        requestsSeenAtEnsure = server_.requestCount();
        if (failure_) throw *failure_;
    }
    std::filesystem::path modelPath() const override { return path; }

    std::atomic<int> calls{0};
    std::size_t requestsSeenAtEnsure = 0;
    std::filesystem::path path =
        "/home/u/.local/share/nuvrel/models/qwen2.5-1.5b-instruct-q4_k_m.gguf";

private:
    const ScriptedLlamaServer& server_;
    std::optional<LLMError> failure_;
};

ManagedLlamaBackend managedFor(const ScriptedLlamaServer& server,
                               std::shared_ptr<FakeManager> manager, const std::string& label) {
    LlamaServerBackend backend{*base::Url::parse(server.baseURL()),
                               std::make_shared<base::HttpSession>(),
                               std::string(LlamaServerBackend::modelName),
                               0.0,
                               64,
                               10.0,
                               0,
                               0,
                               [](std::chrono::nanoseconds) {}};
    return {std::move(manager), std::move(backend), label};
}

// The milliseconds of the one latency line in `output` for `label` and `outcome`; fails
// when the output is anything else.
std::optional<double> latencyOf(const std::string& output, const std::string& label,
                                const std::string& outcome) {
    std::smatch match;
    const std::regex line("\\[nuvrel-latency\\] (.*) call (.*) in ([0-9]+\\.[0-9])ms\n");
    if (!std::regex_match(output, match, line)) {
        ADD_FAILURE() << "not one latency line: " << output;
        return std::nullopt;
    }
    EXPECT_EQ(match[1], label);
    EXPECT_EQ(match[2], outcome);
    return std::stod(match[3]);
}

TEST(ManagedLlamaBackend, EnsuresTheServerThenLogsTheCallsLatency) {
    ScriptedLlamaServer server({{200, test::chatReply("routed\"}"), 120ms}});
    auto manager = std::make_shared<FakeManager>(server);
    auto managed = managedFor(server, manager, "routing");

    const nuvrel::test::RecordedDiagnostics recorded;
    managed.diagnostics = recorded.diagnostics;
    const std::string content =
        managed.complete("s", "u", schema, std::optional<std::string_view>("{\"intent\":\""));
    const std::string output = recorded.sink->text();

    EXPECT_EQ(content, "routed\"}");
    EXPECT_EQ(manager->calls, 1);
    EXPECT_EQ(manager->requestsSeenAtEnsure, 0u);
    // The prefix went on to the server.
    const auto messages = nlohmann::json::parse(server.requests().at(0).body)["messages"];
    ASSERT_EQ(messages.size(), 3u);
    EXPECT_EQ(messages[2]["content"], "{\"intent\":\"");
    // Milliseconds, not seconds or nanoseconds: the reply was held back for 120 ms.
    const auto milliseconds = latencyOf(output, "routing", "ok");
    ASSERT_TRUE(milliseconds);
    EXPECT_GE(*milliseconds, 120.0);
    EXPECT_LT(*milliseconds, 5000.0);
}

TEST(ManagedLlamaBackend, AFailedCallIsLoggedAndItsErrorRethrownUnchanged) {
    const struct {
        test::ScriptedReply reply;
        LLMError error;
        const char* outcome;
    } cases[] = {
        {test::contextTooLongReply(), LLMError::inputTooLong(), "error(inputTooLong)"},
        {{500, "{}"}, LLMError::http(500), "error(http(500))"},
        {{200, R"({"choices":[]})"}, LLMError::emptyResponse(), "error(emptyResponse)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.outcome);
        ScriptedLlamaServer server({c.reply});
        auto managed = managedFor(server, std::make_shared<FakeManager>(server), "summary");
        const nuvrel::test::RecordedDiagnostics recorded;
        managed.diagnostics = recorded.diagnostics;
        const auto error = test::errorOf<LLMError>([&] { managed.complete("s", "u", schema); });
        const std::string output = recorded.sink->text();
        EXPECT_EQ(error, c.error);
        latencyOf(output, "summary", c.outcome);
    }
}

TEST(ManagedLlamaBackend, AServerThatCannotBeStartedFailsTheCallUnlogged) {
    ScriptedLlamaServer server({{200, test::chatReply("never")}});
    auto manager = std::make_shared<FakeManager>(server, LLMError::serverStartTimeout());
    auto managed = managedFor(server, manager, "routing");

    const nuvrel::test::RecordedDiagnostics recorded;
    managed.diagnostics = recorded.diagnostics;
    const auto error = test::errorOf<LLMError>([&] { managed.complete("s", "u", schema); });
    const std::string output = recorded.sink->text();

    EXPECT_EQ(error, LLMError::serverStartTimeout());
    EXPECT_EQ(output, "");
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST(ManagedLlamaBackend, ACancelledCallStaysCancelled) {
    ScriptedLlamaServer server({{200, test::chatReply("late"), 20s}});
    auto managed = managedFor(server, std::make_shared<FakeManager>(server), "routing");

    const nuvrel::test::RecordedDiagnostics recorded;
    managed.diagnostics = recorded.diagnostics;
    base::Task<std::string> call([&] { return managed.complete("s", "u", schema); });
    ASSERT_TRUE(server.waitForRequests(1, 5s));
    call.cancel();
    EXPECT_THROW(call.value(), base::Cancelled);
    const std::string output = recorded.sink->text();
    latencyOf(output, "routing", "error(cancelled)");
}

TEST(ManagedLlamaBackend, TheModelFileNameIsTheLastComponentOfTheManagersPath) {
    ScriptedLlamaServer server({{200, "{}"}});
    auto manager = std::make_shared<FakeManager>(server);
    auto managed = managedFor(server, manager, "routing");
    EXPECT_EQ(managed.modelFileName(), "qwen2.5-1.5b-instruct-q4_k_m.gguf");
    manager->path = "/models/gemma-3-4b-it-Q4_K_M.gguf/";
    EXPECT_EQ(managed.modelFileName(), "gemma-3-4b-it-Q4_K_M.gguf");
    EXPECT_EQ(manager->calls, 0);
}

}  // namespace
}  // namespace nuvrel::llm
