#include "app/debug_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/app_state.h"
#include "app/app_test_support.h"
#include "core/localized_strings.h"
#include "support/recording_sink.h"

namespace nuvrel::app {
namespace {

using core::CapabilityResult;
using core::PipelineOutcome;
using testing::HasSubstr;
using testing::Not;

core::MessageDraft draftToAlice() {
    return core::MessageDraft{.recipientQuery = "Alice Kim",
                              .resolvedName = "Alice Kimberly",
                              .channel = core::MessageDraft::Channel::sms,
                              .body = "meet me at noon"};
}

TEST(DebugLog, OnlyNuvrelDebugVariablesTurnItOn) {
    const char* none[] = {"HOME=/home/u", "NUVREL_DEBUGGER=1", "MY_NUVREL_DEBUG_QUERY=x", nullptr};
    const char* some[] = {"HOME=/home/u", "NUVREL_DEBUG_QUERY=weather", nullptr};
    EXPECT_FALSE(anyDebugVariableSet(none));
    EXPECT_TRUE(anyDebugVariableSet(some));
    EXPECT_FALSE(anyDebugVariableSet(nullptr));
}

TEST(DebugLog, MaskedFieldsKeepTheLengthAndNoneOfTheText) {
    EXPECT_EQ(maskedField("Alice"), "<masked:5>");
    EXPECT_EQ(maskedField("김철수"), "<masked:3>");
    EXPECT_EQ(maskedField(""), "<masked:0>");

    const auto line =
        describeOutcome(PipelineOutcome::confirm(draftToAlice()), core::AppLanguage::en);
    EXPECT_EQ(line,
              "confirm message.send channel=sms recipient=<masked:9> resolvedName=<masked:14> "
              "body=<masked:15>");
    const auto& en = core::LocalizedStrings::en();
    EXPECT_EQ(describeOutcome(
                  PipelineOutcome::error(core::UserFacingError(en.genericErrorMessage, {}, true)),
                  core::AppLanguage::en),
              "error message=genericErrorMessage retryable=true");
    EXPECT_EQ(
        describeOutcome(PipelineOutcome::error(core::UserFacingError("Could not open Alice.pdf")),
                        core::AppLanguage::en),
        "error message=<masked:24> retryable=false");
}

class RunDebugLog : public testing::Test {
protected:
    std::shared_ptr<AppState> makeState(bool debugLogging) {
        auto state = AppState::create(
            queue, {.userDefaults = std::make_shared<test::InMemorySettingsStore>(),
                    .debugLoggingEnabled = debugLogging,
                    .diagnostics = recorded.diagnostics});
        state->makePipeline = [scripted = pipeline](core::AppLanguage) { return scripted; };
        return state;
    }
    std::string runAndCapture(AppState& state, std::string_view query) {
        state.run(query);
        queue.runUntil([&] { return state.isSettled(); });
        return recorded.sink->take();
    }

    base::MainQueue queue;
    const nuvrel::test::RecordedDiagnostics recorded;
    std::shared_ptr<test::ScriptedPipeline> pipeline =
        std::make_shared<test::ScriptedPipeline>(queue);
};

TEST_F(RunDebugLog, OutcomesAndChainsAreLoggedWithoutPersonalText) {
    pipeline->reply("text Alice Kim meet me at noon", [](std::string_view) {
        return PipelineOutcome::result(CapabilityResult::MessageDraft{draftToAlice()});
    });
    pipeline->chain("text Alice Kim and then play jazz",
                    {"text Alice Kim meet me at noon", "play jazz"});
    auto state = makeState(true);

    const auto single = runAndCapture(*state, "text Alice Kim meet me at noon");
    EXPECT_EQ(single,
              "[nuvrel-debug] outcome: result messageDraft channel=sms recipient=<masked:9> "
              "resolvedName=<masked:14> body=<masked:15>\n");

    const auto chain = runAndCapture(*state, "text Alice Kim and then play jazz");
    EXPECT_THAT(chain, HasSubstr("[nuvrel-debug] chain step 1/2: result messageDraft"));
    EXPECT_THAT(chain, HasSubstr("[nuvrel-debug] chain step 2/2: result calculation\n"));
    for (const auto& output : {single, chain}) {
        EXPECT_THAT(output, Not(HasSubstr("Alice")));
        EXPECT_THAT(output, Not(HasSubstr("noon")));
        EXPECT_THAT(output, Not(HasSubstr("jazz")));
    }
}

TEST_F(RunDebugLog, NothingIsWrittenWhenNotEnabled) {
    pipeline->reply("text Alice", [](std::string_view) {
        return PipelineOutcome::result(CapabilityResult::MessageDraft{draftToAlice()});
    });
    auto state = makeState(false);
    EXPECT_EQ(runAndCapture(*state, "text Alice"), "");
}

}  // namespace
}  // namespace nuvrel::app
