#include "core/capability_result.h"

#include <gtest/gtest.h>

#include <tuple>
#include <unordered_set>

#include "core/action_plan.h"
#include "core/pipeline_outcome.h"
#include "core/validation_outcome.h"

namespace nuvrel::core {
namespace {

using R = CapabilityResult;

TEST(CapabilityResult, CasesWithTheSamePayloadShapeStayApart) {
    MessageDraft draft{"mom", std::nullopt, MessageDraft::Channel::sms, "home soon"};
    CapabilityResult drafted = R::MessageDraft{draft};
    CapabilityResult sent = R::MessageSent{draft};
    EXPECT_TRUE(drafted.is<R::MessageDraft>());
    EXPECT_FALSE(drafted.is<R::MessageSent>());
    ASSERT_TRUE(sent.get<R::MessageSent>());
    EXPECT_EQ(sent.get<R::MessageSent>()->draft, draft);
    EXPECT_EQ(sent.get<R::MessageDraft>(), nullptr);

    CapabilityResult listing = R::Events{{EventItem{.title = "Standup"}}, "Today"};
    CapabilityResult deleting =
        R::CalendarDeleteConfirmation{{EventItem{.title = "Standup"}}, "Today"};
    EXPECT_EQ(caseName(listing), "events");
    EXPECT_EQ(caseName(deleting), "calendarDeleteConfirmation");
    EXPECT_EQ(deleting.get<R::CalendarDeleteConfirmation>()->events.at(0).title, "Standup");
}

TEST(ResultRecords, WebSourcesHashByValue) {
    WebSource a{"Title", "example.com", "https://example.com/a"};
    WebSource swapped{"example.com", "Title", "https://example.com/a"};
    std::unordered_set<WebSource> sources{a, a, swapped, WebSource{a}};
    EXPECT_EQ(sources.size(), 2u);
    EXPECT_TRUE(sources.contains(WebSource{"Title", "example.com", "https://example.com/a"}));
}

TEST(ActionPlan, TheRecordNamesTheIntent) {
    const std::vector<std::pair<ActionPlan, IntentID>> plans{
        {FinderQuery{.keyword = "report"}, IntentID::finderSearch},
        {CalendarRange{.dateRange = "today"}, IntentID::calendarQuery},
        {MessageDraft{.recipientQuery = "mom", .body = "hi"}, IntentID::messageSend},
        {MusicCommand{.action = MusicCommand::Action::pause}, IntentID::musicPlay},
        {WebQuery{.query = "rust", .wantAnswer = true}, IntentID::webSearch},
    };
    for (const auto& [plan, intent] : plans) EXPECT_EQ(plan.intentID(), intent) << rawValue(intent);

    ActionPlan plan = FinderQuery{.keyword = "report", .fileType = "pdf"};
    ASSERT_TRUE(plan.get<FinderQuery>());
    EXPECT_EQ(plan.get<FinderQuery>()->fileType, "pdf");
    EXPECT_EQ(plan.get<WebQuery>(), nullptr);
}

TEST(ValidationOutcome, EachCaseCarriesItsOwnPayload) {
    auto missing = ValidationOutcome::missingSlot(IntentID::messageSend, "recipient");
    EXPECT_EQ(missing.kind(), ValidationOutcome::Kind::missingSlot);
    ASSERT_TRUE(missing.asMissingSlot());
    EXPECT_EQ(missing.asMissingSlot()->name, "recipient");
    EXPECT_EQ(missing.asPlan(), nullptr);

    auto web = ValidationOutcome::fallbackWeb("weather tomorrow");
    EXPECT_EQ(web.asFallbackWeb()->query, "weather tomorrow");
    EXPECT_EQ(ValidationOutcome::plan(WebQuery{"q", true}).asPlan()->intentID(),
              IntentID::webSearch);
}

TEST(PipelineOutcome, EachCaseCarriesItsOwnPayload) {
    auto result = PipelineOutcome::result(R::Calculation{"4"});
    EXPECT_EQ(result.kind(), PipelineOutcome::Kind::result);
    ASSERT_TRUE(result.asResult());
    EXPECT_EQ(result.asResult()->get<R::Calculation>()->display, "4");
    EXPECT_EQ(result.asConfirm(), nullptr);

    auto confirm = PipelineOutcome::confirm(MessageDraft{.recipientQuery = "mom", .body = "hi"});
    EXPECT_EQ(confirm.kind(), PipelineOutcome::Kind::confirm);
    EXPECT_EQ(confirm.asConfirm()->intentID(), IntentID::messageSend);
    EXPECT_EQ(confirm.asResult(), nullptr);

    auto error = PipelineOutcome::error(UserFacingError("Offline", "Connect", true));
    EXPECT_EQ(*error.asError(), UserFacingError("Offline", "Connect", true));
    EXPECT_FALSE(error.isCancelled());

    auto cancelled = PipelineOutcome::cancelled();
    EXPECT_TRUE(cancelled.isCancelled());
    EXPECT_EQ(cancelled.asError(), nullptr);
}

TEST(UserFacingError, ThrownAsAnExceptionAndComparedByEveryField) {
    try {
        throw UserFacingError("No model", std::nullopt, false);
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "No model");
    }
    const UserFacingError base("No model", "Download one", true);
    EXPECT_NE(base, UserFacingError("No model", std::nullopt, true));
    EXPECT_NE(base, UserFacingError("No model", "Download one", false));
    EXPECT_NE(base, UserFacingError("No server", "Download one", true));
}

}  // namespace
}  // namespace nuvrel::core
