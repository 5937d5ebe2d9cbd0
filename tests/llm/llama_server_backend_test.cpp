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

LlamaServerBackend backendFor(const ScriptedLlamaServer& server, int retries, base::SleepFn sleep,
                              double timeoutSeconds = 10.0) {
    return {*base::Url::parse(server.baseURL()),
            std::make_shared<base::HttpSession>(),
            std::string(LlamaServerBackend::modelName),
            0.0,
            256,
            timeoutSeconds,
            retries,
            300'000'000,
            std::move(sleep)};
}

std::vector<std::string> keysOf(const nlohmann::ordered_json& object) {
    std::vector<std::string> keys;
    for (const auto& item : object.items()) keys.push_back(item.key());
    return keys;
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

    const auto body = nlohmann::ordered_json::parse(requests[0].body);
    EXPECT_EQ(keysOf(body), (std::vector<std::string>{"model", "temperature", "max_tokens",
                                                      "response_format", "messages"}));
    EXPECT_EQ(body["model"], "qwen2.5-1.5b-instruct");
    EXPECT_TRUE(body["temperature"].is_number_float());
    EXPECT_EQ(body["temperature"].get<double>(), 0.0);
    EXPECT_EQ(body["max_tokens"], 256);
    const auto& format = body["response_format"];
    EXPECT_EQ(keysOf(format), (std::vector<std::string>{"type", "json_schema"}));
    EXPECT_EQ(format["type"], "json_schema");
    EXPECT_EQ(keysOf(format["json_schema"]), (std::vector<std::string>{"name", "schema"}));
    EXPECT_EQ(format["json_schema"]["name"], "NuvrelResponse");
    EXPECT_EQ(format["json_schema"]["schema"], nlohmann::ordered_json::parse(routerSchema));
    const auto& messages = body["messages"];
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(keysOf(messages[0]), (std::vector<std::string>{"role", "content"}));
    EXPECT_EQ(messages[0]["role"], "system");
    EXPECT_EQ(messages[0]["content"], "You route queries.");
    EXPECT_EQ(messages[1]["role"], "user");
    EXPECT_EQ(messages[1]["content"], "weather in Seoul");
    // Written back compactly in the same order, it is the same text: no white space was
    // added and no other field travelled.
    EXPECT_EQ(body.dump(), requests[0].body);
    EXPECT_TRUE(sleep.pauses->empty());
}

TEST(LlamaServerBackend, TextsOfEveryKindArriveAsTheyWereGiven) {
    const std::string odd =
        "He said \"stop\" \\ here.\nLine two\r\n\ttab \x01\x1f\x7f end "
        "한국어 日本語 中文 😀 \xE2\x80\xA8 </script> {\"not\":\"json\"";
    const std::string oddSchema =
        "{ \"type\" :\t\"object\" ,\n  \"description\": \"caf\\u00e9\","
        "\r\n  \"properties\" : { } }";
    ScriptedLlamaServer server({{200, test::chatReply("\"}")}});
    auto backend = backendFor(server, 2, RecordingSleep{}.fn());

    // The reply continues behind the prefix; the backend does not join the two.
    EXPECT_EQ(backend.complete(odd, odd + " user", oddSchema,
                               std::optional<std::string_view>(odd + " prefix")),
              "\"}");
    EXPECT_EQ(backend.complete("s", "u", oddSchema, std::optional<std::string_view>("")), "\"}");
    EXPECT_EQ(backend.complete("s", "u", oddSchema), "\"}");

    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 3u);
    for (const auto& request : requests) {
        EXPECT_NE(request.body.find(",\"schema\":" + oddSchema + "}},"), std::string::npos)
            << request.body;
    }
    const auto first = nlohmann::json::parse(requests[0].body)["messages"];
    ASSERT_EQ(first.size(), 3u);
    EXPECT_EQ(first[0]["content"], odd);
    EXPECT_EQ(first[1]["content"], odd + " user");
    EXPECT_EQ(first[2]["role"], "assistant");
    EXPECT_EQ(first[2]["content"], odd + " prefix");

    // An empty prefix is still a prefix; no prefix is no third message.
    const auto second = nlohmann::json::parse(requests[1].body)["messages"];
    ASSERT_EQ(second.size(), 3u);
    EXPECT_EQ(second[2], (nlohmann::json{{"role", "assistant"}, {"content", ""}}));
    EXPECT_EQ(nlohmann::json::parse(requests[2].body)["messages"].size(), 2u);
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
    LlamaServerBackend backend{*base::Url::parse(closedAddress),
                               std::make_shared<base::HttpSession>(),
                               "m",
                               0.0,
                               8,
                               5.0,
                               2,
                               1'000,
                               sleep.fn()};
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
        LlamaServerBackend backend{*base::Url::parse(server.baseURL()),
                                   std::make_shared<base::HttpSession>(),
                                   "m",
                                   0.0,
                                   8,
                                   30.0,
                                   5,
                                   20'000'000'000,
                                   base::liveSleep};
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

TEST(LlamaServerBackend, TheThreeConfigurationsInUse) {
    auto session = std::make_shared<base::HttpSession>();
    const struct {
        LlamaServerBackend backend;
        const char* url;
        double temperature;
        int maxTokens;
        double timeout;
        int retries;
        std::uint64_t backoff;
    } cases[] = {
        {LlamaServerBackend::routing(session), "http://127.0.0.1:8765/", 0.0, 256, 30, 2,
         300'000'000},
        {LlamaServerBackend::summarySharingRouter(session), "http://127.0.0.1:8765/", 0.1, 768, 30,
         2, 300'000'000},
        {LlamaServerBackend::summaryDedicated(session), "http://127.0.0.1:8766/", 0.1, 768, 60, 5,
         500'000'000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.url);
        EXPECT_EQ(c.backend.baseURL.text(), c.url);
        EXPECT_EQ(c.backend.session, session);
        EXPECT_EQ(c.backend.model, "qwen2.5-1.5b-instruct");
        EXPECT_EQ(c.backend.temperature, c.temperature);
        EXPECT_EQ(c.backend.maxTokens, c.maxTokens);
        EXPECT_EQ(c.backend.requestTimeoutInterval, c.timeout);
        EXPECT_EQ(c.backend.maxColdStart503Retries, c.retries);
        EXPECT_EQ(c.backend.coldStart503BackoffNanoseconds, c.backoff);
        EXPECT_EQ(c.backend.modelFileName(), std::nullopt);
    }
}

}  // namespace
}  // namespace nuvrel::llm
