// The panel on Qt's offscreen platform, driven by key presses as a user drives it, on the real
// pipeline (the calculator answers without a model).
#include "panel/panel_window.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <chrono>

#include "app/json_settings_store.h"
#include "app/launch.h"
#include "base/paths.h"
#include "support/temporary_home.h"

namespace nuvrel::panel {
namespace {

using namespace std::chrono_literals;

QApplication& application() {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static int argc = 1;
    static char name[] = "panel_tests";
    static char* argv[] = {name, nullptr};
    static auto* app = new QApplication(argc, argv);  // lives as long as the process
    return *app;
}

class PanelWindowTest : public testing::Test {
protected:
    QApplication& app = application();
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
        auto runtime = std::make_shared<app::LLMRuntime>(
            app::LLMRuntime::make(*defaults, std::make_shared<base::HttpSession>(), {}));
        created->makePipeline = app::makePipelineFactory(app::LaunchSettings{defaults, runtime, true});
        return created;
    }

    // Turns both loops until `done`, for at most ten seconds.
    bool waitUntil(const std::function<bool()>& done) {
        const auto deadline = std::chrono::steady_clock::now() + 10s;
        while (!done()) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            queue.drain();
            QApplication::processEvents(QEventLoop::AllEvents, 10);
        }
        return true;
    }

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
    EXPECT_EQ(panel.card()->plainText().toStdString(), "Calculator\nResult\n4");

    // Return on the unchanged query with no row selected runs it again; on a row, acts.
    press(Qt::Key_Return);
    EXPECT_TRUE(copied.empty());
    ASSERT_TRUE(waitUntil([&] { return state->phase().asResult() != nullptr; }));
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_EQ(copied, std::vector<std::string>{"4"});
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

}  // namespace
}  // namespace nuvrel::panel
