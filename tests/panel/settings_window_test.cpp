// The settings window on Qt's offscreen platform, driven by keys and clicks: what it changes
// lands in the settings file that `nuvrel settings` reads, and what it refuses does not.
#include "panel/settings_window.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTreeWidget>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "app/json_settings_store.h"
#include "base/paths.h"
#include "support/offscreen_application.h"
#include "support/temporary_home.h"

namespace nuvrel::panel {
namespace {

class MemoryKeychain : public app::KeychainStoring {
public:
    std::optional<std::string> secret(std::string_view key) const override {
        const auto found = secrets.find(std::string(key));
        return found == secrets.end() ? std::nullopt : std::optional(found->second);
    }
    void setSecret(std::string_view key, std::optional<std::string> value) override {
        if (value) secrets[std::string(key)] = *value;
        if (!value) secrets.erase(std::string(key));
    }
    std::map<std::string, std::string> secrets{{"firecrawlAPIKey", "saved-key"}};
};

class SettingsWindowTest : public testing::Test {
protected:
    QApplication& app = test::offscreenApplication();
    test::TemporaryHome home;
    base::MainQueue queue;
    std::filesystem::path file = base::XdgPaths::fromEnvironment().settingsFile();
    std::shared_ptr<MemoryKeychain> keychain = std::make_shared<MemoryKeychain>();
    std::shared_ptr<app::AppState> state = makeState();
    SettingsWindow window{state, {}};

    void SetUp() override { window.showTab(SettingsTab::general); }

    std::shared_ptr<app::AppState> makeState() {
        auto defaults = std::make_shared<app::JsonSettingsStore>(file);
        defaults->set("searxngEndpoint", std::string("https://searx.example.org"));
        app::AppState::Environment environment;
        environment.userDefaults = defaults;
        environment.keychain = keychain;
        environment.preferredLanguages = {"en-US"};
        return app::AppState::create(queue, environment);
    }

    nlohmann::json stored() const { return nlohmann::json::parse(std::ifstream(file)); }

    template <class Widget>
    Widget* child(const char* name) {
        auto* found = window.findChild<Widget*>(name);
        if (!found) ADD_FAILURE() << name;
        return found;
    }

    // Typed over what the field held, then Return, which leaves the field as a focus change does.
    void enter(const char* field, const QString& text) {
        auto* edit = child<QLineEdit>(field);
        edit->selectAll();
        if (text.isEmpty()) edit->del();
        QTest::keyClicks(edit, text);
        QTest::keyClick(edit, Qt::Key_Return);
    }
};

TEST_F(SettingsWindowTest, GeneralChangesAndTheRecordedShortcutLandInTheSettingsFile) {
    QTest::keyClick(child<QCheckBox>("networkFeatures"), Qt::Key_Space);
    QTest::keyClick(child<QComboBox>("language"), Qt::Key_Down);
    EXPECT_EQ(stored()["networkFeaturesEnabled"], "0");
    EXPECT_EQ(stored()["lang"], "ko");
    state->setLang(core::AppLanguage::en);

    bool desktopAccepts = false;
    state->hotkeyChangeHandler = [&](std::uint32_t, std::uint32_t) { return desktopAccepts; };
    auto* button = child<QPushButton>("hotkey");
    auto* issue = child<QLabel>("hotkeyIssue");
    const struct {
        Qt::KeyboardModifiers modifiers;
        bool accepts;
        const char* issue;
        bool recording;
    } presses[] = {
        {Qt::NoModifier, true, "Include at least one modifier key (⌘⌥⌃⇧)", true},
        {Qt::ControlModifier | Qt::ShiftModifier, false,
         "Couldn't set that shortcut — it may already be in use", false},
        {Qt::ControlModifier | Qt::ShiftModifier, true, "", false},
    };
    for (const auto& press : presses) {
        if (button->text() != "Press the new shortcut…") QTest::mouseClick(button, Qt::LeftButton);
        desktopAccepts = press.accepts;
        QTest::keyClick(button, Qt::Key_K, press.modifiers);
        EXPECT_EQ(issue->text().toStdString(), press.issue);
        EXPECT_EQ(button->text() == "Press the new shortcut…", press.recording);
        EXPECT_EQ(stored().contains("hotkeyKeyCode"), press.accepts && !press.recording);
    }
    EXPECT_EQ(stored()["hotkeyKeyCode"], 40);            // K
    EXPECT_EQ(stored()["hotkeyModifiers"], 4096 + 512);  // Control and Shift
    EXPECT_EQ(button->text(), "Ctrl+Shift+K");
}

TEST_F(SettingsWindowTest, OnlyAUsableSearxngAddressIsStored) {
    const struct {
        QString typed;
        bool refused;
        const char* stored;
    } entries[] = {
        {"ftp://searx.example.net", true, "https://searx.example.org"},
        {"https://", true, "https://searx.example.org"},
        {" HTTPS://Searx.Example.net/ ", false, "HTTPS://Searx.Example.net/"},
        {"   ", false, ""},
    };
    auto* error = child<QLabel>("searxngEndpointError");
    for (const auto& entry : entries) {
        enter("searxngEndpoint", entry.typed);
        EXPECT_EQ(!error->isHidden(), entry.refused) << entry.typed.toStdString();
        EXPECT_EQ(stored()["searxngEndpoint"], entry.stored) << entry.typed.toStdString();
    }
    EXPECT_EQ(error->text(), "Enter a valid http:// or https:// address");
}

TEST_F(SettingsWindowTest, TheFirecrawlKeyChangesOnlyWhenTypedAndIsNeverShown) {
    auto* field = child<QLineEdit>("firecrawlAPIKey");
    QTest::keyClick(field, Qt::Key_Return);  // left untouched
    EXPECT_EQ(keychain->secret("firecrawlAPIKey"), "saved-key");
    enter("firecrawlAPIKey", "  new-key  ");
    EXPECT_EQ(keychain->secret("firecrawlAPIKey"), "new-key");
    EXPECT_TRUE(field->text().isEmpty());
    EXPECT_EQ(field->placeholderText(), "●●●● Saved");
    enter("firecrawlAPIKey", "   ");
    EXPECT_EQ(keychain->secret("firecrawlAPIKey"), std::nullopt);
    EXPECT_EQ(field->placeholderText(), "Paste your Firecrawl API key");
}

TEST_F(SettingsWindowTest, TheAboutTabNamesTheModelAndTheLicencesOfWhatShips) {
    window.showTab(settingsTabFromRawValue("credits").value());
    const auto* tabs = window.findChild<QTabWidget*>();
    EXPECT_EQ(tabs->tabText(tabs->currentIndex()), "About");
    QStringList labels;
    for (const auto* label : tabs->currentWidget()->findChildren<QLabel*>())
        labels << label->text();
    EXPECT_TRUE(labels.contains("Kestrune-nano is a fine-tune of Qwen3.5-0.8B-Base (Apache-2.0)"));
    const std::map<QString, QString> licences{{"llama.cpp (llama-server)", "MIT"},
                                              {"Qt 6", "LGPL-3.0-only"}};
    for (const auto& [component, licence] : licences) {
        const auto found =
            child<QTreeWidget>("openSourceNotices")->findItems(component, Qt::MatchExactly);
        ASSERT_EQ(found.size(), 1) << component.toStdString();
        EXPECT_EQ(found[0]->text(1), licence);
    }
}

}  // namespace
}  // namespace nuvrel::panel
