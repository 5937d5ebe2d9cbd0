#include "app/outcome_json.h"

#include <gtest/gtest.h>

#include "app/card_text.h"

namespace nuvrel::app {
namespace {

using core::CapabilityResult;
using core::PipelineOutcome;

TEST(OutcomeJSON, ResultsCarryTheirCaseAndPayloadFieldsByName) {
    const auto calculation = outcomeJSON(
        PipelineOutcome::result(CapabilityResult::Calculation{"100 - 15% of 200 = 70"}));
    EXPECT_EQ(
        calculation.dump(),
        R"({"outcome":"result","result":{"case":"calculation","display":"100 - 15% of 200 = 70"}})");

    core::WebAnswer answer;
    answer.query = "q";
    answer.sources = {{"Title", "example.org", "https://example.org/a"}};
    answer.fallbackNotice = true;
    const auto web = resultJSON(CapabilityResult::WebAnswer{answer});
    EXPECT_EQ(web["case"], "webAnswer");
    EXPECT_TRUE(web["summary"].is_null()) << "an absent summary is null, not missing";
    EXPECT_EQ(web["sources"][0]["host"], "example.org");
    EXPECT_EQ(web["fallbackNotice"], true);

    EXPECT_EQ(resultJSON(CapabilityResult::HelpOverview{}).dump(), R"({"case":"helpOverview"})");
}

TEST(OutcomeJSON, ErrorsConfirmationsAndCancellation) {
    const auto error = outcomeJSON(PipelineOutcome::error(
        core::UserFacingError("Couldn't reach the local model", std::nullopt, true)));
    EXPECT_EQ(
        error.dump(),
        R"({"outcome":"error","error":{"message":"Couldn't reach the local model","recoverySuggestion":null,"retryable":true}})");

    core::MessageDraft draft;
    draft.recipientQuery = "엄마";
    draft.channel = core::MessageDraft::Channel::mail;
    draft.body = "늦어요";
    const auto confirm = outcomeJSON(PipelineOutcome::confirm(draft));
    EXPECT_EQ(confirm["outcome"], "confirm");
    EXPECT_EQ(confirm["plan"]["case"], "messageSend");
    EXPECT_EQ(confirm["plan"]["channel"], "mail");
    EXPECT_EQ(confirm["plan"]["recipientQuery"], "엄마");

    EXPECT_EQ(outcomeJSON(PipelineOutcome::cancelled()).dump(), R"({"outcome":"cancelled"})");
}

TEST(CardText, ShowsThePayloadAndTheRecoveryInTheInterfaceLanguage) {
    const auto& en = core::LocalizedStrings::en();
    EXPECT_EQ(cardText(PipelineOutcome::result(CapabilityResult::Calculation{"2 + 2 = 4"}), en),
              "2 + 2 = 4\n");
    EXPECT_EQ(
        cardText(PipelineOutcome::error(core::UserFacingError("M", std::string("R"), false)), en),
        "M\nR\n");

    const auto& ko = core::LocalizedStrings::ko();
    const std::string help =
        cardText(PipelineOutcome::result(CapabilityResult::HelpOverview{}), ko);
    EXPECT_EQ(help.rfind(ko.helpHeaderTitle, 0), 0u);
    EXPECT_NE(help.find(ko.helpItems.front()), std::string::npos);
    EXPECT_EQ(cardText(PipelineOutcome::cancelled(), en), "");
}

}  // namespace
}  // namespace nuvrel::app
