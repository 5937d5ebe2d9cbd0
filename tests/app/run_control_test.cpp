#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

#include "app/app_state.h"
#include "app/app_test_support.h"
#include "app/settings_keys.h"
#include "core/localized_strings.h"

namespace nuvrel::app {
namespace {

using core::CapabilityResult;
using core::PipelineOutcome;
using core::UserFacingError;
using test::describe;
using Strings = std::vector<std::string>;

class RunControl : public testing::Test {
protected:
    RunControl() { state = makeState(); }
    ~RunControl() override {
        pipeline->openAllGates();
        state.reset();
    }

    std::shared_ptr<AppState> makeState(bool debugLogging = false) {
        auto made = AppState::create(queue, {.userDefaults = store,
                                             .preferredLanguages = {"en-US"},
                                             .debugLoggingEnabled = debugLogging});
        made->makePipeline = [scripted = pipeline](core::AppLanguage) { return scripted; };
        made->onChange = [this, raw = made.get()] { published.push_back(describe(raw->phase())); };
        return made;
    }

    void settle() {
        queue.runUntil([&] { return state->isSettled(); });
    }
    // Every task has ended and whatever it left on the queue has been handled.
    void finishAllTasks() {
        queue.runUntil([&] { return state->tasksInFlight() == 0; });
        queue.drain();
    }
    void waitUntilStarted(std::string_view query) {
        queue.runUntil([&] { return pipeline->hasStarted(query); });
    }

    base::MainQueue queue;
    std::shared_ptr<test::InMemorySettingsStore> store =
        std::make_shared<test::InMemorySettingsStore>();
    std::shared_ptr<test::ScriptedPipeline> pipeline =
        std::make_shared<test::ScriptedPipeline>(queue);
    std::shared_ptr<AppState> state;
    Strings published;
};

TEST_F(RunControl, TwoQuickSubmissionsShowOnlyTheSecondResult) {
    const auto firstGate = pipeline->hold("first");
    state->run("first");
    waitUntilStarted("first");
    state->run("  second\n");
    settle();
    EXPECT_EQ(describe(state->phase()), "result:second");
    EXPECT_EQ(state->resultQuery(), "second");

    // The first query's answer arrives after the second one was shown, and must not replace it.
    firstGate->open();
    finishAllTasks();
    EXPECT_EQ(pipeline->finished(), (Strings{"second", "first"}));
    EXPECT_EQ(describe(state->phase()), "result:second");
    EXPECT_EQ(published, (Strings{"thinking", "thinking", "result:second"}));
}

TEST_F(RunControl, EmptySubmissionAfterAResultClearsIt) {
    state->run("sum");
    settle();
    ASSERT_EQ(describe(state->phase()), "result:sum");

    state->run(" \n\t\u3000");
    EXPECT_TRUE(state->phase().is(Phase::Kind::idle));
    EXPECT_EQ(pipeline->started(), Strings{"sum"});
    EXPECT_EQ(published.back(), "idle");
}

TEST_F(RunControl, CancelActiveRunGoesIdleAndDropsTheLateOutcome) {
    const auto gate = pipeline->hold("slow");
    state->run("slow");
    waitUntilStarted("slow");
    state->cancelActiveRun();
    EXPECT_TRUE(state->phase().is(Phase::Kind::idle));

    gate->open();
    finishAllTasks();
    EXPECT_EQ(pipeline->finished(), Strings{"slow"});
    EXPECT_TRUE(state->phase().is(Phase::Kind::idle));
    EXPECT_EQ(published, (Strings{"thinking", "idle"}));
    EXPECT_FALSE(store->contains(settingsKey::hasCompletedFirstQuery));
}

TEST_F(RunControl, ACancelledOutcomeEndsIdle) {
    pipeline->reply("stopped", [](std::string_view) { return PipelineOutcome::cancelled(); });
    state->run("stopped");
    settle();
    EXPECT_EQ(published, (Strings{"thinking", "idle"}));
}

TEST_F(RunControl, ChainRunsEveryStepAndShowsAFailedStepInItsRow) {
    pipeline->chain("open notes and then call bob and then sum", {"open notes", "call bob", "sum"});
    pipeline->reply("call bob", [](std::string_view) {
        return PipelineOutcome::error(UserFacingError("no bob"));
    });
    state->run("open notes and then call bob and then sum");
    settle();

    EXPECT_EQ(pipeline->started(), (Strings{"open notes", "call bob", "sum"}));
    EXPECT_EQ(published, (Strings{"thinking", "chain:[…|…|…]", "chain:[open notes|…|…]",
                                  "chain:[open notes|error:no bob|…]",
                                  "chain:[open notes|error:no bob|sum]"}));
    const auto& steps = *state->phase().asChain();
    ASSERT_EQ(steps.size(), 3u);
    EXPECT_EQ(steps[1].id, 1);
    EXPECT_EQ(steps[1].subQuery, "call bob");
}

TEST_F(RunControl, AQueryDuringAModelSwitchStartsAfterTheSwitch) {
    std::mutex mutex;
    Strings events;
    const auto record = [&](std::string event) {
        std::lock_guard lock(mutex);
        events.push_back(std::move(event));
    };
    test::Gate switchGate;
    state->modelSwitchHandler = [&](const std::string& fileName) {
        record("switch to " + fileName);
        switchGate.wait();
        record("switched");
    };
    pipeline->reply("weather", [&](std::string_view) {
        record("run weather");
        return PipelineOutcome::result(CapabilityResult::Calculation{"sunny"});
    });

    state->selectModel("other.gguf");
    EXPECT_TRUE(state->isSwitchingModel());
    state->run("weather");

    // Give a run that does not wait every chance to start: drive the queue for a while with
    // the switch held. Only the absence of a call is observed here, nothing waits on the time.
    std::atomic<bool> windowOver{false};
    base::Task<void> timer([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        windowOver = true;
        queue.wake();
    });
    queue.runUntil([&] { return windowOver.load() || pipeline->hasStarted("weather"); });
    EXPECT_FALSE(pipeline->hasStarted("weather"));
    EXPECT_TRUE(state->phase().is(Phase::Kind::thinking));

    switchGate.open();
    settle();
    EXPECT_EQ(events, (Strings{"switch to other.gguf", "switched", "run weather"}));
    EXPECT_FALSE(state->isSwitchingModel());
    EXPECT_EQ(state->selectedModelFileName(), "other.gguf");
    EXPECT_EQ(describe(state->phase()), "result:sunny");
}

TEST_F(RunControl, ReturnActivatesTheSelectedRowOnlyForAnUnchangedQuery) {
    state->run("files report");
    settle();

    // Unchanged query, no card with rows: the query runs again.
    state->setQuery("files report");
    state->submitSearchOrActivateRow();
    settle();
    EXPECT_EQ(pipeline->started(), (Strings{"files report", "files report"}));

    int activations = 0;
    bool rowSelected = true;
    const auto publishRows = [&] {
        state->activeRowActions = RowKeyboardActions{.activateSelected = [&] {
            ++activations;
            return rowSelected;
        }};
    };
    publishRows();
    state->setQuery(" files report ");
    state->submitSearchOrActivateRow();
    EXPECT_EQ(activations, 1);
    EXPECT_EQ(pipeline->started().size(), 2u);
    EXPECT_TRUE(state->phase().is(Phase::Kind::result));

    // A card with rows but nothing selected: Return searches, and the run clears the rows.
    rowSelected = false;
    state->submitSearchOrActivateRow();
    EXPECT_EQ(activations, 2);
    EXPECT_FALSE(state->activeRowActions.has_value());
    settle();
    EXPECT_EQ(pipeline->started().size(), 3u);

    // A changed query searches without asking the card.
    publishRows();
    rowSelected = true;
    state->setQuery("files invoice");
    state->submitSearchOrActivateRow();
    settle();
    EXPECT_EQ(activations, 2);
    EXPECT_EQ(pipeline->started().back(), "files invoice");
}

TEST_F(RunControl, ModelUnavailableWhileDownloadingSaysHowFarTheDownloadIs) {
    const auto unavailable = [](core::AppLanguage language) {
        const auto& strings = core::LocalizedStrings::strings(language);
        return [&strings](std::string_view) {
            return PipelineOutcome::error(UserFacingError(strings.llmUnavailableMessage,
                                                          strings.llmUnavailableRecovery, true));
        };
    };
    pipeline->reply("route me", unavailable(core::AppLanguage::en));
    pipeline->reply("라우팅", unavailable(core::AppLanguage::ko));
    pipeline->reply(
        "broken", [](std::string_view) { return PipelineOutcome::error(UserFacingError("boom")); });

    state->run("route me");
    settle();
    const auto& en = core::LocalizedStrings::en();
    EXPECT_EQ(state->phase().asResult()->asError()->message, en.llmUnavailableMessage);

    state->setModelDownloadProgress(0.426);
    state->run("route me");
    settle();
    const auto* error = state->phase().asResult()->asError();
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->message, en.llmUnavailableDownloadingMessage(43));
    EXPECT_EQ(error->recoverySuggestion, std::nullopt);
    EXPECT_TRUE(error->retryable);

    state->run("broken");
    settle();
    EXPECT_EQ(state->phase().asResult()->asError()->message, "boom");

    state->setLang(core::AppLanguage::ko);
    state->setModelDownloadProgress(0.995);
    state->run("라우팅");
    settle();
    EXPECT_EQ(state->phase().asResult()->asError()->message,
              core::LocalizedStrings::ko().llmUnavailableDownloadingMessage(100));
}

TEST_F(RunControl, OnlyAResultThatDidSomethingMarksTheFirstQueryDone) {
    pipeline->reply("find nothing", [](std::string_view) {
        return PipelineOutcome::result(
            CapabilityResult::Empty{core::IntentID::finderSearch, "nothing"});
    });
    pipeline->reply("read calendar", [](std::string_view) {
        return PipelineOutcome::result(
            CapabilityResult::NeedsPermission{core::PermissionKind::calendar});
    });
    pipeline->reply("fail",
                    [](std::string_view) { return PipelineOutcome::error(UserFacingError("x")); });
    for (const char* query : {"find nothing", "read calendar", "fail"}) {
        state->run(query);
        settle();
        EXPECT_FALSE(store->contains(settingsKey::hasCompletedFirstQuery)) << query;
    }
    state->run("2+2");
    settle();
    EXPECT_EQ(store->string(settingsKey::hasCompletedFirstQuery), "1");
}

TEST_F(RunControl, WithoutAPipelineMakerARunEndsIdle) {
    state->makePipeline = nullptr;
    state->run("anything");
    EXPECT_TRUE(state->phase().is(Phase::Kind::idle));
    EXPECT_EQ(state->resultQuery(), "anything");

    state->makePipeline = [](core::AppLanguage) { return nullptr; };
    state->run("anything");
    settle();
    EXPECT_TRUE(state->phase().is(Phase::Kind::idle));
    EXPECT_TRUE(pipeline->started().empty());
}

TEST_F(RunControl, APanelReopenedAfterAResultComesBackWithIt) {
    state->run("sum");
    settle();
    state->setQuery("sum edited");
    state->captureResultForReopen();
    state->reset();
    ASSERT_TRUE(state->phase().is(Phase::Kind::idle));
    // reset() forgets the kept result too; capture again from the result.
    EXPECT_FALSE(state->pendingReopenRestore().has_value());

    state->run("sum");
    settle();
    state->setQuery("sum edited");
    state->captureResultForReopen();
    state->setQuery("");
    state->prepareForReopen();
    EXPECT_EQ(state->query(), "sum edited");
    EXPECT_EQ(state->resultQuery(), "sum");
    EXPECT_EQ(describe(state->phase()), "result:sum");
    EXPECT_FALSE(state->pendingReopenRestore().has_value());

    // A second reopen with nothing kept comes back empty.
    state->prepareForReopen();
    EXPECT_EQ(state->query(), "");
    EXPECT_TRUE(state->phase().is(Phase::Kind::idle));

    // Nothing is kept from a panel that was thinking.
    const auto gate = pipeline->hold("slow");
    state->run("slow");
    state->captureResultForReopen();
    EXPECT_FALSE(state->pendingReopenRestore().has_value());
    state->cancelActiveRun();
    gate->open();
}

}  // namespace
}  // namespace nuvrel::app
