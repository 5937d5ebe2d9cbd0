#include "llm/llama_request_builder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "llm/error_capture.h"
#include "llm/llm_error.h"

namespace nuvrel::llm {
namespace {

using LlamaRequestBuilder::body;

constexpr std::string_view schema =
    R"({"type":"object","properties":{"summary":{"type":"string"}},"required":["summary"]})";

std::string bodyWith(double temperature) {
    return body("s", "u", schema, "m", temperature, 8, "N", std::nullopt);
}

TEST(LlamaRequestBuilder, WritesTheFieldsInTheirFixedOrderWithoutWhiteSpace) {
    EXPECT_EQ(body("Be brief.", "weather in Seoul", schema, "qwen2.5-1.5b-instruct", 0.1, 768,
                   "NuvrelResponse", std::nullopt),
              R"({"model":"qwen2.5-1.5b-instruct","temperature":0.1,"max_tokens":768,)"
              R"("response_format":{"type":"json_schema","json_schema":{"name":"NuvrelResponse",)"
              R"("schema":{"type":"object","properties":{"summary":{"type":"string"}},)"
              R"("required":["summary"]}}},"messages":[{"role":"system","content":"Be brief."},)"
              R"({"role":"user","content":"weather in Seoul"}]})");

    EXPECT_EQ(body("a", "b", "{}", "m", 0.0, 256, "N", "{\"intent\":\""),
              R"({"model":"m","temperature":0.0,"max_tokens":256,"response_format":)"
              R"({"type":"json_schema","json_schema":{"name":"N","schema":{}}},"messages":[)"
              R"({"role":"system","content":"a"},{"role":"user","content":"b"},)"
              R"({"role":"assistant","content":"{\"intent\":\""}]})");
}

TEST(LlamaRequestBuilder, TextsOfEveryKindReadBackAsTheyWereGiven) {
    const std::string odd =
        "He said \"stop\" \\ here.\nLine two\r\n\ttab \x01\x1f\x7f end "
        "한국어 日本語 😀 \xE2\x80\xA8 </script> {\"not\":\"json\"";
    const auto messages =
        nlohmann::json::parse(body(odd, odd + " user", schema, "m", 0.0, 8, "N", odd + " pre"))
            .at("messages");
    EXPECT_EQ(messages, (nlohmann::json{{{"role", "system"}, {"content", odd}},
                                        {{"role", "user"}, {"content", odd + " user"}},
                                        {{"role", "assistant"}, {"content", odd + " pre"}}}));
    // An empty prefix is still a prefix.
    EXPECT_EQ(nlohmann::json::parse(body("s", "u", schema, "m", 0.0, 8, "N", "")).at("messages")[2],
              (nlohmann::json{{"role", "assistant"}, {"content", ""}}));
}

TEST(LlamaRequestBuilder, TemperatureIsTheShortestRoundTripDecimalAndAlwaysFloating) {
    const struct {
        double value;
        const char* text;
    } cases[] = {
        {0.0, "0.0"},    {0.1, "0.1"},     {1.0, "1.0"},
        {0.7, "0.7"},    {100.0, "100.0"}, {-0.0, "-0.0"},
        {1e-7, "1e-07"}, {1e21, "1e+21"},  {0.1 + 0.2, "0.30000000000000004"},
    };
    for (const auto& c : cases) {
        const std::string text = bodyWith(c.value);
        const std::string field = std::string("\"temperature\":") + c.text + ",\"max_tokens\"";
        EXPECT_NE(text.find(field), std::string::npos) << c.text << " in " << text;
        const double read = nlohmann::json::parse(text)["temperature"].get<double>();
        EXPECT_EQ(read, c.value) << c.text;
        EXPECT_TRUE(nlohmann::json::parse(text)["temperature"].is_number_float()) << c.text;
    }
    // Not numbers in JSON: the finished body fails its own check.
    for (double bad : {std::nan(""), std::numeric_limits<double>::infinity(),
                       -std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(test::errorOf<LLMError>([&] { bodyWith(bad); }),
                  LLMError::invalidRequest("failed to serialize request body"));
    }
}

TEST(LlamaRequestBuilder, TheSchemaTravelsByteForByte) {
    // Odd spacing, an escaped character that a re-serialisation would spell "é", and a key
    // order that a map would sort.
    const std::string oddSchema =
        "{ \"type\" :\t\"object\" ,\n  \"description\": \"caf\\u00e9 \xE2\x80\x93 ok\",\r\n"
        "  \"b\" : 1.50, \"a\" : [ ]\n}";
    const std::string text = body("s", "u", oddSchema, "m", 0.0, 8, "N", std::nullopt);
    EXPECT_NE(text.find(",\"schema\":" + oddSchema + "}},\"messages\":"), std::string::npos);
    EXPECT_EQ(nlohmann::json::parse(text)["response_format"]["json_schema"]["schema"],
              nlohmann::json::parse(oddSchema));

    // Any JSON value is a schema as far as the check goes.
    EXPECT_NE(body("s", "u", " true ", "m", 0.0, 8, "N", std::nullopt).find(",\"schema\": true }"),
              std::string::npos);
}

TEST(LlamaRequestBuilder, RefusesWhatCannotBeSentWithItsOwnText) {
    for (const std::string bad : {"{\"a\":\"\xFF\"}", "{\"a\":\"\xC0\xAF\"}",
                                  "{\"a\":\"\xED\xA0\x80\"}", "{\"a\":\"\xE2\x82\"}"}) {
        EXPECT_EQ(
            test::errorOf<LLMError>([&] { body("s", "u", bad, "m", 0.0, 8, "N", std::nullopt); }),
            LLMError::invalidRequest("jsonSchema is not valid UTF-8"));
    }

    const std::string prefix = "jsonSchema is not valid JSON: ";
    for (const std::string bad : {"", "   ", "{\"type\":}", "{\"type\":\"object\"", "{} {}",
                                  "{'type':'object'}", "{\"a\":1} // note", "{\"a\":NaN}"}) {
        const auto error =
            test::errorOf<LLMError>([&] { body("s", "u", bad, "m", 0.0, 8, "N", std::nullopt); });
        ASSERT_TRUE(error) << bad;
        EXPECT_EQ(error->kind(), LLMError::Kind::invalidRequest) << bad;
        ASSERT_TRUE(error->text().starts_with(prefix)) << error->text();
        EXPECT_NE(error->text().find("parse error"), std::string::npos) << error->text();
    }

    const LLMError encoding = LLMError::invalidRequest("failed to encode string literal");
    const std::string ill = "caf\xC3";
    EXPECT_EQ(
        test::errorOf<LLMError>([&] { body(ill, "u", schema, "m", 0.0, 8, "N", std::nullopt); }),
        encoding);
    EXPECT_EQ(
        test::errorOf<LLMError>([&] { body("s", ill, schema, "m", 0.0, 8, "N", std::nullopt); }),
        encoding);
    EXPECT_EQ(
        test::errorOf<LLMError>([&] { body("s", "u", schema, ill, 0.0, 8, "N", std::nullopt); }),
        encoding);
    EXPECT_EQ(
        test::errorOf<LLMError>([&] { body("s", "u", schema, "m", 0.0, 8, ill, std::nullopt); }),
        encoding);
    EXPECT_EQ(test::errorOf<LLMError>([&] { body("s", "u", schema, "m", 0.0, 8, "N", ill); }),
              encoding);

    // The schema is looked at before anything else.
    const auto first =
        test::errorOf<LLMError>([&] { body(ill, "u", "{", "m", 0.0, 8, "N", std::nullopt); });
    ASSERT_TRUE(first);
    EXPECT_TRUE(first->text().starts_with(prefix)) << first->text();
}

}  // namespace
}  // namespace nuvrel::llm
