#include "app/app_state.h"

#include <cassert>
#include <limits>
#include <utility>

#include "app/settings_keys.h"
#include "base/cancellation.h"
#include "base/diagnostics.h"
#include "base/text.h"

namespace nuvrel::app {

namespace {

// "1" and "0" are the only texts written; anything else reads as the default.
bool readTextFlag(const SettingsStoring& store, std::string_view key, bool fallback) {
    const auto text = store.string(key);
    if (text == "1") return true;
    if (text == "0") return false;
    return fallback;
}

void writeTextFlag(SettingsStoring& store, std::string_view key, bool on) {
    store.set(key, std::string(on ? "1" : "0"));
}

}  // namespace

std::shared_ptr<AppState> AppState::create(base::MainQueue& mainQueue, Environment environment) {
    return std::shared_ptr<AppState>(new AppState(mainQueue, std::move(environment)));
}

AppState::AppState(base::MainQueue& mainQueue, Environment environment)
    : queue_(mainQueue),
      userDefaults_(std::move(environment.userDefaults)),
      keychain_(std::move(environment.keychain)),
      debugLoggingEnabled_(environment.debugLoggingEnabled),
      diagnostics_(std::move(environment.diagnostics)) {
    assert(userDefaults_);
    loadSettings(environment.preferredLanguages, environment.defaultModelFileName);
    if (environment.languageOverride) lang_ = *environment.languageOverride;
    userDefaults_->set(settingsKey::onDevice, true);
}

AppState::~AppState() {
    // Cancel everything first, so that the joins below overlap instead of queueing.
    if (runTask_) runTask_->task.cancel();
    if (modelSwitchTask_) modelSwitchTask_->task.cancel();
    for (const auto& retired : retiredTasks_) retired.task.cancel();
}

void AppState::loadSettings(const std::vector<std::string>& preferredLanguages,
                            const std::string& defaultModelFileName) {
    const SettingsStoring& store = *userDefaults_;

    // Detection is not stored: the language follows the system until the user chooses one.
    const auto storedLanguage = store.string(settingsKey::lang);
    const auto language =
        storedLanguage ? core::appLanguageFromRawValue(*storedLanguage) : std::nullopt;
    lang_ = language.value_or(core::detectFromSystemLocale(preferredLanguages));

    isDark_ = store.string(settingsKey::appearance) == "dark";
    selectedModelFileName_ = store.string(settingsKey::modelFile).value_or(defaultModelFileName);

    // The pair is taken together or not at all: half a shortcut is no shortcut.
    constexpr std::int64_t largest = std::numeric_limits<std::uint32_t>::max();
    const auto keyCode = store.integer(settingsKey::hotkeyKeyCode);
    const auto modifiers = store.integer(settingsKey::hotkeyModifiers);
    if (keyCode && modifiers && *modifiers >= 1 && *modifiers <= largest && *keyCode >= 0 &&
        *keyCode <= largest) {
        hotkeyKeyCode_ = static_cast<std::uint32_t>(*keyCode);
        hotkeyModifiers_ = static_cast<std::uint32_t>(*modifiers);
    } else {
        hotkeyKeyCode_ = settingsKey::defaultHotkeyKeyCode;
        hotkeyModifiers_ = settingsKey::defaultHotkeyModifiers;
    }

    searxngEndpointRaw_ = store.string(settingsKey::searxngEndpoint).value_or("");
    networkFeaturesEnabled_ = readTextFlag(store, settingsKey::networkFeaturesEnabled, true);
    memorySavingModeEnabled_ = readTextFlag(store, settingsKey::memorySavingModeEnabled, false);
    modelUpdateCheckEnabled_ = readTextFlag(store, settingsKey::modelUpdateCheckEnabled, true);
}

void AppState::requireMainThread() const {
    assert(queue_.isMainThread());
}

void AppState::notify() {
    requireMainThread();
    // A copy, so that a handler may replace itself.
    if (auto callback = onChange) callback();
}

void AppState::setQuery(std::string text) {
    query_ = std::move(text);
    notify();
}

void AppState::setLang(core::AppLanguage language) {
    lang_ = language;
    userDefaults_->set(settingsKey::lang, std::string(core::rawValue(language)));
    notify();
}

void AppState::setDark(bool dark) {
    isDark_ = dark;
    userDefaults_->set(settingsKey::appearance, std::string(dark ? "dark" : "light"));
    notify();
}

void AppState::setAvailableModelFileNames(std::vector<std::string> names) {
    availableModelFileNames_ = std::move(names);
    notify();
}

void AppState::setModelInstallErrorMessage(std::optional<std::string> message) {
    modelInstallErrorMessage_ = std::move(message);
    notify();
}

void AppState::setSearxngEndpointRaw(std::string endpoint) {
    searxngEndpointRaw_ = std::move(endpoint);
    userDefaults_->set(settingsKey::searxngEndpoint, searxngEndpointRaw_);
    notify();
}

void AppState::setNetworkFeaturesEnabled(bool enabled) {
    networkFeaturesEnabled_ = enabled;
    writeTextFlag(*userDefaults_, settingsKey::networkFeaturesEnabled, enabled);
    notify();
}

void AppState::setMemorySavingModeEnabled(bool enabled) {
    memorySavingModeEnabled_ = enabled;
    writeTextFlag(*userDefaults_, settingsKey::memorySavingModeEnabled, enabled);
    notify();
}

void AppState::setModelUpdateCheckEnabled(bool enabled) {
    modelUpdateCheckEnabled_ = enabled;
    writeTextFlag(*userDefaults_, settingsKey::modelUpdateCheckEnabled, enabled);
    notify();
}

void AppState::setInstallingModel(bool installing) {
    isInstallingModel_ = installing;
    notify();
}

void AppState::setInstallingCuratedModelID(std::optional<std::string> id) {
    installingCuratedModelID_ = std::move(id);
    notify();
}

void AppState::setInstallingCuratedModelProgress(std::optional<double> progress) {
    installingCuratedModelProgress_ = progress;
    notify();
}

void AppState::setModelDownloadProgress(std::optional<double> progress) {
    modelDownloadProgress_ = progress;
    notify();
}

void AppState::raiseShowToken() {
    ++showToken_;
    notify();
}

void AppState::requestSearchFieldFocus() {
    ++focusSearchFieldTick_;
    notify();
}

void AppState::cancelActiveRun() {
    requireMainThread();
    retireRunTask();
    pendingReopenRestore_.reset();
    if (!phase_.is(Phase::Kind::idle)) {
        phase_ = Phase::idle();
        notify();
    }
}

void AppState::reset() {
    requireMainThread();
    retireRunTask();
    query_.clear();
    phase_ = Phase::idle();
    pendingReopenRestore_.reset();
    notify();
}

void AppState::captureResultForReopen() {
    requireMainThread();
    if (phase_.is(Phase::Kind::result) || phase_.is(Phase::Kind::chain)) {
        pendingReopenRestore_ = ReopenRestore{query_, resultQuery_, phase_};
    } else {
        pendingReopenRestore_.reset();
    }
}

void AppState::prepareForReopen() {
    requireMainThread();
    panelHoldUntil.reset();
    if (!pendingReopenRestore_) {
        reset();
        return;
    }
    ReopenRestore restore = std::move(*pendingReopenRestore_);
    pendingReopenRestore_.reset();
    query_ = std::move(restore.query);
    resultQuery_ = std::move(restore.resultQuery);
    phase_ = std::move(restore.phase);
    notify();
}

void AppState::submitSearchOrActivateRow() {
    requireMainThread();
    if (base::text::trim(query_) == resultQuery_ && activeRowActions &&
        activeRowActions->activateSelected && activeRowActions->activateSelected()) {
        return;
    }
    // A copy: run() sets query_ from its argument.
    run(std::string(query_));
}

void AppState::selectModel(const std::string& fileName) {
    requireMainThread();
    if (fileName == selectedModelFileName_) return;
    if (isInstallingModel_) {
        diagnostics_.event("selectModel(" + fileName + ") ignored — a model install is in flight");
        return;
    }
    std::string previous = selectedModelFileName_;
    selectedModelFileName_ = fileName;
    userDefaults_->set(settingsKey::modelFile, fileName);
    if (!modelSwitchHandler) {
        notify();
        return;
    }
    isSwitchingModel_ = true;
    const std::uint64_t switchGeneration = ++modelSwitchGeneration_;

    // Switches run one after another: two at once would fight over the one router server.
    std::shared_ptr<const TaskCompletion> earlier;
    if (modelSwitchTask_) {
        earlier = modelSwitchTask_->completion;
        retiredTasks_.push_back(std::move(*modelSwitchTask_));
        modelSwitchTask_.reset();
    }
    reapFinishedTasks();
    modelSwitchTask_.emplace(
        startTracked([weak = weak_from_this(), queue = &queue_, handler = modelSwitchHandler,
                      earlier, fileName, previous = std::move(previous), switchGeneration] {
            if (earlier) earlier->wait();
            bool failed = false;
            try {
                handler(fileName);
            } catch (...) {
                base::rethrowIfCancelled();
                failed = true;  // the handler logs its own failure
            }
            queue->runSync([&] {
                if (auto state = weak.lock())
                    state->finishModelSwitch(switchGeneration, failed, previous, fileName);
            });
        }));
    notify();
}

void AppState::finishModelSwitch(std::uint64_t switchGeneration, bool failed,
                                 const std::string& previous, const std::string& fileName) {
    // A failure always puts its previous name back, also when a later switch has started
    // meanwhile; that later switch, when it succeeds, names its own model again.
    const bool latest = switchGeneration == modelSwitchGeneration_;
    if (failed || latest) {
        selectedModelFileName_ = failed ? previous : fileName;
        userDefaults_->set(settingsKey::modelFile, selectedModelFileName_);
    }
    if (latest) isSwitchingModel_ = false;
    notify();
}

bool AppState::setHotkey(std::uint32_t keyCode, std::uint32_t modifiers) {
    requireMainThread();
    if (!hotkeyChangeHandler || !hotkeyChangeHandler(keyCode, modifiers)) return false;
    hotkeyKeyCode_ = keyCode;
    hotkeyModifiers_ = modifiers;
    userDefaults_->set(settingsKey::hotkeyKeyCode, static_cast<std::int64_t>(keyCode));
    userDefaults_->set(settingsKey::hotkeyModifiers, static_cast<std::int64_t>(modifiers));
    notify();
    return true;
}

bool AppState::isSettled() const {
    switch (phase_.kind()) {
        case Phase::Kind::idle:
        case Phase::Kind::result:
            return true;
        case Phase::Kind::thinking:
            return false;
        case Phase::Kind::chain:
            for (const auto& step : *phase_.asChain()) {
                if (!step.outcome) return false;
            }
            return true;
    }
    return true;
}

std::size_t AppState::tasksInFlight() {
    requireMainThread();
    reapFinishedTasks();
    std::size_t count = retiredTasks_.size();
    if (runTask_ && !runTask_->completion->isDone()) ++count;
    if (modelSwitchTask_ && !modelSwitchTask_->completion->isDone()) ++count;
    return count;
}

AppState::TrackedTask AppState::startTracked(std::function<void()> body) {
    auto completion = std::make_shared<TaskCompletion>();
    base::Task<void> task([completion, queue = &queue_, diagnostics = diagnostics_,
                           body = std::move(body)] {
        try {
            body();
        } catch (const base::Cancelled&) {
            // A stop request ends the task quietly; whoever cancelled it set the phase.
        } catch (const std::exception& error) {
            diagnostics.event(std::string("background task ended with an error: ") + error.what());
        }
        completion->markDone();
        queue->wake();
    });
    return TrackedTask{std::move(completion), std::move(task)};
}

void AppState::retireRunTask() {
    if (runTask_) {
        runTask_->task.cancel();
        retiredTasks_.push_back(std::move(*runTask_));
        runTask_.reset();
    }
    reapFinishedTasks();
}

void AppState::reapFinishedTasks() {
    // A task whose body has ended joins at once, so this never blocks for long.
    std::erase_if(retiredTasks_,
                  [](const TrackedTask& tracked) { return tracked.completion->isDone(); });
}

}  // namespace nuvrel::app
