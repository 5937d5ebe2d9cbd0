// The panel on Qt's offscreen platform, driven by key presses as a user drives it, on the real
// pipeline (the calculator answers without a model).
#include "panel/panel_window.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <chrono>
#include <mutex>

#include "app/json_settings_store.h"
#include "app/launch.h"
#include "app/lazy_llm_runtime.h"
#include "base/paths.h"
#include "support/offscreen_application.h"
#include "support/temporary_home.h"

namespace nuvrel::panel {
namespace {

using namespace std::chrono_literals;

class PanelWindowTest : public testing::Test {
protected:
    QApplication& app = test::offscreenApplication();
    test::TemporaryHome home;
    base::MainQueue queue;
    std::vector<std::string> copied, opened;
    std::shared_ptr<app::AppState> state = makeState();
    PanelWindow panel{state,
                      PanelEffects{.openFile = [this](auto& path) { opened.push_back(path); },
                                   .revealFile = [this](auto& path) { opened.push_back(path); },
                                   .openURL = [this](auto& url) { opened.push_back(url); },
                                   .copyText = [this](auto& text) { copied.push_back(text); }},
                      {.keepOnFocusLoss = false, .followPalette = true}};

    std::shared_ptr<app::AppState> makeState() {
        auto defaults = std::make_shared<app::JsonSettingsStore>(
            base::XdgPaths::fromEnvironment().settingsFile());
        app::AppState::Environment environment;
        environment.userDefaults = defaults;
        environment.languageOverride = core::AppLanguage::en;
        auto created = app::AppState::create(queue, environment);
        auto runtime = std::make_shared<app::LazyLLMRuntime>([defaults] {
            return app::LLMRuntime::make(*defaults, std::make_shared<base::HttpSession>(), {});
        });
        created->makePipeline =
            app::makePipelineFactory(app::LaunchSettings{defaults, runtime, true});
        return created;
    }

    bool waitUntil(const std::function<bool()>& done) { return test::turnLoopsUntil(queue, done); }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(panel.field(), static_cast<Qt::Key>(key), modifiers);
    }
};

TEST_F(PanelWindowTest, ASentenceTypedAndReturnedShowsItsCardAndItsRowsTakeTheKeys) {
    panel.showPanel();
    ASSERT_TRUE(waitUntil([&] { return panel.isVisible(); }));
    QTest::keyClicks(panel.field(), "2+2");
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return state->phase().asResult() != nullptr; }));
    ASSERT_NE(panel.card(), nullptr);
    EXPECT_EQ(panel.card()->plainText().toStdString(), "Calculator\nResult\n2 + 2 = 4");

    // Return on the unchanged query with no row selected runs it again; on a row, acts.
    press(Qt::Key_Return);
    EXPECT_TRUE(copied.empty());
    ASSERT_TRUE(waitUntil([&] { return state->phase().asResult() != nullptr; }));
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_EQ(copied, std::vector<std::string>{"2 + 2 = 4"});
    press(Qt::Key_Up);
    press(Qt::Key_C, Qt::ControlModifier);  // nothing selected: nothing copied
    EXPECT_EQ(copied.size(), 1u);

    // A focus loss hides the panel, and the next show brings the card back.
    panel.hidePanel();
    panel.showPanel();
    ASSERT_NE(panel.card(), nullptr);
    EXPECT_EQ(panel.field()->text(), "2+2");

    // Escape clears, a second Escape closes, and the panel then opens empty.
    press(Qt::Key_Escape);
    EXPECT_TRUE(panel.isVisible());
    EXPECT_TRUE(panel.field()->text().isEmpty());
    EXPECT_EQ(panel.card(), nullptr);
    press(Qt::Key_Escape);
    EXPECT_FALSE(panel.isVisible());
    panel.showPanel();
    EXPECT_EQ(panel.card(), nullptr);
}

TEST_F(PanelWindowTest, LosingFocusHidesUnlessAHoldLiesAhead) {
    QWidget elsewhere;
    for (const bool hold : {false, true}) {
        panel.showPanel();  // clears any hold
        ASSERT_TRUE(waitUntil([&] { return panel.isActiveWindow(); }));
        if (hold) state->panelHoldUntil = std::chrono::steady_clock::now() + 30s;
        elsewhere.show();
        elsewhere.activateWindow();
        ASSERT_TRUE(waitUntil([&] { return elsewhere.isActiveWindow(); }));
        EXPECT_EQ(panel.isVisible(), hold);
    }
}

// Notes to delete, and a three-step chain; a confirmed note row is deleted and recorded.
class ScriptedPipeline final : public pipeline::PipelineRunning {
public:
    core::PipelineOutcome run(std::string_view query) const override {
        if (query == "delete notes")
            return core::PipelineOutcome::result(
                core::CapabilityResult::NoteDeleteConfirmation{{{"alpha", "1"}, {"beta", "2"}}});
        return core::PipelineOutcome::result(
            core::CapabilityResult::Calculation{"=" + std::string(query)});
    }
    std::optional<std::vector<std::string>> decomposeIfChain(
        std::string_view query) const override {
        if (query != "x then y then z") return std::nullopt;
        return std::vector<std::string>{"x", "y", "z"};
    }
    std::optional<core::PipelineOutcome> carryOutConfirmed(const core::PipelineOutcome& shown,
                                                           std::size_t row) const override {
        const auto* notes = shown.asResult()->get<core::CapabilityResult::NoteDeleteConfirmation>();
        std::lock_guard lock(mutex);
        deleted.push_back(notes->notes.at(row).title);
        return core::PipelineOutcome::result(
            core::CapabilityResult::NoteDeleted{notes->notes.at(row).title});
    }
    mutable std::mutex mutex;
    mutable std::vector<std::string> deleted;
};

TEST_F(PanelWindowTest, AChosenRowIsConfirmedAloneAndAChainShowsEveryStep) {
    auto scripted = std::make_shared<ScriptedPipeline>();
    state->makePipeline = [scripted](core::AppLanguage) { return scripted; };
    panel.showPanel();
    QTest::keyClicks(panel.field(), "delete notes");
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return state->phase().asResult() != nullptr; }));
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Return);  // the second note only
    ASSERT_TRUE(waitUntil([&] { return panel.card()->plainText().contains("✓ beta"); }))
        << panel.card()->plainText().toStdString();
    {
        std::lock_guard lock(scripted->mutex);
        EXPECT_EQ(scripted->deleted, std::vector<std::string>{"beta"});
    }
    // A done row takes no second press: Return now asks again.
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return state->phase().asResult() != nullptr; }));
    {
        std::lock_guard lock(scripted->mutex);
        EXPECT_EQ(scripted->deleted.size(), 1u);
    }

    panel.field()->selectAll();
    QTest::keyClicks(panel.field(), "x then y then z");
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return state->isSettled() && state->phase().asChain(); }));
    EXPECT_EQ(panel.card()->plainText().toStdString(),
              "Multiple Actions\n3 actions done\n1. x\n=x\n2. y\n=y\n3. z\n=z");
}

}  // namespace
}  // namespace nuvrel::panel
