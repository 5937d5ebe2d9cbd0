#include "pipeline/router.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/cancellation.h"
#include "base/http.h"
#include "llm/llm_error.h"
#include "pipeline/router_prompt.h"
#include "support/scripted_backend.h"

namespace nuvrel::pipeline {
namespace {

using core::IntentID;
using core::RouteFailure;
using testing::failWith;
using testing::reply;
using testing::ScriptedBackend;

const std::string webSearchReply =
    R"(Sure! {"intent":"web.search","confidence":0.9,"slots":{"query":"a}b"}} Done)";

struct Routed {
    Router::Detailed result;
    std::shared_ptr<ScriptedBackend> backend;
};

Routed routeWith(std::vector<ScriptedBackend::Step> script, bool interim = false,
                 bool appLaunch = false) {
    auto backend = std::make_shared<ScriptedBackend>(std::move(script));
    Router router{backend, interim, appLaunch};
    return {router.routeDetailed("search the web for a}b"), backend};
}

TEST(RouterPrompt, TheAppLaunchLineAndTheGuidanceAreAddedWhereTheyBelong) {
    const std::string canonical(RouterPrompt::canonicalSystem);
    const std::string& withApp = RouterPrompt::canonicalSystemWithAppLaunch();
    EXPECT_EQ(withApp.size(), canonical.size() + std::string_view("app.launch, ").size());
    EXPECT_NE(withApp.find("window.manage, system.command, app.launch, system.unknown. Never"),
              std::string::npos);
    const std::string guidance(RouterPrompt::interimGuidance);
    EXPECT_EQ(RouterPrompt::system(false, false), canonical);
    EXPECT_EQ(RouterPrompt::system(false, true), withApp);
    EXPECT_EQ(RouterPrompt::system(true, false), canonical + guidance);
    EXPECT_EQ(RouterPrompt::system(true, true), withApp + guidance);
}

TEST(RouterPrompt, SchemaIsReadableJSONAndOnlyTheAppLaunchVariantOffersIt) {
    EXPECT_EQ(RouterPrompt::schema(false), RouterPrompt::jsonSchema);
    EXPECT_EQ(RouterPrompt::schema(true), RouterPrompt::jsonSchemaWithAppLaunch());

    const auto plain = nlohmann::ordered_json::parse(RouterPrompt::schema(false));
    auto withApp = nlohmann::ordered_json::parse(RouterPrompt::schema(true));
    auto& intents = withApp["properties"]["intent"]["enum"];
    ASSERT_EQ(plain["properties"]["intent"]["enum"].size(), 14u);
    ASSERT_EQ(intents.size(), 15u);
    EXPECT_EQ(intents[12], "system.command");
    EXPECT_EQ(intents[13], "app.launch");
    EXPECT_EQ(intents[14], "system.unknown");
    intents.erase(13);
    EXPECT_EQ(withApp, plain);  // nothing else differs
}

TEST(RouterPrompt, AppLaunchNeedsAKestruneMiniRouterPastEpochThree) {
    for (const char* name :
         {"kestrune-mini-router-ep4", "kestrune-mini-router-ep6.gguf",
          "kestrune-mini-router-ep10.gguf", "kestrune-mini-router-ep04-q4.gguf"}) {
        EXPECT_TRUE(RouterPrompt::supportsAppLaunch(name)) << name;
    }
    for (const char* name :
         {"kestrune-mini-router-ep3.gguf", "kestrune-mini-router-ep.gguf",
          "nuvrel-nano-router-v5-q4_k_m.gguf", "kestrune-mini-router-ep0", "",
          "Kestrune-mini-router-ep6.gguf", "old-kestrune-mini-router-ep6.gguf",
          "kestrune-mini-router-ep-7.gguf", "kestrune-mini-router-ep５.gguf",
          "kestrune-mini-router-ep4½.gguf", "kestrune-mini-router-ep99999999999999999999.gguf"}) {
        EXPECT_FALSE(RouterPrompt::supportsAppLaunch(name)) << name;
    }
}

TEST(RouterExtractJSONObject, FindsTheFirstBalancedObjectIgnoringBracesInStrings) {
    using R = Router;
    EXPECT_EQ(R::extractJSONObject(webSearchReply),
              R"({"intent":"web.search","confidence":0.9,"slots":{"query":"a}b"}})");
    EXPECT_EQ(R::extractJSONObject(R"(x {"a":"say \"}\" {now","b":{"c":{}}} {"d":1})"),
              R"({"a":"say \"}\" {now","b":{"c":{}}})");
    // An escaped backslash does not escape the quote behind it.
    EXPECT_EQ(R::extractJSONObject(R"({"path":"c:\\"} })"), R"({"path":"c:\\"})");
    EXPECT_EQ(R::extractJSONObject(R"(} stray {"a":1})"), R"({"a":1})");
    EXPECT_EQ(R::extractJSONObject("결과: {\"q\":\"한글 }\"} 끝"), "{\"q\":\"한글 }\"}");
    EXPECT_EQ(R::extractJSONObject("\xff{\"a\":\"\xc3\"}\xfe"), "{\"a\":\"\xc3\"}");

    for (const char* text :
         {"", "no object here", R"({"a":{"b":1})", R"({"a":"}")", R"({"a":"\"})"}) {
        EXPECT_EQ(R::extractJSONObject(text), std::nullopt) << text;
    }
    EXPECT_EQ(R::extractJSONObject(std::string(8 << 20, '{')), std::nullopt);
}

TEST(Router, ReturnsTheParsedIntentWithThePromptAndSchemaOfTheSwitches) {
    for (const bool interim : {false, true}) {
        for (const bool appLaunch : {false, true}) {
            auto [result, backend] = routeWith({reply(webSearchReply)}, interim, appLaunch);
            EXPECT_EQ(result.failure, std::nullopt);
            EXPECT_EQ(result.routed.intent, IntentID::webSearch);
            EXPECT_EQ(result.routed.confidence, 0.9);
            EXPECT_EQ(result.routed.slots.at("query"), core::SlotValue("a}b"));
            ASSERT_EQ(backend->calls.size(), 1u);
            EXPECT_EQ(backend->calls[0].system, RouterPrompt::system(interim, appLaunch));
            EXPECT_EQ(backend->calls[0].user, "search the web for a}b");
            EXPECT_EQ(backend->calls[0].schema, RouterPrompt::schema(appLaunch));

            // The switch only changes what the model is offered.
            const auto launch = routeWith(
                {reply(R"({"intent":"app.launch","confidence":0.8,"slots":{"query":"Safari"}})")},
                interim, appLaunch);
            EXPECT_EQ(launch.result.routed.intent, IntentID::appLaunch);
        }
    }
}

enum class Outcome { parsed, transport, invalid, tooLong };

ScriptedBackend::Step step(Outcome outcome) {
    switch (outcome) {
        case Outcome::parsed:
            return reply(webSearchReply);
        case Outcome::transport:
            return failWith(llm::LLMError::http(503));
        case Outcome::invalid:
            return reply("I think you want the web.");
        case Outcome::tooLong:
            return failWith(llm::LLMError::inputTooLong());
    }
    return {};
}

TEST(Router, RetriesOnceAndReportsTheFailureOfTheLastAttempt) {
    using O = Outcome;
    struct Row {
        std::vector<O> script;
        std::optional<RouteFailure> failure;
    };
    const std::vector<Row> rows = {
        {{O::parsed}, std::nullopt},
        {{O::transport, O::parsed}, std::nullopt},
        {{O::invalid, O::parsed}, std::nullopt},
        {{O::transport, O::transport}, RouteFailure::llmUnavailable},
        {{O::invalid, O::invalid}, RouteFailure::invalidOutput},
        {{O::transport, O::invalid}, RouteFailure::invalidOutput},
        {{O::invalid, O::transport}, RouteFailure::llmUnavailable},
        {{O::tooLong}, RouteFailure::inputTooLong},
        {{O::transport, O::tooLong}, RouteFailure::inputTooLong},
        {{O::invalid, O::tooLong}, RouteFailure::inputTooLong},
    };
    for (std::size_t i = 0; i < rows.size(); ++i) {
        std::vector<ScriptedBackend::Step> script;
        for (const O outcome : rows[i].script) script.push_back(step(outcome));
        auto [result, backend] = routeWith(std::move(script));
        SCOPED_TRACE(i);
        EXPECT_EQ(result.failure, rows[i].failure);
        EXPECT_EQ(backend->calls.size(), rows[i].script.size());
        if (result.failure) {
            EXPECT_EQ(result.routed, core::RoutedIntent{});
        }
        if (backend->calls.size() == 2) {
            EXPECT_EQ(backend->calls[1].system, backend->calls[0].system);
            EXPECT_EQ(backend->calls[1].user, backend->calls[0].user);
            EXPECT_EQ(backend->calls[1].schema, backend->calls[0].schema);
        }
    }
}

TEST(Router, AnyOtherErrorOfTheCallIsATransportFailure) {
    const std::vector<ScriptedBackend::Step> failures = {
        failWith(llm::LLMError::emptyResponse()),
        failWith(llm::LLMError::serverStartTimeout()),
        failWith(base::HttpError(base::HttpError::Kind::timedOut, "slow")),
        failWith(std::runtime_error("boom")),
        failWith(42),
        failWith(base::Cancelled{}),  // the task itself was not stopped
    };
    for (const auto& failure : failures) {
        auto [result, backend] = routeWith({failure, failure});
        EXPECT_EQ(result.failure, RouteFailure::llmUnavailable);
        EXPECT_EQ(backend->calls.size(), 2u);
    }
    EXPECT_EQ(Router{}.routeDetailed("anything").failure, RouteFailure::llmUnavailable);
}

TEST(Router, NothingAModelSaysCrashesOrHangs) {
    const std::string deep = R"({"intent":"web.search","confidence":0.5,"slots":{"query":)" +
                             std::string(200000, '[') + std::string(200000, ']') + "}}";
    const std::vector<std::string> invalid = {
        "",
        R"({"intent":"web.search","confidence":0.9,"slots":{"query":"x"})",
        "{}",
        R"({"intent":"app.open","confidence":0.9,"slots":{}})",
        R"({"intent":5,"confidence":0.9,"slots":{}})",
        R"({"intent":"web.search","confidence":"0.9","slots":{}})",
        R"({"intent":"web.search","confidence":1e400,"slots":{}})",
        R"({"intent":"web.search","confidence":0.9,"slots":{"query":["a"]}})",
        R"({"intent":"web.search","confidence":0.9,"slots":[]})",
        R"({"intent":"web.search","confidence":0.9,"slots":{},})",
        "{\"intent\":\"web.search\",\"confidence\":0.9,\"slots\":{\"query\":\"\xc3\x28\"}}",
        "{\"intent\":\"web.search\xff\",\"confidence\":0.9,\"slots\":{}}",
        deep,
        std::string(4 << 20, '{') + "}",
    };
    for (const std::string& text : invalid) {
        auto [result, backend] = routeWith({reply(text), reply(text)});
        EXPECT_EQ(result.failure, RouteFailure::invalidOutput) << text.substr(0, 80);
        EXPECT_EQ(backend->calls.size(), 2u);
    }

    // Megabytes of chatter around the object still route.
    const std::string chatter(3 << 20, 'x');
    auto [result, backend] = routeWith({reply(chatter + webSearchReply + chatter)});
    EXPECT_EQ(result.failure, std::nullopt);
    EXPECT_EQ(result.routed.intent, IntentID::webSearch);
}

ScriptedBackend::Step cancelThen(ScriptedBackend::Step then) {
    return [then] {
        base::currentCancellation()->cancel();
        return then();
    };
}

TEST(Router, CancellationBeforeOrBetweenAttemptsEndsTheRoute) {
    {
        base::CancellationScope scope(base::CancellationState::make());
        base::currentCancellation()->cancel();
        auto backend = std::make_shared<ScriptedBackend>(std::vector<ScriptedBackend::Step>{});
        EXPECT_EQ(Router{backend}.routeDetailed("q").failure, RouteFailure::cancelled);
        EXPECT_TRUE(backend->calls.empty());
    }
    using O = Outcome;
    struct Row {
        std::vector<ScriptedBackend::Step> script;
        std::optional<RouteFailure> failure;
    };
    std::vector<Row> rows;
    rows.push_back({{cancelThen(step(O::transport))}, RouteFailure::cancelled});
    rows.push_back({{cancelThen(step(O::invalid))}, RouteFailure::cancelled});
    rows.push_back({{cancelThen(failWith(base::Cancelled{}))}, RouteFailure::cancelled});
    rows.push_back({{step(O::invalid), cancelThen(step(O::transport))}, RouteFailure::cancelled});
    rows.push_back({{step(O::transport), cancelThen(step(O::invalid))}, RouteFailure::cancelled});
    rows.push_back({{cancelThen(step(O::tooLong))}, RouteFailure::inputTooLong});
    rows.push_back(
        {{step(O::transport), cancelThen(step(O::tooLong))}, RouteFailure::inputTooLong});
    rows.push_back({{cancelThen(step(O::parsed))}, std::nullopt});  // an answer in hand stands

    for (std::size_t i = 0; i < rows.size(); ++i) {
        base::CancellationScope scope(base::CancellationState::make());
        const std::size_t steps = rows[i].script.size();
        auto backend = std::make_shared<ScriptedBackend>(std::move(rows[i].script));
        const auto result = Router{backend}.routeDetailed("q");
        SCOPED_TRACE(i);
        EXPECT_EQ(result.failure, rows[i].failure);
        EXPECT_EQ(backend->calls.size(), steps);
        if (result.failure) {
            EXPECT_EQ(result.routed, core::RoutedIntent{});
        }
    }
}

TEST(Router, RouteGivesOnlyTheIntent) {
    auto backend = std::make_shared<ScriptedBackend>(
        std::vector<ScriptedBackend::Step>{reply(webSearchReply), step(Outcome::tooLong)});
    const Router router{backend, true};
    EXPECT_EQ(router.route("q").intent, IntentID::webSearch);
    EXPECT_EQ(router.route("q"), core::RoutedIntent{});
}

}  // namespace
}  // namespace nuvrel::pipeline
