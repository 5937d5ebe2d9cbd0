#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/cancellation.h"
#include "core/localized_strings.h"
#include "pipeline/pipeline.h"
#include "pipeline/pipeline_test_support.h"

namespace nuvrel::pipeline {
namespace {

using core::IntentID;
using core::PipelineOutcome;
using core::RoutedIntent;
using Result = DateTimeExpressionParser::Result;

const core::LocalizedStrings& en = core::LocalizedStrings::en();

// --- Dispatch ---

// The offline test comes before any slot is read. With the network on, unusable slots leave
// currency to the validator, while weather asks for the position here, which this pipeline
// has no provider for.
TEST(RoutedDispatch, WithNetworkOffWeatherAndCurrencyAnswerOfflineWhateverTheSlots) {
    const core::UserFacingError offline(en.networkFeaturesOfflineMessage,
                                        en.networkFeaturesOfflineRecovery, false);
    const core::UserFacingError noPosition(en.weatherLocationUnavailableMessage);
    for (bool network : {true, false}) {
        Pipeline pipeline;
        pipeline.networkFeaturesEnabled = network;
        for (IntentID intent : core::allIntentIDs) {
            const bool answers = intent == IntentID::weatherQuery ||
                                 (!network && intent == IntentID::currencyConvert);
            for (const core::Slots& slots : {core::Slots{}, core::Slots{{"location", 7},
                                                                        {"amount", "lots"},
                                                                        {"action", "lockScreen"},
                                                                        {"duration", "5 min"}}}) {
                const auto outcome =
                    pipeline.dispatchRouterFallbackIntent({intent, slots, 1}, "lock it", en);
                ASSERT_EQ(outcome.has_value(), answers)
                    << core::rawValue(intent) << " network " << network;
                if (!answers) continue;
                ASSERT_TRUE(outcome->asError());
                EXPECT_EQ(*outcome->asError(), network ? noPosition : offline);
            }
        }
    }
}

TEST(RoutedDispatch, AStoppedTaskIsCancelledBeforeAnythingElse) {
    const auto state = base::CancellationState::make();
    base::CancellationScope scope(state);
    state->cancel();
    Pipeline pipeline;
    pipeline.networkFeaturesEnabled = false;
    for (IntentID intent : {IntentID::weatherQuery, IntentID::unknown}) {
        const auto outcome = pipeline.dispatchRouterFallbackIntent({intent, {}, 0.9}, "x", en);
        ASSERT_TRUE(outcome);
        EXPECT_TRUE(outcome->isCancelled());
    }
}

TEST(RoutedDispatch, ASystemCommandFromTheModelEndsInTheWebFallbackNotInAnAction) {
    auto commands = std::make_shared<testing::FakeCapability>(IntentID::systemCommand);
    auto web = std::make_shared<testing::FakeCapability>(IntentID::webSearch);
    auto made = testing::pipelineWith({testing::reply(testing::routerReply(
                                          IntentID::systemCommand, 0.99, {{"command", "sleep"}}))},
                                      {commands, web});
    const PipelineOutcome outcome = made.pipeline.run("make it sleepy in here");
    EXPECT_TRUE(commands->executed.empty());
    ASSERT_TRUE(outcome.asResult());
    const auto* answer = outcome.asResult()->get<core::CapabilityResult::WebAnswer>();
    ASSERT_TRUE(answer);
    EXPECT_TRUE(answer->answer.fallbackNotice);
    EXPECT_EQ(answer->answer.query, "make it sleepy in here");
}

// --- Slot grounding ---

TEST(CurrencyRequest, ReadsTheModelsSlotsStrictly) {
    using answers::CurrencyCode;
    using Request = answers::CurrencyConversionRequest;
    auto request = [](core::Slots slots) { return Pipeline::currencyRequest(slots); };

    EXPECT_EQ(request({{"amount", "1,000"}, {"from_currency", "Dollars"}, {"to_currency", "엔"}}),
              (Request{1000, CurrencyCode::usd, CurrencyCode::jpy}));
    EXPECT_EQ(request({{"amount", " 12.5 "}, {"from_currency", "eur"}, {"to_currency", "KRW"}}),
              (Request{12.5, CurrencyCode::eur, CurrencyCode::krw}));
    // A missing or equal target: dollars go to won, won to dollars.
    EXPECT_EQ(request({{"amount", "5"}, {"from_currency", "usd"}, {"to_currency", "USD"}}),
              (Request{5, CurrencyCode::usd, CurrencyCode::krw}));
    EXPECT_EQ(request({{"amount", "5000"}, {"from_currency", "원"}}),
              (Request{5000, CurrencyCode::krw, CurrencyCode::usd}));

    EXPECT_FALSE(request({{"amount", "1000 won"}, {"from_currency", "krw"}}));
    EXPECT_FALSE(request({{"amount", 1000.0}, {"from_currency", "krw"}})) << "amounts are strings";
    EXPECT_FALSE(request({{"from_currency", "krw"}}));
    EXPECT_FALSE(request({{"amount", "10"}}));
    EXPECT_FALSE(request({{"amount", "10"}, {"from_currency", "bitcoin"}}));
    EXPECT_FALSE(
        request({{"amount", "10"}, {"from_currency", "usd"}, {"to_currency", "doubloons"}}));
}

TEST(SlotValueAppears, IgnoresWhiteSpaceAndCaseButNeedsTheWholeValue) {
    const std::string query = "Remind me to call Mom\ttomorrow at 3 PM";
    EXPECT_TRUE(Pipeline::slotValueAppears(query, "call  mom"));
    EXPECT_TRUE(Pipeline::slotValueAppears(query, "CALLMOM"));
    EXPECT_TRUE(Pipeline::slotValueAppears(query, "mom tomorrow"));  // across the tab
    EXPECT_TRUE(Pipeline::slotValueAppears(query, "3pm"));
    EXPECT_FALSE(Pipeline::slotValueAppears(query, "call dad"));
    EXPECT_FALSE(Pipeline::slotValueAppears(query, "tomorrow at 4 pm"));
    // Nothing to look for is never found, not even in nothing.
    EXPECT_FALSE(Pipeline::slotValueAppears(query, ""));
    EXPECT_FALSE(Pipeline::slotValueAppears(query, " \n "));
    EXPECT_FALSE(Pipeline::slotValueAppears("", ""));
    EXPECT_FALSE(Pipeline::slotValueAppears("", "x"));
    // Korean and Japanese spacing varies between the user and the model.
    EXPECT_TRUE(Pipeline::slotValueAppears("내일 오후 3시에 엄마한테 전화", "오후3시"));
    EXPECT_TRUE(Pipeline::slotValueAppears("明日の\u3000午後3時", "明日の午後3時"));
}

// A parser that records what it was given and answers from a script, by text.
struct ScriptedParse {
    std::vector<std::string> inputs;
    std::map<std::string, std::optional<Result>> answers;

    DateTimeExpressionParser::Parse function() {
        return [this](std::string_view text) {
            inputs.emplace_back(text);
            const auto found = answers.find(std::string(text));
            return found == answers.end() ? std::optional<Result>() : found->second;
        };
    }
};

Result dateOnly(std::string title, std::string token) {
    return Result{
        .title = std::move(title), .dateToken = std::move(token), .hasExplicitDateWord = true};
}

Result withHour(std::string title, int hour) {
    return Result{.title = std::move(title), .dateToken = "today", .hour = hour};
}

TEST(ParsedDateTimeSlots, OnlyValuesTheQueryHoldsReachTheParser) {
    ScriptedParse parse;
    parse.answers["call mom"] = Result{.title = "call mom", .dateToken = "today"};
    const auto result = Pipeline::parsedDateTimeSlots({{"title", "call mom"}, {"date", "tomorrow"}},
                                                      "remind me to call mom", parse.function());
    EXPECT_EQ(parse.inputs, (std::vector<std::string>{"call mom"}));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->dateToken, "today");

    // Title (else content), date, time: in this order, each trimmed, joined by one blank.
    ScriptedParse ordered;
    Pipeline::parsedDateTimeSlots(
        {{"time", " 3pm "}, {"date", "Tomorrow"}, {"content", "call mom"}}, "call mom tomorrow 3pm",
        ordered.function());
    EXPECT_EQ(ordered.inputs, (std::vector<std::string>{"call mom Tomorrow 3pm"}));

    // Slots that are not text count as absent.
    ScriptedParse typed;
    Pipeline::parsedDateTimeSlots({{"title", "call mom"}, {"date", 5}, {"time", true}},
                                  "call mom 5", typed.function());
    EXPECT_EQ(typed.inputs, (std::vector<std::string>{"call mom"}));
}

TEST(ParsedDateTimeSlots, WhenEveryValueIsInventedTheQueryItselfIsParsed) {
    ScriptedParse parse;
    parse.answers["remind me at noon"] = withHour("", 12);
    const auto result =
        Pipeline::parsedDateTimeSlots({{"title", "buy milk"}, {"date", "friday"}, {"time", "9am"}},
                                      "remind me at noon", parse.function());
    EXPECT_EQ(parse.inputs, (std::vector<std::string>{"remind me at noon"}));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->hour, 12);

    ScriptedParse noSlots;
    Pipeline::parsedDateTimeSlots({}, "wake me at 7", noSlots.function());
    EXPECT_EQ(noSlots.inputs, (std::vector<std::string>{"wake me at 7"}));
}

TEST(ParsedDateTimeSlots, AnEmptyQueryTrustsTheSlotsButGivesNothingWithoutThem) {
    ScriptedParse parse;
    Pipeline::parsedDateTimeSlots({{"title", "call mom"}, {"date", "tomorrow"}}, "",
                                  parse.function());
    EXPECT_EQ(parse.inputs, (std::vector<std::string>{"call mom tomorrow"}));

    ScriptedParse none;
    EXPECT_FALSE(Pipeline::parsedDateTimeSlots({{"date", "  "}}, "", none.function()));
    EXPECT_TRUE(none.inputs.empty());
}

TEST(ParsedDateTimeSlots, TheContentBesideATitleIsTriedForAMissingHour) {
    const std::string query = "remind me to call mom tomorrow at 3pm";
    const core::Slots slots = {{"title", "call mom"}, {"content", "at 3pm"}, {"date", "tomorrow"}};

    ScriptedParse better;
    better.answers["call mom tomorrow"] = dateOnly("call mom", "tomorrow");
    better.answers["at 3pm call mom tomorrow"] = withHour("call mom", 15);
    const auto improved = Pipeline::parsedDateTimeSlots(slots, query, better.function());
    EXPECT_EQ(better.inputs,
              (std::vector<std::string>{"call mom tomorrow", "at 3pm call mom tomorrow"}));
    ASSERT_TRUE(improved);
    EXPECT_EQ(improved->hour, 15);

    // A second parse without an hour, or with no result, leaves the first standing.
    for (const std::optional<Result>& second :
         {std::optional<Result>(dateOnly("at 3pm call mom", "tomorrow")),
          std::optional<Result>()}) {
        ScriptedParse worse;
        worse.answers["call mom tomorrow"] = dateOnly("call mom", "tomorrow");
        worse.answers["at 3pm call mom tomorrow"] = second;
        const auto kept = Pipeline::parsedDateTimeSlots(slots, query, worse.function());
        EXPECT_EQ(worse.inputs.size(), 2u);
        EXPECT_EQ(kept, dateOnly("call mom", "tomorrow"));
    }
}

TEST(ParsedDateTimeSlots, TheContentIsNotTriedWhenItCannotHelp) {
    const std::string query = "remind me to call mom tomorrow at 3pm";
    // The first parse already has an hour.
    ScriptedParse timed;
    timed.answers["call mom tomorrow"] = withHour("call mom", 9);
    Pipeline::parsedDateTimeSlots(
        {{"title", "call mom"}, {"content", "at 3pm"}, {"date", "tomorrow"}}, query,
        timed.function());
    EXPECT_EQ(timed.inputs.size(), 1u);

    // The first parse found nothing at all.
    ScriptedParse nothing;
    EXPECT_FALSE(Pipeline::parsedDateTimeSlots({{"title", "call mom"}, {"content", "at 3pm"}},
                                               query, nothing.function()));
    EXPECT_EQ(nothing.inputs.size(), 1u);

    // The content was invented.
    ScriptedParse invented;
    invented.answers["call mom tomorrow"] = dateOnly("call mom", "tomorrow");
    Pipeline::parsedDateTimeSlots(
        {{"title", "call mom"}, {"content", "at 5pm"}, {"date", "tomorrow"}}, query,
        invented.function());
    EXPECT_EQ(invented.inputs.size(), 1u);

    // Without a title the content is the first value, never a second choice.
    ScriptedParse contentOnly;
    contentOnly.answers["at 3pm tomorrow"] = dateOnly("", "tomorrow");
    Pipeline::parsedDateTimeSlots({{"content", "at 3pm"}, {"date", "tomorrow"}}, query,
                                  contentOnly.function());
    EXPECT_EQ(contentOnly.inputs, (std::vector<std::string>{"at 3pm tomorrow"}));
}

}  // namespace
}  // namespace nuvrel::pipeline
