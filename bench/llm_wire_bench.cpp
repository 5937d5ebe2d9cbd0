#include <benchmark/benchmark.h>

#include <initializer_list>
#include <optional>
#include <string>

#include "base/text.h"
#include "llm/llama_request_builder.h"
#include "llm/llama_response_parser.h"
#include "llm/llama_server_backend.h"

namespace {

using namespace nuvrel;

// The router's schema in the layout the router sends it: indented, one enum value a line,
// about 2 KB.
std::string enumLines(std::initializer_list<const char*> values, const std::string& indent) {
    std::string text = "[\n";
    for (const char* value : values) text += indent + "  \"" + value + "\",\n";
    text.erase(text.size() - 2, 1);  // the last comma
    return text + indent + "]";
}

const std::string& routerSchema() {
    static const std::string schema = [] {
        std::string slots;
        for (const char* name : {"keyword", "file_type", "location", "date_range", "recipient",
                                 "body", "query", "time", "condition", "amount", "from_currency",
                                 "to_currency", "duration", "title", "date", "content"}) {
            slots += std::string("        \"") + name + "\": { \"type\": \"string\" },\n";
        }
        return "{\n  \"type\": \"object\",\n  \"properties\": {\n    \"intent\": {\n"
               "      \"type\": \"string\",\n      \"enum\": " +
               enumLines(
                   {"finder.search", "calendar.query", "calendar.add", "message.send", "music.play",
                    "timer.set", "reminder.set", "note.create", "web.search", "weather.query",
                    "currency.convert", "window.manage", "system.command", "system.unknown"},
                   "      ") +
               "\n    },\n    \"confidence\": { \"type\": \"number\", \"minimum\": 0, "
               "\"maximum\": 1 },\n    \"slots\": {\n      \"type\": \"object\",\n"
               "      \"properties\": {\n" +
               slots + "        \"channel\": { \"type\": \"string\", \"enum\": " +
               enumLines({"imessage", "sms", "mail"}, "        ") +
               " },\n        \"action\": {\n          \"type\": \"string\",\n"
               "          \"enum\": " +
               enumLines({"play", "pause", "next", "prev", "leftHalf", "rightHalf", "topHalf",
                          "bottomHalf", "topLeft", "topRight", "bottomLeft", "bottomRight",
                          "maximize", "center", "nextDisplay"},
                         "          ") +
               "\n        },\n        \"want_answer\": { \"type\": \"boolean\" }\n"
               "      },\n      \"additionalProperties\": false\n    }\n  },\n"
               "  \"required\": [\"intent\", \"confidence\", \"slots\"],\n"
               "  \"additionalProperties\": false\n}";
    }();
    return schema;
}

const std::string system =
    "You are the intent router of a natural-language launcher. Read the user's single query "
    "and output ONLY one single-line JSON object: {\"intent\":\"<id>\",\"confidence\":<0..1>,"
    "\"slots\":{...}}. Intent ids: finder.search, calendar.query, calendar.add, message.send, "
    "music.play, timer.set, reminder.set, note.create, web.search, weather.query, "
    "currency.convert, window.manage, system.command, system.unknown. Never add keys, text, or "
    "explanations outside the JSON.";

// 300 characters in three scripts, with quotes and a line end to escape.
std::string query() {
    const std::string piece =
        "Find the \"Quarterly Report\" PDF I edited last week\n내일 오후 3시 회의 일정 "
        "明日の東京の天気は？ ";
    std::string text;
    while (base::text::count(text) < 300) text += piece;
    return base::text::prefix(text, 300);
}

const std::string reply =
    R"({"choices":[{"finish_reason":"stop","index":0,"message":{"role":"assistant","content":)"
    R"("{\"intent\":\"finder.search\",\"confidence\":0.93,\"slots\":{\"keyword\":\"Quarterly )"
    R"(Report\",\"file_type\":\"pdf\",\"date_range\":\"last_week\"}}"}}],"created":1735689600,)"
    R"("model":"qwen2.5-1.5b-instruct","system_fingerprint":"b5000-abcdef01","object":)"
    R"("chat.completion","usage":{"completion_tokens":41,"prompt_tokens":612,"total_tokens":653},)"
    R"("id":"chatcmpl-Q1w2E3r4T5y6","timings":{"prompt_n":612,"prompt_ms":401.2,)"
    R"("prompt_per_token_ms":0.655,"prompt_per_second":1525.4,"predicted_n":41,)"
    R"("predicted_ms":690.1,"predicted_per_token_ms":16.8,"predicted_per_second":59.4}})";

std::string buildBody(const std::string& user) {
    return llm::LlamaRequestBuilder::body(system, user, routerSchema(),
                                          llm::LlamaServerBackend::modelName, 0.0, 256,
                                          llm::LlamaServerBackend::schemaName, std::nullopt);
}

void BM_RouterRequestAndReply(benchmark::State& state) {
    const std::string user = query();
    for (auto _ : state) {
        benchmark::DoNotOptimize(buildBody(user));
        benchmark::DoNotOptimize(llm::LlamaResponseParser::extractContent(reply));
    }
    state.counters["schemaBytes"] = static_cast<double>(routerSchema().size());
    state.counters["bodyBytes"] = static_cast<double>(buildBody(user).size());
}
BENCHMARK(BM_RouterRequestAndReply);

void BM_RouterRequestBody(benchmark::State& state) {
    const std::string user = query();
    for (auto _ : state) benchmark::DoNotOptimize(buildBody(user));
}
BENCHMARK(BM_RouterRequestBody);

void BM_RouterReplyContent(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(llm::LlamaResponseParser::extractContent(reply));
}
BENCHMARK(BM_RouterReplyContent);

}  // namespace
