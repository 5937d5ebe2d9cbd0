// Weather, currency, document summary and translation as the cascade and routed dispatch
// reach them, against loopback services.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "core/localized_strings.h"
#include "pipeline/pipeline.h"
#include "pipeline/pipeline_test_support.h"
#include "support/information_services_stand_in.h"

namespace nuvrel::pipeline {
namespace {

using core::CapabilityResult;
using core::IntentID;

const core::LocalizedStrings& en = core::LocalizedStrings::en();

struct Stage {
    test::InformationServicesStandIn services;
    std::shared_ptr<test::StubLocation> location = std::make_shared<test::StubLocation>();
    std::shared_ptr<testing::FakeCapability> web =
        std::make_shared<testing::FakeCapability>(IntentID::webSearch);
    testing::PipelineUnderTest made;

    explicit Stage(std::vector<testing::ScriptedBackend::Step> script = {})
        : made(testing::pipelineWith(std::move(script), {web})) {
        made.pipeline.informationServices = services.services();
        made.pipeline.weatherLocationProvider = location;
    }
    Pipeline& pipeline() { return made.pipeline; }
};

std::string caseOf(const core::PipelineOutcome& outcome) {
    if (outcome.asError()) return "error: " + outcome.asError()->message;
    if (!outcome.asResult()) return "other";
    return std::string(core::caseName(*outcome.asResult()));
}

TEST(InformationSteps, CascadeAnswersWeatherAndCurrencyAndOfflineSendsNothing) {
    const std::string offline = "error: " + std::string(en.networkFeaturesOfflineMessage);
    for (const char* query : {"seoul weather", "100 dollars to yen", "날씨"}) {
        Stage stage;
        stage.location->reading = core::CurrentLocation{37.5, 127, "Seoul"};
        EXPECT_NE(caseOf(stage.pipeline().run(query)).substr(0, 5), "error") << query;
        EXPECT_FALSE(stage.services.requests.empty()) << query;
        EXPECT_TRUE(stage.web->executed.empty()) << query;

        Stage offlineStage;
        offlineStage.pipeline().networkFeaturesEnabled = false;
        EXPECT_EQ(caseOf(offlineStage.pipeline().run(query)), offline) << query;
        EXPECT_TRUE(offlineStage.services.requests.empty()) << query;
        EXPECT_TRUE(offlineStage.services.recorded.empty()) << query;
    }
    // Without the live fast paths the query reaches the router, here unparseable; so does a
    // place that the geocoder does not know.
    Stage pure({testing::reply("no json"), testing::reply("no json")});
    pure.pipeline().liveFastPathsEnabled = false;
    EXPECT_EQ(caseOf(pure.pipeline().run("100 dollars to yen")), "webAnswer");
    EXPECT_TRUE(pure.services.requests.empty());
    Stage unknown({testing::reply("no json"), testing::reply("no json")});
    EXPECT_EQ(caseOf(unknown.pipeline().run("Atlantis weather")), "webAnswer");
    EXPECT_EQ(unknown.services.requests.size(), 1u);
}

TEST(InformationSteps, RoutedWeatherTakesThePlaceOrHere) {
    const struct {
        core::Slots slots;
        std::optional<std::string> location;  // nothing: no outcome
    } cases[] = {
        {{{"location", "Paris"}}, "Paris"},
        {{{"location", "Paris"}, {"content", "Atlantis please"}}, "Paris"},
        {{{"location", "Atlantis"}}, std::nullopt},
        {{{"content", "Atlantis please"}}, "Here"},
        {{}, "Here"},
    };
    for (const auto& c : cases) {
        Stage stage;
        stage.location->reading = core::CurrentLocation{1, 2, "Here"};
        const auto outcome = stage.pipeline().dispatchRouterFallbackIntent(
            {IntentID::weatherQuery, c.slots, 0.9}, "q", en);
        ASSERT_EQ(outcome.has_value(), c.location.has_value());
        if (!outcome) continue;
        ASSERT_TRUE(outcome->asResult());
        const auto* weather = outcome->asResult()->get<CapabilityResult::Weather>();
        ASSERT_TRUE(weather);
        EXPECT_EQ(weather->answer.locationName, *c.location);
    }
    Stage stage;
    const auto converted = stage.pipeline().dispatchRouterFallbackIntent(
        {IntentID::currencyConvert,
         {{"amount", "100"}, {"from_currency", "usd"}, {"to_currency", "엔"}},
         0.9},
        "q", en);
    ASSERT_TRUE(converted && converted->asResult());
    EXPECT_EQ(converted->asResult()->get<CapabilityResult::CurrencyConversion>()->display,
              "100.00 USD = 15,565 JPY");
}

TEST(InformationSteps, SummaryAndTranslationUseTheSummaryModel) {
    Stage stage;
    auto summarizer =
        std::make_shared<testing::ScriptedBackend>(std::vector<testing::ScriptedBackend::Step>{
            testing::reply(R"({"summary":"Short."})"),
            testing::reply(R"({"translation":"좋은 아침"})")});
    stage.pipeline().summarizer = summarizer;
    stage.pipeline().findDocument = [](std::string_view name) {
        return std::optional<core::FileHit>(
            core::FileHit{std::string(name), "/d/" + std::string(name), ""});
    };
    stage.pipeline().extractDocumentText = [](const std::string&) {
        return std::optional<std::string>("Body");
    };
    EXPECT_EQ(caseOf(stage.pipeline().run("summarize plan.md")), "documentSummary");
    EXPECT_EQ(summarizer->calls.at(0).user, "File: plan.md\n\nBody");
    EXPECT_EQ(caseOf(stage.pipeline().run("translate good morning to Korean")), "translation");
    EXPECT_EQ(summarizer->calls.at(1).user, "good morning");
}

}  // namespace
}  // namespace nuvrel::pipeline
