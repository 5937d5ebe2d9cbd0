#pragma once
// The single observable object of the interface: what the panel shows, the settings with
// their persistence, and the life of the one run that may be in progress.
//
// Threading. An AppState belongs to the main thread of the MainQueue it was created with,
// and every member is used there. A run's pipeline work happens on the run's own task; the
// task changes this state only through jobs on the main queue, and each job first checks
// that its run is still current (the state alive, runGeneration unchanged, and where it
// matters the task not cancelled). So the front end must keep the queue turning (its event
// loop, MainQueue::run or runUntil). onChange is called on the main thread after each
// published change.
//
// Waiting for an outcome, as a command-line front end does:
//     state->run(text);
//     queue.runUntil([&] { return state->isSettled(); });
// Every run ends settled: with its outcome shown, or idle when it was cancelled or had no
// pipeline, or superseded by a newer run that is waited for in turn.
//
// The queue must outlive the state. Destroying the state cancels its tasks and waits for
// them; do not drop the last reference from inside onChange.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/keychain_storing.h"
#include "app/phase.h"
#include "app/row_keyboard_actions.h"
#include "app/settings_storing.h"
#include "app/task_completion.h"
#include "base/diagnostics.h"
#include "base/main_queue.h"
#include "base/task.h"
#include "core/app_language.h"
#include "pipeline/pipeline_running.h"

namespace nuvrel::app {

// What the panel comes back to after a short trip elsewhere.
struct ReopenRestore {
    std::string query;
    std::string resultQuery;
    Phase phase;
};

class AppState : public std::enable_shared_from_this<AppState> {
public:
    struct Environment {
        std::shared_ptr<SettingsStoring> userDefaults{};  // required
        std::shared_ptr<KeychainStoring> keychain{};      // may be null
        // The system's preferred languages, most preferred first; used when "lang" is unset.
        std::vector<std::string> preferredLanguages{};
        // The model file that resolveModelPath picked; used when "modelFile" is unset.
        std::string defaultModelFileName{};
        // Set by the program when a NUVREL_DEBUG_ variable is present (anyDebugVariableSet).
        bool debugLoggingEnabled = false;
        // A language for this process only (a command-line choice); never stored.
        std::optional<core::AppLanguage> languageOverride{};
        base::Diagnostics diagnostics{};
    };

    using MakePipeline =
        std::function<std::shared_ptr<const pipeline::PipelineRunning>(core::AppLanguage)>;

    // Reads the settings from the defaults store and writes "onDevice".
    static std::shared_ptr<AppState> create(base::MainQueue& mainQueue, Environment environment);
    ~AppState();
    AppState(const AppState&) = delete;
    AppState& operator=(const AppState&) = delete;

    // Observable fields. Setters of persisted fields also write the defaults store.
    const Phase& phase() const { return phase_; }
    const std::string& query() const { return query_; }
    void setQuery(std::string text);
    core::AppLanguage lang() const { return lang_; }
    void setLang(core::AppLanguage language);
    bool isDark() const { return isDark_; }
    void setDark(bool dark);
    const std::string& selectedModelFileName() const { return selectedModelFileName_; }
    const std::vector<std::string>& availableModelFileNames() const {
        return availableModelFileNames_;
    }
    void setAvailableModelFileNames(std::vector<std::string> names);
    const std::optional<std::string>& modelInstallErrorMessage() const {
        return modelInstallErrorMessage_;
    }
    void setModelInstallErrorMessage(std::optional<std::string> message);
    bool isSwitchingModel() const { return isSwitchingModel_; }
    std::uint32_t hotkeyKeyCode() const { return hotkeyKeyCode_; }
    std::uint32_t hotkeyModifiers() const { return hotkeyModifiers_; }
    const std::string& searxngEndpointRaw() const { return searxngEndpointRaw_; }
    void setSearxngEndpointRaw(std::string endpoint);
    bool networkFeaturesEnabled() const { return networkFeaturesEnabled_; }
    void setNetworkFeaturesEnabled(bool enabled);
    bool memorySavingModeEnabled() const { return memorySavingModeEnabled_; }
    void setMemorySavingModeEnabled(bool enabled);
    bool modelUpdateCheckEnabled() const { return modelUpdateCheckEnabled_; }
    void setModelUpdateCheckEnabled(bool enabled);
    bool isInstallingModel() const { return isInstallingModel_; }
    void setInstallingModel(bool installing);
    const std::optional<std::string>& installingCuratedModelID() const {
        return installingCuratedModelID_;
    }
    void setInstallingCuratedModelID(std::optional<std::string> id);
    std::optional<double> installingCuratedModelProgress() const {
        return installingCuratedModelProgress_;
    }
    void setInstallingCuratedModelProgress(std::optional<double> progress);
    // From 0 to 1 while the first model downloads; explains an unavailable model meanwhile.
    std::optional<double> modelDownloadProgress() const { return modelDownloadProgress_; }
    void setModelDownloadProgress(std::optional<double> progress);
    // The query that the shown result belongs to.
    const std::string& resultQuery() const { return resultQuery_; }
    // Raised to tell the view that the panel opened.
    std::int64_t showToken() const { return showToken_; }
    void raiseShowToken();
    std::int64_t focusSearchFieldTick() const { return focusSearchFieldTick_; }
    void requestSearchFieldFocus();

    // Other fields.
    const std::shared_ptr<SettingsStoring>& userDefaults() const { return userDefaults_; }
    const std::shared_ptr<KeychainStoring>& keychain() const { return keychain_; }
    const std::optional<ReopenRestore>& pendingReopenRestore() const {
        return pendingReopenRestore_;
    }
    std::uint64_t runGeneration() const { return runGeneration_; }

    // Filled by the launch wiring; all are called on the main thread except
    // modelSwitchHandler, which runs on the switch's own task, may block, and throws on failure.
    MakePipeline makePipeline;
    std::function<bool(const std::string& path)> modelFileExists;
    std::function<void(const std::string& fileName)> modelSwitchHandler;
    std::function<void(const std::string& address)> quickLookHandler;
    std::function<bool(std::uint32_t keyCode, std::uint32_t modifiers)> hotkeyChangeHandler;
    std::function<void()> reopenPermissionsOnboardingHandler;
    // What the card on show wants the keyboard to do; cleared when a run starts.
    std::optional<RowKeyboardActions> activeRowActions;
    std::optional<std::chrono::steady_clock::time_point> panelHoldUntil;
    std::function<void()> onChange;

    // Run control.
    void run(std::string_view query);
    void cancelActiveRun();
    void reset();
    void captureResultForReopen();
    void prepareForReopen();
    // Return in the field: opens the selected row when the query is unchanged and the card
    // has one, else runs the field's text.
    void submitSearchOrActivateRow();
    // The confirming action of the outcome on show (the panel's confirm button or a row's
    // delete button): carries out the plan of a `confirm`, or row `row` of a delete
    // confirmation card, on a task of its own, and hands the outcome to `done` on the main
    // thread. The card stays on show. Nothing happens, and `done` is never called, when the
    // outcome asks for no confirmation or a newer run has started meanwhile. False when
    // nothing was started.
    bool confirmShown(std::size_t row, std::function<void(core::PipelineOutcome)> done);
    // The contacts that the shown draft's recipient names, looked up on a task of its own and
    // handed to `done` on the main thread (not called when a newer run started). False when
    // no message draft is on show.
    bool lookUpShownRecipients(std::function<void(std::vector<personal::ContactMatch>)> done);
    // The user's pick among them: the shown draft goes to its handle from now on.
    void chooseShownRecipient(const personal::ContactMatch& match);

    // Settings actions.
    void selectModel(const std::string& fileName);
    // Takes and stores the pair only when hotkeyChangeHandler accepts it; gives that answer.
    bool setHotkey(std::uint32_t keyCode, std::uint32_t modifiers);

    // True when nothing is pending on screen: idle, a result, or a chain whose every step has
    // ended.
    bool isSettled() const;
    // Run and model-switch tasks that have not ended yet, cancelled ones included. Each end
    // wakes the queue, so runUntil can wait for this to reach zero; a finished run's outcome
    // may then still be queued, and drain() hands it over (or drops it, if stale).
    std::size_t tasksInFlight();

private:
    struct TrackedTask {
        std::shared_ptr<TaskCompletion> completion;
        base::Task<void> task;
    };
    // What a run's task carries; the state itself only through a weak reference.
    struct RunContext {
        std::weak_ptr<AppState> state;
        base::MainQueue* queue = nullptr;
        std::uint64_t generation = 0;
        std::string query;
        core::AppLanguage language = core::AppLanguage::en;
        std::shared_ptr<const TaskCompletion> modelSwitch;  // to wait for, if one was in flight
        bool debugLogging = false;
        base::Diagnostics diagnostics{};
    };

    AppState(base::MainQueue& mainQueue, Environment environment);
    void loadSettings(const std::vector<std::string>& preferredLanguages,
                      const std::string& defaultModelFileName);
    void notify();
    void requireMainThread() const;
    TrackedTask startTracked(std::function<void()> body);
    void retireRunTask();
    void reapFinishedTasks();
    void finishModelSwitch(std::uint64_t switchGeneration, bool failed, const std::string& previous,
                           const std::string& fileName);

    // The run task's body and the steps it takes on the main thread (app_state_run.cpp).
    static void runTaskBody(const RunContext& run);
    static void runChain(const RunContext& run, const pipeline::PipelineRunning& pipeline,
                         const std::vector<std::string>& subQueries);
    bool isCurrent(const RunContext& run) const { return runGeneration_ == run.generation; }
    void publishResult(const RunContext& run, core::PipelineOutcome outcome, bool taskCancelled);

    base::MainQueue& queue_;
    const std::shared_ptr<SettingsStoring> userDefaults_;
    const std::shared_ptr<KeychainStoring> keychain_;
    const bool debugLoggingEnabled_;
    const base::Diagnostics diagnostics_;

    Phase phase_ = Phase::idle();
    std::string query_;
    core::AppLanguage lang_ = core::AppLanguage::en;
    bool isDark_ = false;
    std::string selectedModelFileName_;
    std::vector<std::string> availableModelFileNames_;
    std::optional<std::string> modelInstallErrorMessage_;
    bool isSwitchingModel_ = false;
    std::uint32_t hotkeyKeyCode_ = 0;
    std::uint32_t hotkeyModifiers_ = 0;
    std::string searxngEndpointRaw_;
    bool networkFeaturesEnabled_ = true;
    bool memorySavingModeEnabled_ = false;
    bool modelUpdateCheckEnabled_ = true;
    bool isInstallingModel_ = false;
    std::optional<std::string> installingCuratedModelID_;
    std::optional<double> installingCuratedModelProgress_;
    std::optional<double> modelDownloadProgress_;
    std::string resultQuery_;
    std::int64_t showToken_ = 0;
    std::int64_t focusSearchFieldTick_ = 0;

    std::optional<ReopenRestore> pendingReopenRestore_;
    std::uint64_t runGeneration_ = 0;
    std::uint64_t modelSwitchGeneration_ = 0;

    // The tasks reach the state only through a weak reference; destroying the state
    // cancels them and waits for each to end.
    std::optional<TrackedTask> runTask_;
    std::optional<TrackedTask> modelSwitchTask_;
    // Superseded or cancelled tasks, kept until they end so that the main thread never joins
    // a task that is still busy.
    std::vector<TrackedTask> retiredTasks_;
};

}  // namespace nuvrel::app
