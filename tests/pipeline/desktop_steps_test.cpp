#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/localized_strings.h"
#include "pipeline/pipeline.h"
#include "pipeline/pipeline_test_support.h"
#include "support/fake_window_system.h"
#include "support/result_case.h"

namespace nuvrel::pipeline {
namespace {

using core::CapabilityResult;
using core::IntentID;
using core::WindowAction;

const core::LocalizedStrings& en = core::LocalizedStrings::en();

TEST(DesktopSteps, SystemCommandsRunWithoutLiveFastPathsAndTheirErrorsGetARecovery) {
    auto made = testing::pipelineWith({});
    made.pipeline.liveFastPathsEnabled = false;
    std::vector<bool> muted;
    made.pipeline.systemCommands.setOutputMuted = [&](bool value) { muted.push_back(value); };
    EXPECT_EQ(
        test::caseOf<CapabilityResult::SystemCommandExecuted>(made.pipeline.run("음소거 해제해줘")),
        CapabilityResult::SystemCommandExecuted{core::SystemCommand::unmute});
    EXPECT_EQ(muted, std::vector<bool>{false});
    made.pipeline.systemCommands.lockScreen = [] { throw core::UserFacingError("no logind"); };
    const auto outcome = made.pipeline.run("Lock screen.");
    ASSERT_TRUE(outcome.asError());
    EXPECT_EQ(*outcome.asError(), core::UserFacingError("no logind", en.helpHintRecovery));
}

TEST(DesktopSteps, AWindowPhraseMovesAtOnceOnlyWithLiveFastPathsElseTheRouterDecides) {
    auto made = testing::pipelineWith({testing::reply(
        testing::routerReply(IntentID::windowManage, 0.9, {{"action", "topLeft"}}))});
    auto windows = std::make_shared<test::FakeWindows>(
        std::vector<desktop::Screen>{{{0, 0, 1000, 800}, {0, 0, 1000, 800}}});
    made.pipeline.windowSystem = windows;
    EXPECT_EQ(test::caseOf<CapabilityResult::WindowArranged>(made.pipeline.run("left half")),
              (CapabilityResult::WindowArranged{WindowAction::leftHalf, "Editor"}));
    made.pipeline.liveFastPathsEnabled = false;
    EXPECT_EQ(test::caseOf<CapabilityResult::WindowArranged>(made.pipeline.run("left half")),
              (CapabilityResult::WindowArranged{WindowAction::topLeftQuarter, "Editor"}));
    EXPECT_EQ(windows->sized, (desktop::Point{500, 400}));
}

}  // namespace
}  // namespace nuvrel::pipeline
