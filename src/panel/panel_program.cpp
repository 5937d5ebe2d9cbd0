#include "panel/panel_program.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <QApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <iostream>

#include "app/app_state.h"
#include "app/debug_log.h"
#include "app/json_settings_store.h"
#include "app/launch.h"
#include "app/lazy_llm_runtime.h"
#include "app/models_command.h"
#include "base/http.h"
#include "base/main_queue.h"
#include "base/paths.h"
#include "llm/model_resolution.h"
#include "panel/autostart_entry.h"
#include "panel/hotkey_combination.h"
#include "panel/panel_arguments.h"
#include "panel/panel_window.h"
#include "panel/single_instance.h"
#include "panel/x11_hotkey.h"
#include "platform/linux/geoclue_location_provider.h"
#include "platform/linux/secret_service_keychain.h"

extern char** environ;

namespace nuvrel::panel {

namespace {

std::optional<std::string> environmentValue(const char* name) {
    const char* value = std::getenv(name);
    if (!value || !*value) return std::nullopt;
    return std::string(value);
}

// Jobs for the main queue arrive from any thread; the Qt event loop runs them, one drain per
// burst of posts.
void pumpQueueFromEventLoop(base::MainQueue& queue) {
    auto pending = std::make_shared<std::atomic<bool>>(false);
    queue.setWakeListener([&queue, pending] {
        if (pending->exchange(true)) return;
        QMetaObject::invokeMethod(
            qApp,
            [&queue, pending] {
                pending->store(false);
                queue.drain();
            },
            Qt::QueuedConnection);
    });
}

// SIGTERM and Ctrl-C take the ordinary quit path, so that the servers are stopped.
class QuitOnSignals {
public:
    explicit QuitOnSignals(const sigset_t& signals)
        : fd_(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK)),
          notifier_(fd_, QSocketNotifier::Read) {
        QObject::connect(&notifier_, &QSocketNotifier::activated, [this] {
            signalfd_siginfo info{};
            while (::read(fd_, &info, sizeof info) == sizeof info) {
            }
            QCoreApplication::quit();
        });
    }
    ~QuitOnSignals() { ::close(fd_); }
    QuitOnSignals(const QuitOnSignals&) = delete;
    QuitOnSignals& operator=(const QuitOnSignals&) = delete;

private:
    int fd_;
    QSocketNotifier notifier_;
};

// NUVREL_DEBUG_ROUTER_PORT lets a test run the program against a server on a port of its own.
int routerPort() {
    const auto value = environmentValue("NUVREL_DEBUG_ROUTER_PORT");
    const int port = value ? std::atoi(value->c_str()) : 0;
    return port > 0 && port < 65536 ? port : llm::routerServerPort;
}

int installAutostart() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    try {
        if (error) throw std::filesystem::filesystem_error("/proc/self/exe", error);
        std::cout << installAutostartEntry(base::XdgPaths::fromEnvironment(), program).string()
                  << '\n';
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "nuvrel-panel: " << failure.what() << '\n';
        return 1;
    }
}

}  // namespace

int runPanelProgram(int argc, char** argv) {
    const auto parsed = parsePanelArguments(std::vector<std::string>(argv + 1, argv + argc));
    if (const auto* error = std::get_if<PanelUsageError>(&parsed)) {
        std::cerr << "nuvrel-panel: " << error->message << "\n\n" << panelUsageText();
        return 2;
    }
    const PanelArguments arguments = std::get<PanelArguments>(parsed);
    switch (arguments.verb) {
        case PanelArguments::Verb::help:
            std::cout << panelUsageText();
            return 0;
        case PanelArguments::Verb::version:
            std::cout << "nuvrel-panel " NUVREL_VERSION "\n";
            return 0;
        case PanelArguments::Verb::installAutostart:
            return installAutostart();
        case PanelArguments::Verb::run:
            break;
    }

    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);  // before any thread starts: all inherit it

    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setApplicationName("nuvrel-panel");
    QApplication::setDesktopFileName("nuvrel-panel");

    PanelWindow* window = nullptr;
    bool toggleArrived = false;
    SingleInstance instance(
        [&] {
            if (window) {
                window->toggle();
            } else {
                toggleArrived = true;
            }
        },
        [&] { return window && window->isVisible(); });
    const base::Diagnostics diagnostics(base::standardErrorSink());
    switch (instance.claim()) {
        case SingleInstance::Role::forwarded:
            return 0;
        case SingleInstance::Role::noBus:
            diagnostics.event("no session bus: nuvrel-panel --toggle cannot reach this panel");
            break;
        case SingleInstance::Role::primary:
            break;
    }

    base::MainQueue queue;
    pumpQueueFromEventLoop(queue);
    const auto paths = base::XdgPaths::fromEnvironment();
    auto defaults = std::make_shared<app::JsonSettingsStore>(paths.settingsFile(), diagnostics);
    app::AppState::Environment environment;
    environment.userDefaults = defaults;
    environment.preferredLanguages = app::preferredLanguagesFromEnvironment(environ);
    environment.debugLoggingEnabled = app::anyDebugVariableSet(environ);
    environment.diagnostics = diagnostics;
    if (auto lang = environmentValue("NUVREL_DEBUG_LANG"))
        environment.languageOverride = core::appLanguageFromRawValue(*lang);
    environment.defaultModelFileName = app::modelFileInUse(*defaults, paths.modelsDirectory())
                                           .value_or(std::string(llm::interimModelFileName));
    auto state = app::AppState::create(queue, environment);
    const app::LaunchSettings launch = app::liveLaunchSettings(
        defaults, std::make_shared<base::HttpSession>(), routerPort(), false, diagnostics);
    const auto runtime = launch.runtime;
    state->makePipeline = app::makePipelineFactory(launch);

    const bool debugShow = environmentValue("NUVREL_DEBUG_SHOW_PANEL").has_value();
    int status = 0;
    {
        PanelWindow panel(state, PanelEffects::live(),
                          PanelWindow::Options{.keepOnFocusLoss = debugShow});
        window = &panel;

        X11Hotkey hotkey(diagnostics, [&panel] { panel.toggle(); });
        if (hotkey.available()) {
            hotkey.registerCombination(state->hotkeyKeyCode(), state->hotkeyModifiers(), true);
            state->hotkeyChangeHandler = [&hotkey](std::uint32_t keyCode, std::uint32_t modifiers) {
                return hotkey.reregister(keyCode, modifiers);
            };
            panel.onAboutToShow = [&hotkey] { hotkey.noteActiveWindow(); };
            panel.onDismissed = [&hotkey] { hotkey.restoreActiveWindow(); };
        }

        const QuitOnSignals quitOnSignals(signals);
        if (!arguments.background || arguments.toggle || debugShow || toggleArrived)
            panel.showPanel();
        if (auto query = environmentValue("NUVREL_DEBUG_QUERY")) {
            if (!panel.isVisible()) panel.showPanel();
            state->setQuery(*query);
            state->run(*query);
        }
        if (auto delay = environmentValue("NUVREL_DEBUG_TOGGLE_AFTER_MS"))
            QTimer::singleShot(std::atoi(delay->c_str()), &panel, [&panel] { panel.toggle(); });

        status = QApplication::exec();
        panel.hide();
        state->hotkeyChangeHandler = nullptr;
        window = nullptr;
    }
    // The runs end first (their tasks may still be talking to the server), then the servers:
    // no child outlives the program.
    state->cancelActiveRun();
    queue.runUntil([&] { return state->tasksInFlight() == 0; });
    runtime->stopServers();
    return status;
}

}  // namespace nuvrel::panel
