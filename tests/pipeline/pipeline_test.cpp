#include "pipeline/pipeline.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "answers/calculator_fast_path.h"
#include "base/cancellation.h"
#include "base/shared_library.h"
#include "core/localized_strings.h"
#include "llm/llm_error.h"
#include "pipeline/chain_decomposer.h"
#include "pipeline/pipeline_test_support.h"
#include "pipeline/user_facing.h"
#include "support/recording_sink.h"

namespace nuvrel::pipeline {
namespace {

using core::IntentID;
using core::PipelineOutcome;
using core::UserFacingError;
using testing::failWith;
using testing::FakeCapability;
using testing::pipelineWith;
using testing::reply;
using testing::routerReply;
using testing::throwingCapability;

const core::LocalizedStrings& en = core::LocalizedStrings::en();

UserFacingError errorOf(const PipelineOutcome& outcome) {
    EXPECT_EQ(outcome.kind(), PipelineOutcome::Kind::error);
    return outcome.asError() ? *outcome.asError() : UserFacingError("<not an error>");
}

std::optional<core::WebAnswer> webAnswerOf(const PipelineOutcome& outcome) {
    const core::CapabilityResult* result = outcome.asResult();
    if (!result) return std::nullopt;
    const auto* web = result->get<core::CapabilityResult::WebAnswer>();
    return web ? std::optional(web->answer) : std::nullopt;
}

UserFacingError offline() {
    return UserFacingError(en.networkFeaturesOfflineMessage, en.networkFeaturesOfflineRecovery,
                           false);
}

// --- The cascade ---

TEST(PipelineCascade, CalculatorAnswersWithoutAModelAndWithLiveFastPathsOff) {
    for (bool live : {true, false}) {
        for (const char* query : {"2+2", "15% of 200", "5 kg in lbs"}) {
            auto made = pipelineWith({});  // any model call fails the test
            made.pipeline.liveFastPathsEnabled = live;
            const PipelineOutcome outcome = made.pipeline.run(query);
            ASSERT_TRUE(outcome.asResult()) << query;
            const auto* calculation =
                outcome.asResult()->get<core::CapabilityResult::Calculation>();
            ASSERT_TRUE(calculation) << query;
            const auto expected = answers::CalculatorFastPath::match(query);
            ASSERT_TRUE(expected) << query;
            EXPECT_EQ(calculation->display, expected->display) << query;
        }
    }
    // No router backend at all: still answered.
    Pipeline bare;
    EXPECT_TRUE(bare.run("2+2").asResult());
}

TEST(PipelineCascade, HelpAnswersBeforeTheRouterInAnyLanguageAndWithLiveFastPathsOff) {
    for (bool live : {true, false}) {
        for (const char* query :
             {"help", "  What can you do?! ", "도움말", "뭐 할 수 있어?", "使い方"}) {
            auto made = pipelineWith({reply(routerReply(IntentID::webSearch, 0.9))});
            made.pipeline.liveFastPathsEnabled = live;
            const PipelineOutcome outcome = made.pipeline.run(query);
            ASSERT_TRUE(outcome.asResult()) << query;
            EXPECT_TRUE(outcome.asResult()->is<core::CapabilityResult::HelpOverview>()) << query;
            EXPECT_TRUE(made.backend->calls.empty()) << query;
        }
    }
}

TEST(PipelineCascade, AMissReachesTheRouterWithTheQueryUntrimmed) {
    auto finder = std::make_shared<FakeCapability>(IntentID::finderSearch);
    auto made = pipelineWith(
        {reply(routerReply(IntentID::finderSearch, 0.9, {{"keyword", "taxes"}}))}, {finder});
    const PipelineOutcome outcome = made.pipeline.run("  find my taxes please ");
    ASSERT_EQ(made.backend->calls.size(), 1u);
    EXPECT_EQ(made.backend->calls[0].user, "  find my taxes please ");
    ASSERT_EQ(finder->executed.size(), 1u);
    EXPECT_EQ(finder->executed[0], core::ActionPlan(core::FinderQuery{.keyword = "taxes"}));
    ASSERT_TRUE(outcome.asResult());
    EXPECT_TRUE(outcome.asResult()->is<core::CapabilityResult::Empty>());
}

// --- Routing failures ---

TEST(PipelineRouting, UnreachableModelIsARetryableErrorAndTooLongInputIsNot) {
    auto unreachable = pipelineWith(
        {failWith(llm::LLMError::http(503)), failWith(llm::LLMError::serverStartTimeout())});
    EXPECT_EQ(errorOf(unreachable.pipeline.run("tell me something")),
              UserFacingError("Couldn't reach the local model",
                              "Check that Kestrune-nano is installed, then try again.", true));

    auto tooLong = pipelineWith({failWith(llm::LLMError::inputTooLong())});
    EXPECT_EQ(errorOf(tooLong.pipeline.run("tell me something")),
              UserFacingError("That text is too long for the on-device model",
                              "Try again with a shorter query — the model can only read so much "
                              "at once.",
                              false));

    auto korean =
        pipelineWith({failWith(llm::LLMError::http(500)), failWith(llm::LLMError::http(500))});
    korean.pipeline.language = core::AppLanguage::ko;
    const auto& ko = core::LocalizedStrings::ko();
    EXPECT_EQ(errorOf(korean.pipeline.run("뭔가 알려줘")),
              UserFacingError(ko.llmUnavailableMessage, ko.llmUnavailableRecovery, true));
}

TEST(PipelineRouting, UnparsableOutputSearchesTheWebWithFallbackNotice) {
    auto web = std::make_shared<FakeCapability>(IntentID::webSearch);
    auto made = pipelineWith({reply("no idea"), reply("{\"intent\": 3}")}, {web});
    const PipelineOutcome outcome = made.pipeline.run(" who won the match ");
    const std::optional<core::WebAnswer> answer = webAnswerOf(outcome);
    ASSERT_TRUE(answer);
    EXPECT_TRUE(answer->fallbackNotice);
    EXPECT_EQ(answer->summary, "an answer");
    ASSERT_EQ(web->planCalls.size(), 1u);
    EXPECT_TRUE(web->planCalls[0].slots.empty());
    EXPECT_EQ(web->planCalls[0].query, "who won the match");

    auto offlineRun = pipelineWith({reply("no idea"), reply("still none")}, {web});
    offlineRun.pipeline.networkFeaturesEnabled = false;
    EXPECT_EQ(errorOf(offlineRun.pipeline.run("who won the match")), offline());
    EXPECT_EQ(web->executed.size(), 1u);  // only the first run's
}

TEST(PipelineRouting, OnlyTheFallbackSearchCarriesTheNotice) {
    auto web = std::make_shared<FakeCapability>(IntentID::webSearch);
    auto made = pipelineWith(
        {reply(routerReply(IntentID::webSearch, 0.9, {{"query", "tides in Busan"}}))}, {web});
    const std::optional<core::WebAnswer> answer =
        webAnswerOf(made.pipeline.run("search tides in Busan"));
    ASSERT_TRUE(answer);
    EXPECT_FALSE(answer->fallbackNotice);
    EXPECT_TRUE(web->planCalls.empty());  // the validator made the plan
    ASSERT_EQ(web->executed.size(), 1u);
    EXPECT_EQ(web->executed[0], core::ActionPlan(core::WebQuery{"tides in Busan", true}));

    auto offlineRun =
        pipelineWith({reply(routerReply(IntentID::webSearch, 0.9, {{"query", "tides"}}))}, {web});
    offlineRun.pipeline.networkFeaturesEnabled = false;
    EXPECT_EQ(errorOf(offlineRun.pipeline.run("search tides")), offline());
    EXPECT_EQ(web->executed.size(), 1u);
}

TEST(PipelineRouting, NoWebCapabilityMeansTheActionIsUnavailable) {
    auto made = pipelineWith({reply(routerReply(IntentID::unknown, 0.9))});
    EXPECT_EQ(errorOf(made.pipeline.run("do the thing")),
              UserFacingError("That action isn't available yet", std::nullopt, false));
}

// --- The gate and the plans ---

TEST(PipelineGate, AMessagePlanAsksForConfirmationAndNeverRuns) {
    auto messages = throwingCapability(IntentID::messageSend, std::logic_error("sent!"));
    auto web = std::make_shared<FakeCapability>(IntentID::webSearch);
    const nlohmann::json slots = {{"recipient", "Jamie"}, {"body", "running late"}};

    auto confident =
        pipelineWith({reply(routerReply(IntentID::messageSend, 0.5, slots))}, {messages, web});
    const PipelineOutcome outcome = confident.pipeline.run("text Jamie running late");
    ASSERT_EQ(outcome.kind(), PipelineOutcome::Kind::confirm);
    const auto* draft = outcome.asConfirm()->get<core::MessageDraft>();
    ASSERT_TRUE(draft);
    EXPECT_EQ(draft->recipientQuery, "Jamie");
    EXPECT_EQ(draft->body, "running late");
    EXPECT_TRUE(web->executed.empty());

    // Below 0.5 a complete draft still ends at its confirmation; an incomplete one goes to the
    // web, as any unsure intent does.
    auto unsure =
        pipelineWith({reply(routerReply(IntentID::messageSend, 0.4, slots))}, {messages, web});
    EXPECT_EQ(unsure.pipeline.run("text Jamie running late").kind(),
              PipelineOutcome::Kind::confirm);
    auto unsureIncomplete =
        pipelineWith({reply(routerReply(IntentID::messageSend, 0.4, {{"recipient", "Jamie"}}))},
                     {messages, web});
    const std::optional<core::WebAnswer> answer =
        webAnswerOf(unsureIncomplete.pipeline.run("text Jamie"));
    ASSERT_TRUE(answer);
    EXPECT_TRUE(answer->fallbackNotice);
}

TEST(PipelineGate, AMissingMessageSlotNamesItWithTheMessageExample) {
    auto messages = std::make_shared<FakeCapability>(IntentID::messageSend);
    auto noRecipient = pipelineWith(
        {reply(routerReply(IntentID::messageSend, 0.9, {{"body", "hi"}}))}, {messages});
    EXPECT_EQ(errorOf(noRecipient.pipeline.run("send hi")),
              UserFacingError("Missing required detail: who to send it to",
                              "e.g. Text Jamie I'm running late.", false));

    auto noBody = pipelineWith(
        {reply(routerReply(IntentID::messageSend, 0.9, {{"recipient", "Sam"}, {"body", "  "}}))},
        {messages});
    noBody.pipeline.language = core::AppLanguage::ja;
    const auto& ja = core::LocalizedStrings::ja();
    EXPECT_EQ(errorOf(noBody.pipeline.run("Samに送って")),
              UserFacingError(ja.missingSlotMessage(ja.slotNameBody), ja.messageSendExampleRecovery,
                              false));
    EXPECT_TRUE(messages->executed.empty());
}

// --- Errors of capabilities ---

struct CapturedRun {
    PipelineOutcome outcome;
    std::string standardError;
};

CapturedRun runFinderThrowing(std::shared_ptr<FakeCapability> finder) {
    auto made = pipelineWith(
        {reply(routerReply(IntentID::finderSearch, 0.9, {{"keyword", "taxes"}}))}, {finder});
    const nuvrel::test::RecordedDiagnostics recorded;
    made.pipeline.diagnostics = recorded.diagnostics;
    PipelineOutcome outcome = made.pipeline.run("find my taxes please");
    return {std::move(outcome), recorded.sink->text()};
}

TEST(PipelineErrors, AfterValidationAUserFacingErrorGetsTheHelpHintWhenItHasNoRecovery) {
    auto bare = runFinderThrowing(throwingCapability(
        IntentID::finderSearch, UserFacingError("Search failed", std::nullopt, true)));
    EXPECT_EQ(errorOf(bare.outcome), UserFacingError("Search failed", en.helpHintRecovery, true));
    EXPECT_EQ(bare.standardError, "");

    auto withRecovery = runFinderThrowing(throwingCapability(
        IntentID::finderSearch, UserFacingError("Search failed", "Open Finder", false)));
    EXPECT_EQ(errorOf(withRecovery.outcome),
              UserFacingError("Search failed", "Open Finder", false));
}

TEST(PipelineErrors, AnyOtherErrorIsHiddenBehindTheGenericMessageAndLogged) {
    auto plain = runFinderThrowing(
        throwingCapability(IntentID::finderSearch, std::runtime_error("index at /Users/x broke")));
    EXPECT_EQ(errorOf(plain.outcome),
              UserFacingError("Couldn't complete that request.", en.helpHintRecovery, false));
    EXPECT_EQ(plain.standardError,
              "[Nuvrel] capability error hidden behind genericErrorMessage: index at /Users/x "
              "broke\n");

    auto typed = runFinderThrowing(
        throwingCapability(IntentID::finderSearch, llm::LLMError::invalidResponse("bad")));
    EXPECT_EQ(errorOf(typed.outcome).message, en.genericErrorMessage);
    EXPECT_EQ(typed.standardError, "[Nuvrel] capability error hidden behind genericErrorMessage: " +
                                       llm::LLMError::invalidResponse("bad").description() + "\n");
}

TEST(PipelineErrors, AStopRequestFromACapabilityIsCancelledNeverAnErrorCard) {
    auto stopped = runFinderThrowing(throwingCapability(IntentID::finderSearch, base::Cancelled()));
    EXPECT_TRUE(stopped.outcome.isCancelled());
    EXPECT_EQ(stopped.standardError, "");

    auto web = std::make_shared<FakeCapability>(IntentID::webSearch);
    web->planError = std::make_exception_ptr(base::Cancelled());
    auto fallback = pipelineWith({reply(routerReply(IntentID::unknown, 0.2))}, {web});
    EXPECT_TRUE(fallback.pipeline.run("who knows").isCancelled());
}

TEST(PipelineErrors, ALibraryThatDidNotLoadIsNamedAsAMissingTool) {
    auto missing = runFinderThrowing(throwingCapability(
        IntentID::finderSearch,
        base::SharedLibraryError(base::SharedLibraryError::Kind::libraryNotFound,
                                 "libtracker-sparql-3.0.so.0", "cannot open shared object file")));
    EXPECT_EQ(errorOf(missing.outcome).message,
              en.systemToolMissingMessage("libtracker-sparql-3.0.so.0"));
}

TEST(PipelineErrors, TheFallbackSearchPassesItsErrorsThroughUserFacing) {
    auto planFails = std::make_shared<FakeCapability>(IntentID::webSearch);
    planFails->planError = std::make_exception_ptr(UserFacingError("No engine"));
    auto made = pipelineWith({reply(routerReply(IntentID::unknown, 0.9))}, {planFails});
    EXPECT_EQ(errorOf(made.pipeline.run("anything")),
              UserFacingError("No engine", en.helpHintRecovery, false));
    EXPECT_TRUE(planFails->executed.empty());
}

// The fast paths and routed dispatch let a UserFacingError through exactly as thrown.
TEST(PipelineErrors, FastPathCallsKeepAUserFacingErrorAsThrown) {
    const nuvrel::test::RecordedDiagnostics recorded;
    const auto call = [&](auto body) {
        return outcomeOfCall(ErrorRule::userFacingAsThrown, en, recorded.diagnostics, body);
    };
    const auto bare =
        call([]() -> core::CapabilityResult { throw UserFacingError("No such note"); });
    ASSERT_TRUE(bare);
    EXPECT_EQ(errorOf(*bare), UserFacingError("No such note", std::nullopt, false));

    const auto other = call([]() -> core::CapabilityResult { throw 42; });
    EXPECT_EQ(recorded.sink->take(),
              "[Nuvrel] capability error hidden behind genericErrorMessage: unknown error\n");
    ASSERT_TRUE(other);
    EXPECT_EQ(errorOf(*other), UserFacingError(en.genericErrorMessage, en.helpHintRecovery, false));

    // Nothing found lets the cascade go on.
    EXPECT_FALSE(call([] { return std::optional<core::CapabilityResult>(); }));
    const auto found = call([] {
        return std::optional<core::CapabilityResult>(core::CapabilityResult::NoteSaved{"milk"});
    });
    ASSERT_TRUE(found && found->asResult());
    EXPECT_TRUE(found->asResult()->is<core::CapabilityResult::NoteSaved>());
    const auto stopped = call([]() -> core::CapabilityResult { throw base::Cancelled(); });
    ASSERT_TRUE(stopped);
    EXPECT_TRUE(stopped->isCancelled());
}

// --- Cancellation ---

TEST(PipelineCancellation, AStopDuringTheRouterCallEndsCancelled) {
    auto web = std::make_shared<FakeCapability>(IntentID::webSearch);
    const auto state = base::CancellationState::make();
    base::CancellationScope scope(state);

    // The call itself is interrupted, as a real client's would be: no retry.
    auto interrupted = pipelineWith({[&]() -> std::string {
                                        state->cancel();
                                        throw base::Cancelled();
                                    }},
                                    {web});
    EXPECT_TRUE(interrupted.pipeline.run("weather tomorrow").isCancelled());
    EXPECT_EQ(interrupted.backend->calls.size(), 1u);
    EXPECT_TRUE(web->planCalls.empty());
}

TEST(PipelineCancellation, AStopWhileTheModelAnsweredStillEndsCancelled) {
    auto web = std::make_shared<FakeCapability>(IntentID::webSearch);
    const auto state = base::CancellationState::make();
    base::CancellationScope scope(state);
    // Below the gate, so that routed dispatch cannot be the one that notices.
    auto answered = pipelineWith({[&] {
                                     state->cancel();
                                     return routerReply(IntentID::webSearch, 0.3);
                                 }},
                                 {web});
    EXPECT_TRUE(answered.pipeline.run("search cats").isCancelled());
    EXPECT_TRUE(web->executed.empty());
}

// --- The debug hook ---

std::string slotLinesOf(const std::string& routerAnswer, bool logging = true) {
    auto finder = std::make_shared<FakeCapability>(IntentID::finderSearch);
    auto made = pipelineWith({reply(routerAnswer), reply(routerAnswer)}, {finder});
    const nuvrel::test::RecordedDiagnostics recorded;
    made.pipeline.diagnostics = recorded.diagnostics;
    made.pipeline.debugSlotsLogging = logging;
    made.pipeline.run("find my taxes please");
    return recorded.sink->text();
}

TEST(PipelineDebugSlots, TheSlotLineIsWrittenOnlyWhenAsked) {
    const std::string answer =
        routerReply(IntentID::finderSearch, 0.85, {{"keyword", "taxes"}, {"file_type", "pdf"}});
    EXPECT_EQ(slotLinesOf(answer, false), "");
    EXPECT_EQ(slotLinesOf(answer),
              "[nuvrel-debug-slots] intent=finder.search confidence=0.85 "
              "slots={\"file_type\":\"pdf\",\"keyword\":\"taxes\"}\n");
    EXPECT_EQ(slotLinesOf(routerReply(IntentID::finderSearch, 1, {{"keyword", "taxes"}})),
              "[nuvrel-debug-slots] intent=finder.search confidence=1.0 "
              "slots={\"keyword\":\"taxes\"}\n");
    // Unusable output is logged as the empty intent it became.
    EXPECT_EQ(slotLinesOf("not json"),
              "[nuvrel-debug-slots] intent=system.unknown confidence=0.0 slots={}\n");
}

// --- Chains ---

TEST(PipelineChains, DecomposesWithThePipelinesLanguageAndSummaryModel) {
    Pipeline pipeline;
    EXPECT_FALSE(pipeline.decomposeIfChain("remind me to call Sam and then play jazz"));

    auto summarizer =
        std::make_shared<testing::ScriptedBackend>(std::vector<testing::ScriptedBackend::Step>{
            reply(R"({"steps":["remind me to call Sam","play jazz"]})")});
    pipeline.summarizer = summarizer;
    pipeline.language = core::AppLanguage::zh;
    const auto steps = pipeline.decomposeIfChain("remind me to call Sam and then play jazz");
    ASSERT_TRUE(steps);
    EXPECT_EQ(*steps, (std::vector<std::string>{"remind me to call Sam", "play jazz"}));
    ASSERT_EQ(summarizer->calls.size(), 1u);
    EXPECT_EQ(summarizer->calls[0].system, ChainDecomposer::systemPrompt(core::AppLanguage::zh));
}

}  // namespace
}  // namespace nuvrel::pipeline
