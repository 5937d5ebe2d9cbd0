#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/cancellation.h"
#include "llm/llm_error.h"
#include "pipeline/chain_decomposer.h"
#include "pipeline/chain_gate.h"
#include "support/scripted_backend.h"

namespace nuvrel::pipeline {
namespace {

using core::AppLanguage;
using Steps = std::vector<std::string>;
using testing::failWith;
using testing::reply;
using testing::ScriptedBackend;

TEST(ChainGate, ConnectorPhrasesInAnyCaseOpenTheGate) {
    for (const char* query :
         {"remind me to call Sam AND THEN play jazz", "Call mom, After That email Bob",
          "회의 잡아줘 그리고 음악 틀어", "일정 확인하고 그다음에 메일 써줘",
          "会議を確認して、それから音楽をかけて", "打开音乐然后设一个闹钟", "查天气，还有汇率"}) {
        EXPECT_TRUE(ChainGate::mightBeChain(query)) << query;
    }
    for (const char* query :
         {"what's the weather in Seoul", "오늘 날씨 알려줘", "", "andthen", "明日の天気"}) {
        EXPECT_FALSE(ChainGate::mightBeChain(query)) << query;
    }
}

TEST(ChainGate, AVerbEndingCountsOnlyWithSomethingBehindIt) {
    for (const char* query : {"불 꺼주고 음악 틀어줘", "알람 맞추고 불 꺼줘",
                              "메일 보내고 음악 틀어줘", "청소하고 x", "가방 놓고 와"}) {
        EXPECT_TRUE(ChainGate::mightBeChain(query)) << query;
    }
    for (const char* query : {"불 끄고", "불 꺼주고", "불 꺼주고 \u3000 ",
                              // "끄고" is not one of the listed endings.
                              "불 끄고 음악 틀어줘"}) {
        EXPECT_FALSE(ChainGate::mightBeChain(query)) << query;
    }
}

struct Decomposed {
    std::optional<Steps> steps;
    std::shared_ptr<ScriptedBackend> backend;
};

Decomposed decomposeWith(std::string_view query, std::vector<ScriptedBackend::Step> script,
                         AppLanguage language = AppLanguage::en) {
    auto backend = std::make_shared<ScriptedBackend>(std::move(script));
    auto steps = ChainDecomposer::decompose(query, language, backend);
    return {std::move(steps), backend};
}

std::string stepsReply(const Steps& steps) {
    return "Here you go: " + nlohmann::json{{"steps", steps}}.dump();
}

constexpr std::string_view samQuery = "Remind me to call Sam and then play jazz";

TEST(ChainDecomposer, AsksTheSummaryModelInTheInterfaceLanguage) {
    std::set<std::string_view> prompts;
    for (const AppLanguage language : core::allAppLanguages) {
        prompts.insert(ChainDecomposer::systemPrompt(language));
        auto [steps, backend] = decomposeWith(
            samQuery, {reply(stepsReply({"Remind me to call Sam", "play jazz"}))}, language);
        EXPECT_EQ(steps, (Steps{"Remind me to call Sam", "play jazz"}));
        ASSERT_EQ(backend->calls.size(), 1u);
        EXPECT_EQ(backend->calls[0].system, ChainDecomposer::systemPrompt(language));
        EXPECT_EQ(backend->calls[0].user, samQuery);
        EXPECT_EQ(backend->calls[0].schema, ChainDecomposer::jsonSchema);
    }
    EXPECT_EQ(prompts.size(), core::allAppLanguages.size());  // one prompt per language
    const auto schema = nlohmann::json::parse(ChainDecomposer::jsonSchema);
    EXPECT_EQ(schema["required"], nlohmann::json({"steps"}));
}

TEST(ChainDecomposer, OrdinaryQueriesAndMissingModelsNeverCallOne) {
    auto [steps, backend] = decomposeWith("play some jazz", {});
    EXPECT_EQ(steps, std::nullopt);
    EXPECT_TRUE(backend->calls.empty());
    EXPECT_EQ(ChainDecomposer::decompose(samQuery, AppLanguage::en, nullptr), std::nullopt);
}

TEST(ChainDecomposer, FailuresOfTheModelGiveNothingButCancellationPropagates) {
    const std::vector<ScriptedBackend::Step> failures = {
        failWith(llm::LLMError::inputTooLong()),
        failWith(llm::LLMError::http(500)),
        failWith(std::runtime_error("down")),
        reply("no json"),
        reply(R"({"steps": "a and b"})"),
        reply(R"({"steps": ["Remind me to call Sam", "play jazz", 3]})"),
        reply(R"({"parts": ["a", "b"]})"),
        reply(R"({"steps": ["Remind me to call Sam", "play jazz"])"),
        reply("{\"steps\": [\"play \xff\", \"Remind me\"]}")};
    for (const auto& failure : failures) {
        EXPECT_EQ(decomposeWith(samQuery, {failure}).steps, std::nullopt);
    }
    EXPECT_THROW(decomposeWith(samQuery, {failWith(base::Cancelled{})}), base::Cancelled);
}

TEST(ChainDecomposer, KeepsTwoToFiveStepsAfterTrimming) {
    const std::string query = "a1 그리고 b2 그리고 c3 그리고 d4 그리고 e5 그리고 f6";
    const auto split = [&](const Steps& steps) {
        return decomposeWith(query, {reply(stepsReply(steps))}).steps;
    };
    EXPECT_EQ(split({"a1"}), std::nullopt);
    EXPECT_EQ(split({"a1", " \n ", ""}), std::nullopt);
    EXPECT_EQ(split({" a1\n", "\u3000", "b2 "}), (Steps{"a1", "b2"}));
    EXPECT_EQ(split({"a1", "b2", "c3", "d4", "e5"}), (Steps{"a1", "b2", "c3", "d4", "e5"}));
    EXPECT_EQ(split({"a1", "b2", "c3", "d4", "e5", "f6"}), std::nullopt);
}

TEST(ChainDecomposer, RepairsLinkingVerbsBeforeGrounding) {
    auto [steps, backend] = decomposeWith(
        "날씨 알려주고 알람 맞춰주고 음악 틀어줘",
        {reply(stepsReply({"날씨 알려주고", "알람 맞춰주고", "음악 틀어주고 "}))}, AppLanguage::ko);
    EXPECT_EQ(steps, (Steps{"날씨 알려줘", "알람 맞춰줘", "음악 틀어줘"}));
}

TEST(ChainDecomposer, StepsMustBeTheUsersOwnWords) {
    const auto split = [](std::string_view query, const Steps& steps) {
        return decomposeWith(query, {reply(stepsReply(steps))}).steps;
    };
    // Spaces and case don't matter.
    EXPECT_EQ(split(samQuery, {"remind  me to CALL sam", "playjazz"}),
              (Steps{"remind  me to CALL sam", "playjazz"}));
    EXPECT_EQ(split(samQuery, {"Remind me to phone Sam", "play jazz"}), std::nullopt);
    EXPECT_EQ(split(samQuery, {"Remind me to call Sam", "play jazz music"}), std::nullopt);
    // Only a Korean last syllable may change, and only on a step of three characters or more.
    EXPECT_EQ(split("날씨 알려주고 음악 틀어줘", {"날씨 알려줘", "음악 틀어줘"}),
              (Steps{"날씨 알려줘", "음악 틀어줘"}));
    EXPECT_EQ(split("날씨 알려주고 음악 틀어줘", {"날씨 알리줘", "음악 틀어줘"}), std::nullopt);
    EXPECT_EQ(split("불켜 그리고 음악 틀어", {"불끼", "음악 틀어"}), std::nullopt);
    EXPECT_EQ(split("불켜 그리고 음악 틀어", {"불켜줘", "음악 틀어"}),
              (Steps{"불켜줘", "음악 틀어"}));
    EXPECT_EQ(split(samQuery, {"Remind me to call Sam", "play jazy"}), std::nullopt);
    EXPECT_EQ(split("天気を見て、それから音楽をかけて", {"天気を見て", "音楽をかけた"}),
              std::nullopt);
    // A decomposed spelling of the query's syllables is the same text.
    EXPECT_EQ(split("날씨 그리고 음악", {"\u1102\u1161\u11AF\u110A\u1175", "음악"}),
              (Steps{"날씨", "음악"}));
}

}  // namespace
}  // namespace nuvrel::pipeline
