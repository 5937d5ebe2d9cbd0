// The desktop steps of the cascade and their routed intents: system commands, windows and
// applications; what acts, and what goes on to the router.
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
using Result = core::CapabilityResult;

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

class RecordingCatalog final : public desktop::ApplicationCatalog {
public:
    std::shared_ptr<const desktop::ApplicationIndex> index(core::AppLanguage) override {
        return index_;
    }
    void open(const desktop::InstalledApp& app) override { opened.push_back(app.displayName); }
    void openURL(const std::string& url) override { opened.push_back(url); }

    std::vector<std::string> opened;

private:
    std::shared_ptr<const desktop::ApplicationIndex> index_ =
        std::make_shared<desktop::ApplicationIndex>(
            std::vector<desktop::InstalledApp>{{"Firefox", "/apps/firefox.desktop", "파이어폭스"}});
};

TEST(DesktopSteps, LaunchesMatchesOpensAddressesAndLetsTheRestGoOn) {
    const struct {
        const char* query;
        std::optional<std::string> opened;  // nothing: the router answered
        const char* shown;
    } cases[] = {
        {"open firefox", "Firefox", "파이어폭스"},
        {"firefox", "Firefox", "파이어폭스"},
        {"open github.com", "https://github.com", "github.com"},
        {"open gimp", std::nullopt, ""},
        {"github.com", std::nullopt, ""},
        {"gimp", std::nullopt, ""},
    };
    for (const auto& c : cases) {
        auto web = std::make_shared<testing::FakeCapability>(IntentID::webSearch);
        auto made = testing::pipelineWith(
            {testing::reply(testing::routerReply(IntentID::webSearch, 0.9, {{"query", "x"}}))},
            {web});
        auto catalog = std::make_shared<RecordingCatalog>();
        made.pipeline.applications = catalog;
        made.pipeline.openURL = [&](std::string url) { catalog->openURL(url); };
        const auto outcome = made.pipeline.run(c.query);
        ASSERT_TRUE(outcome.asResult()) << c.query;
        if (c.opened) {
            EXPECT_EQ(catalog->opened, std::vector<std::string>{*c.opened}) << c.query;
            EXPECT_EQ(*outcome.asResult()->get<Result::AppLaunched>(),
                      Result::AppLaunched{c.shown});
        } else {
            EXPECT_TRUE(catalog->opened.empty()) << c.query;
            EXPECT_EQ(made.backend->calls.size(), 1u) << c.query;
        }
    }
}

TEST(DesktopSteps, ExplainNamesTheDesktopStepsAndOpensOrMovesNothing) {
    auto made = testing::pipelineWith({});
    auto catalog = std::make_shared<RecordingCatalog>();
    made.pipeline.applications = catalog;
    made.pipeline.openURL = [&](std::string url) { catalog->openURL(url); };
    auto windows = std::make_shared<test::FakeWindows>(
        std::vector<desktop::Screen>{{{0, 0, 1000, 800}, {0, 0, 1000, 800}}});
    made.pipeline.windowSystem = windows;
    for (const auto& [query, step, json] :
         {std::tuple{"open firefox", 6,
                     R"({"application":"Firefox","desktopFile":"/apps/firefox.desktop"})"},
          {"open github.com", 6, R"({"url":"https://github.com"})"},
          {"mute", 17, R"({"command":"mute"})"},
          {"left half", 19, R"({"action":"leftHalf"})"}}) {
        const CascadeClaim claim = made.pipeline.explain(query);
        EXPECT_EQ(claim.step, step) << query;
        EXPECT_EQ(claim.value.dump(), json) << query;
    }
    EXPECT_TRUE(catalog->opened.empty());
    EXPECT_EQ(windows->sized, std::nullopt);
}

TEST(DesktopSteps, ARoutedLaunchOpensOnlyAnInstalledApplication) {
    for (const auto& [name, opened] : {std::pair{"FireFox", true}, {"the gimp", false}}) {
        auto web = std::make_shared<testing::FakeCapability>(IntentID::webSearch);
        auto made = testing::pipelineWith(
            {testing::reply(testing::routerReply(IntentID::appLaunch, 0.9, {{"query", name}}))},
            {web});
        auto catalog = std::make_shared<RecordingCatalog>();
        made.pipeline.applications = catalog;
        const auto outcome = made.pipeline.run("please bring up the browser thing now");
        EXPECT_EQ(catalog->opened.size(), opened ? 1u : 0u) << name;
        EXPECT_EQ(outcome.asResult()->is<Result::WebAnswer>(), !opened) << name;
    }
}

}  // namespace
}  // namespace nuvrel::pipeline
