#include "llm/llama_server_backend.h"

#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "base/cancellation.h"
#include "base/task.h"
#include "llm/error_capture.h"
#include "llm/llama_request_builder.h"
#include "llm/llm_error.h"
#include "llm/scripted_llama_server.h"

namespace nuvrel::llm {
namespace {

using namespace std::chrono_literals;
using test::ScriptedLlamaServer;
using test::ScriptedReply;
using Clock = std::chrono::steady_clock;

constexpr std::string_view routerSchema =
    R"({"type":"object","properties":{"intent":{"type":"string"},"confidence":{"type":"number"}},)"
    R"("required":["intent","confidence"],"additionalProperties":false})";

// Records the pauses it is asked for and returns at once.
struct RecordingSleep {
    std::shared_ptr<std::vector<std::chrono::nanoseconds>> pauses =
        std::make_shared<std::vector<std::chrono::nanoseconds>>();
    base::SleepFn fn() const {
        return [pauses = pauses](std::chrono::nanoseconds d) { pauses->push_back(d); };
    }
};

// `pause` is the wait before a retry after a 503, in nanoseconds.
LlamaServerBackend backendAt(const std::string& address, int retries, base::SleepFn sleep,
                             double timeoutSeconds = 10.0, std::uint64_t pause = 300'000'000) {
    return {*base::Url::parse(address),
            std::make_shared<base::HttpSession>(),
            std::string(LlamaServerBackend::modelName),
            0.0,
            256,
            timeoutSeconds,
            retries,
            pause,
            std::move(sleep)};
}

LlamaServerBackend backendFor(const ScriptedLlamaServer& server, int retries, base::SleepFn sleep,
                              double timeoutSeconds = 10.0) {
    return backendAt(server.baseURL(), retries, std::move(sleep), timeoutSeconds);
}

TEST(LlamaServerBackend, PostsOneChatCompletionAndReturnsTheContent) {
    ScriptedLlamaServer server(
        {{200, test::chatReply(R"({"intent":"web.search","confidence":0.9})")}});
    RecordingSleep sleep;
    auto backend = backendFor(server, 2, sleep.fn());

    EXPECT_EQ(backend.complete("You route queries.", "weather in Seoul", routerSchema),
              R"({"intent":"web.search","confidence":0.9})");

    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].method, "POST");
    EXPECT_EQ(requests[0].path, "/v1/chat/completions");
    EXPECT_EQ(requests[0].contentType, "application/json");

    // The builder's own tests pin the text; here the backend must hand it its settings.
    EXPECT_EQ(requests[0].body,
              LlamaRequestBuilder::body("You route queries.", "weather in Seoul", routerSchema,
                                        "qwen2.5-1.5b-instruct", 0.0, 256, "NuvrelResponse",
                                        std::nullopt));
    EXPECT_TRUE(sleep.pauses->empty());
}

TEST(LlamaServerBackend, TheAssistantPrefixTravelsAndTheReplyIsNotJoinedToIt) {
    ScriptedLlamaServer server({{200, test::chatReply("\"}")}});
    auto backend = backendFor(server, 2, RecordingSleep{}.fn());

    EXPECT_EQ(backend.complete("s", "u", routerSchema, std::optional<std::string_view>("{\"a\":")),
              "\"}");
    EXPECT_EQ(backend.complete("s", "u", routerSchema), "\"}");
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 2u);
    const std::string model(LlamaServerBackend::modelName);
    EXPECT_EQ(requests[0].body, LlamaRequestBuilder::body("s", "u", routerSchema, model, 0.0, 256,
                                                          "NuvrelResponse", "{\"a\":"));
    EXPECT_EQ(requests[1].body, LlamaRequestBuilder::body("s", "u", routerSchema, model, 0.0, 256,
                                                          "NuvrelResponse", std::nullopt));
}

TEST(LlamaServerBackend, ARequestThatCannotBeBuiltNeverReachesTheServer) {
    ScriptedLlamaServer server({{200, test::chatReply("{}")}});
    auto backend = backendFor(server, 2, RecordingSleep{}.fn());

    const auto notJson = test::errorOf<LLMError>([&] { backend.complete("s", "u", "{\"type\":"); });
    ASSERT_TRUE(notJson);
    EXPECT_EQ(notJson->kind(), LLMError::Kind::invalidRequest);
    EXPECT_TRUE(notJson->text().starts_with("jsonSchema is not valid JSON: ")) << notJson->text();

    EXPECT_EQ(test::errorOf<LLMError>([&] { backend.complete("s", "bad \xFF", routerSchema); }),
              LLMError::invalidRequest("failed to encode string literal"));
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST(LlamaServerBackend, A503IsRetriedWithAFlatPauseUntilTheRetriesRunOut) {
    const auto ok = ScriptedReply{200, test::chatReply("{\"ready\":true}")};
    {
        ScriptedLlamaServer server({test::loadingReply(), test::loadingReply(), ok});
        RecordingSleep sleep;
        EXPECT_EQ(backendFor(server, 2, sleep.fn()).complete("s", "u", routerSchema),
                  "{\"ready\":true}");
        EXPECT_EQ(server.requestCount(), 3u);
        EXPECT_EQ(*sleep.pauses, (std::vector<std::chrono::nanoseconds>{300ms, 300ms}));
    }
    {
        ScriptedLlamaServer server({test::loadingReply()});
        RecordingSleep sleep;
        EXPECT_EQ(test::errorOf<LLMError>(
                      [&] { backendFor(server, 2, sleep.fn()).complete("s", "u", routerSchema); }),
                  LLMError::http(503));
        EXPECT_EQ(server.requestCount(), 3u);
        EXPECT_EQ(sleep.pauses->size(), 2u);
    }
    {
        ScriptedLlamaServer server({test::loadingReply(), ok});
        RecordingSleep sleep;
        EXPECT_EQ(test::errorOf<LLMError>(
                      [&] { backendFor(server, 0, sleep.fn()).complete("s", "u", routerSchema); }),
                  LLMError::http(503));
        EXPECT_EQ(server.requestCount(), 1u);
        EXPECT_TRUE(sleep.pauses->empty());
    }
}

TEST(LlamaServerBackend, EveryOtherStatusEndsTheCallWithoutARetry) {
    const std::string marker = R"({"error":{"type":"exceed_context_size_error"}})";
    const struct {
        ScriptedReply reply;
        std::optional<LLMError> expected;  // nothing: the content comes back
    } cases[] = {
        {test::contextTooLongReply(), LLMError::inputTooLong()},
        {{400, R"({"error":{"code":400,"type":"invalid_request_error"}})"}, LLMError::http(400)},
        // Only a readable body counts.
        {{400, "\xFF " + marker}, LLMError::http(400)},
        {{413, marker}, LLMError::http(413)},
        {{500, marker}, LLMError::http(500)},
        {{404, R"({"error":{"code":404}})"}, LLMError::http(404)},
        {{201, test::chatReply("created")}, std::nullopt},
        {{204, ""}, LLMError::invalidResponse("")},  // kind only, see below
        {{200, R"({"choices":[]})"}, LLMError::emptyResponse()},
        {{200, test::chatReply("")}, LLMError::emptyResponse()},
        {{200, R"({"choices":[{"message":{"role":"assistant","content":null}}]})"},
         LLMError::invalidResponse("")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.reply.status) + " " + c.reply.body);
        ScriptedLlamaServer server({c.reply});
        RecordingSleep sleep;
        auto backend = backendFor(server, 2, sleep.fn());
        std::optional<std::string> content;
        const auto error =
            test::errorOf<LLMError>([&] { content = backend.complete("s", "u", routerSchema); });
        if (!c.expected) {
            EXPECT_EQ(content, "created");
        } else if (c.expected->kind() == LLMError::Kind::invalidResponse) {
            ASSERT_TRUE(error);
            EXPECT_EQ(error->kind(), LLMError::Kind::invalidResponse);
            EXPECT_TRUE(error->text().starts_with("failed to decode chat completion response: "))
                << error->text();
        } else {
            EXPECT_EQ(error, c.expected);
        }
        EXPECT_EQ(server.requestCount(), 1u);
        EXPECT_TRUE(sleep.pauses->empty());
    }
}

TEST(LlamaServerBackend, TransportFailuresPassThroughUnchangedAndUnretried) {
    {
        ScriptedLlamaServer server({{200, test::chatReply("late"), 3s}});
        RecordingSleep sleep;
        const auto start = Clock::now();
        const auto error = test::errorOf<base::HttpError>(
            [&] { backendFor(server, 2, sleep.fn(), 0.2).complete("s", "u", routerSchema); });
        ASSERT_TRUE(error);
        EXPECT_EQ(error->kind(), base::HttpError::Kind::timedOut);
        EXPECT_LT(Clock::now() - start, 2s);
        EXPECT_EQ(server.requestCount(), 1u);
        EXPECT_TRUE(sleep.pauses->empty());
    }
    std::string closedAddress;
    {
        ScriptedLlamaServer gone({{200, "{}"}});
        closedAddress = gone.baseURL();
    }
    RecordingSleep sleep;
    auto backend = backendAt(closedAddress, 2, sleep.fn(), 5.0);
    const auto refused =
        test::errorOf<base::HttpError>([&] { backend.complete("s", "u", routerSchema); });
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->kind(), base::HttpError::Kind::cannotConnect);
    EXPECT_TRUE(sleep.pauses->empty());
}

TEST(LlamaServerBackend, CancellingTheTaskEndsTheCallWithCancelled) {
    // During the pause after a 503, with the live sleep.
    {
        ScriptedLlamaServer server({test::loadingReply()});
        auto backend = backendAt(server.baseURL(), 5, base::liveSleep, 30.0, 20'000'000'000);
        const auto start = Clock::now();
        base::Task<std::string> call([&] { return backend.complete("s", "u", routerSchema); });
        ASSERT_TRUE(server.waitForRequests(1, 5s));
        call.cancel();
        EXPECT_THROW(call.value(), base::Cancelled);
        EXPECT_LT(Clock::now() - start, 5s);
        EXPECT_EQ(server.requestCount(), 1u);
    }
    // While the server is still working on the reply.
    {
        ScriptedLlamaServer server({{200, test::chatReply("late"), 20s}});
        auto backend = backendFor(server, 2, RecordingSleep{}.fn(), 30.0);
        const auto start = Clock::now();
        base::Task<std::string> call([&] { return backend.complete("s", "u", routerSchema); });
        ASSERT_TRUE(server.waitForRequests(1, 5s));
        call.cancel();
        EXPECT_THROW(call.value(), base::Cancelled);
        EXPECT_LT(Clock::now() - start, 5s);
    }
    // A 503 seen by a task that was cancelled meanwhile is not retried or reported as http.
    {
        ScriptedLlamaServer server({test::loadingReply(), {200, test::chatReply("ok")}});
        auto state = base::CancellationState::make();
        base::CancellationScope scope(state);
        auto backend = backendFor(server, 2, [&](std::chrono::nanoseconds) { state->cancel(); });
        EXPECT_THROW(backend.complete("s", "u", routerSchema), base::Cancelled);
        EXPECT_EQ(server.requestCount(), 1u);
    }
}

}  // namespace
}  // namespace nuvrel::llm
