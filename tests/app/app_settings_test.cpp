#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "app/app_state.h"
#include "app/app_test_support.h"
#include "app/settings_keys.h"
#include "support/recording_sink.h"

namespace nuvrel::app {
namespace {

namespace key = settingsKey;

class AppSettings : public testing::Test {
protected:
    std::shared_ptr<AppState> load(std::vector<std::string> preferredLanguages = {"en-US"}) {
        return AppState::create(queue, {.userDefaults = store,
                                        .preferredLanguages = std::move(preferredLanguages),
                                        .defaultModelFileName = "resolved.gguf",
                                        .diagnostics = recorded.diagnostics});
    }

    base::MainQueue queue;
    const nuvrel::test::RecordedDiagnostics recorded;
    std::shared_ptr<test::InMemorySettingsStore> store =
        std::make_shared<test::InMemorySettingsStore>();
};

TEST_F(AppSettings, LanguageFollowsTheSystemUntilTheUserChooses) {
    auto state = load({"ko-KR", "en-US"});
    EXPECT_EQ(state->lang(), core::AppLanguage::ko);
    EXPECT_FALSE(store->contains(key::lang));

    // Choosing the detected language still records the choice.
    state->setLang(core::AppLanguage::ko);
    EXPECT_EQ(store->string(key::lang), "ko");
    EXPECT_EQ(load({"en-US"})->lang(), core::AppLanguage::ko);

    store->set(key::lang, "xx");
    EXPECT_EQ(load({"ja-JP"})->lang(), core::AppLanguage::ja);
    EXPECT_EQ(store->string(key::lang), "xx");
    store->set(key::lang, std::int64_t{2});
    EXPECT_EQ(load({"zh-Hans"})->lang(), core::AppLanguage::zh);
}

TEST_F(AppSettings, HotkeyPairIsUsedOnlyWhenBothValuesAreSound) {
    struct Case {
        std::optional<SettingValue> keyCode, modifiers;
        std::uint32_t expectedKeyCode, expectedModifiers;
    };
    constexpr std::int64_t largest = std::numeric_limits<std::uint32_t>::max();
    const std::vector<Case> cases = {
        {std::nullopt, std::nullopt, 49, 2048},
        {std::int64_t{36}, std::int64_t{0}, 49, 2048},
        {std::int64_t{36}, std::int64_t{256}, 36, 256},
        {std::int64_t{0}, std::int64_t{1}, 0, 1},
        {largest, largest, 4294967295u, 4294967295u},
        {std::int64_t{36}, largest + 1, 49, 2048},
        {largest + 1, std::int64_t{256}, 49, 2048},
        {std::int64_t{-1}, std::int64_t{256}, 49, 2048},
        {std::int64_t{36}, std::int64_t{-256}, 49, 2048},
        {std::int64_t{36}, std::nullopt, 49, 2048},
        {std::nullopt, std::int64_t{256}, 49, 2048},
        {std::int64_t{36}, std::string("256"), 49, 2048},
    };
    for (std::size_t index = 0; index < cases.size(); ++index) {
        const auto& testCase = cases[index];
        store->remove(key::hotkeyKeyCode);
        store->remove(key::hotkeyModifiers);
        if (testCase.keyCode) store->set(key::hotkeyKeyCode, *testCase.keyCode);
        if (testCase.modifiers) store->set(key::hotkeyModifiers, *testCase.modifiers);
        const auto state = load();
        EXPECT_EQ(state->hotkeyKeyCode(), testCase.expectedKeyCode) << "case " << index;
        EXPECT_EQ(state->hotkeyModifiers(), testCase.expectedModifiers) << "case " << index;
    }
}

TEST_F(AppSettings, TextFlagsReadTheirDefaultsAndRoundTripAsOneAndZero) {
    {
        auto state = load();
        EXPECT_TRUE(state->networkFeaturesEnabled());
        EXPECT_FALSE(state->memorySavingModeEnabled());
        EXPECT_TRUE(state->modelUpdateCheckEnabled());
        EXPECT_FALSE(state->isDark());
        EXPECT_EQ(state->searxngEndpointRaw(), "");
        EXPECT_EQ(state->selectedModelFileName(), "resolved.gguf");
        EXPECT_EQ(store->boolean(key::onDevice), true);

        state->setNetworkFeaturesEnabled(false);
        state->setMemorySavingModeEnabled(true);
        state->setModelUpdateCheckEnabled(false);
        state->setDark(true);
        state->setSearxngEndpointRaw("https://search.example");
    }
    EXPECT_EQ(store->string(key::networkFeaturesEnabled), "0");
    EXPECT_EQ(store->string(key::memorySavingModeEnabled), "1");
    EXPECT_EQ(store->string(key::modelUpdateCheckEnabled), "0");
    EXPECT_EQ(store->string(key::appearance), "dark");

    auto reloaded = load();
    EXPECT_FALSE(reloaded->networkFeaturesEnabled());
    EXPECT_TRUE(reloaded->memorySavingModeEnabled());
    EXPECT_FALSE(reloaded->modelUpdateCheckEnabled());
    EXPECT_TRUE(reloaded->isDark());
    EXPECT_EQ(reloaded->searxngEndpointRaw(), "https://search.example");

    // Values of another form than "1"/"0" fall back to the defaults.
    store->set(key::networkFeaturesEnabled, false);
    store->set(key::memorySavingModeEnabled, "yes");
    store->set(key::appearance, "Dark");
    reloaded = load();
    EXPECT_TRUE(reloaded->networkFeaturesEnabled());
    EXPECT_FALSE(reloaded->memorySavingModeEnabled());
    EXPECT_FALSE(reloaded->isDark());
}

TEST_F(AppSettings, SetHotkeyTakesThePairOnlyWhenTheHandlerAccepts) {
    auto state = load();
    EXPECT_FALSE(state->setHotkey(36, 256));  // no handler yet

    std::vector<std::pair<std::uint32_t, std::uint32_t>> asked;
    bool accept = false;
    state->hotkeyChangeHandler = [&](std::uint32_t keyCode, std::uint32_t modifiers) {
        asked.emplace_back(keyCode, modifiers);
        return accept;
    };
    EXPECT_FALSE(state->setHotkey(36, 256));
    EXPECT_EQ(state->hotkeyKeyCode(), 49u);
    EXPECT_FALSE(store->contains(key::hotkeyKeyCode));

    accept = true;
    EXPECT_TRUE(state->setHotkey(36, 4096));
    EXPECT_EQ(asked.size(), 2u);
    EXPECT_EQ(store->integer(key::hotkeyKeyCode), 36);
    EXPECT_EQ(store->integer(key::hotkeyModifiers), 4096);
    const auto reloaded = load();
    EXPECT_EQ(reloaded->hotkeyKeyCode(), 36u);
    EXPECT_EQ(reloaded->hotkeyModifiers(), 4096u);
}

TEST_F(AppSettings, SelectModelIsIgnoredDuringAnInstallAndRollsBackAFailedSwitch) {
    auto state = load();
    int switches = 0;
    bool failSwitch = true;
    state->modelSwitchHandler = [&](const std::string&) {
        ++switches;
        if (failSwitch) throw std::runtime_error("server did not start");
    };

    state->setInstallingModel(true);
    state->selectModel("big.gguf");
    EXPECT_EQ(recorded.sink->take(),
              "[Nuvrel] selectModel(big.gguf) ignored — a model install is in flight\n");
    EXPECT_EQ(state->selectedModelFileName(), "resolved.gguf");
    state->setInstallingModel(false);

    state->selectModel("resolved.gguf");  // already selected
    EXPECT_FALSE(state->isSwitchingModel());

    state->selectModel("big.gguf");
    EXPECT_TRUE(state->isSwitchingModel());
    EXPECT_EQ(state->selectedModelFileName(), "big.gguf");
    EXPECT_EQ(store->string(key::modelFile), "big.gguf");
    queue.runUntil([&] { return !state->isSwitchingModel(); });
    EXPECT_EQ(state->selectedModelFileName(), "resolved.gguf");
    EXPECT_EQ(store->string(key::modelFile), "resolved.gguf");

    failSwitch = false;
    state->selectModel("big.gguf");
    queue.runUntil([&] { return !state->isSwitchingModel(); });
    EXPECT_EQ(state->selectedModelFileName(), "big.gguf");
    EXPECT_EQ(load()->selectedModelFileName(), "big.gguf");
    EXPECT_EQ(switches, 2);
}

TEST_F(AppSettings, SwitchesRequestedBackToBackRunInOrderAndTheLastNameStays) {
    auto state = load();
    std::mutex mutex;
    std::vector<std::string> order;
    test::Gate firstGate;
    state->modelSwitchHandler = [&](const std::string& fileName) {
        if (fileName == "a.gguf") firstGate.wait();
        std::lock_guard lock(mutex);
        order.push_back(fileName);
    };
    state->selectModel("a.gguf");
    state->selectModel("b.gguf");
    firstGate.open();
    queue.runUntil([&] { return state->tasksInFlight() == 0; });
    EXPECT_EQ(order, (std::vector<std::string>{"a.gguf", "b.gguf"}));
    EXPECT_FALSE(state->isSwitchingModel());
    EXPECT_EQ(state->selectedModelFileName(), "b.gguf");
}

TEST_F(AppSettings, AFailedSwitchRestoresItsPreviousNameEvenUnderALaterOne) {
    auto state = load();
    test::Gate firstGate;
    state->modelSwitchHandler = [&](const std::string& fileName) {
        if (fileName != "a.gguf") return;
        firstGate.wait();
        throw std::runtime_error("server did not start");
    };
    state->selectModel("a.gguf");
    state->selectModel("b.gguf");
    firstGate.open();
    std::vector<std::string> shown;
    queue.runUntil([&] {
        if (shown.empty() || shown.back() != state->selectedModelFileName())
            shown.push_back(state->selectedModelFileName());
        return state->tasksInFlight() == 0;
    });
    EXPECT_NE(std::find(shown.begin(), shown.end(), "resolved.gguf"), shown.end())
        << "the failed switch did not put its previous name back";
    EXPECT_EQ(state->selectedModelFileName(), "b.gguf");
    EXPECT_EQ(store->string(key::modelFile), "b.gguf");
    EXPECT_FALSE(state->isSwitchingModel());
}

}  // namespace
}  // namespace nuvrel::app
