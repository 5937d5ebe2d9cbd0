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
#include "app/model_switch.h"
#include "app/models_command.h"
#include "base/http.h"
#include "base/main_queue.h"
#include "base/paths.h"
#include "llm/model_resolution.h"
#include "panel/autostart_entry.h"
#include "panel/desktop_color_scheme.h"
#include "panel/global_shortcuts_portal.h"
#include "panel/hotkey_combination.h"
#include "panel/model_installation.h"
#include "panel/panel_arguments.h"
#include "panel/panel_tray.h"
#include "panel/panel_window.h"
#include "panel/resident_child.h"
#include "panel/settings_window.h"
#include "panel/single_instance.h"
#include "panel/x11_hotkey.h"
#include "platform/linux/geoclue_location_provider.h"
#include "platform/linux/secret_service_keychain.h"
#include "platform/model_storage.h"

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

// A model switch from the settings window: the lazy runtime's router moves to the new file,
// or stays on the old one.
std::function<void(const std::string&)> modelSwitchHandler(
    std::shared_ptr<app::LazyLLMRuntime> runtime, std::shared_ptr<app::SettingsStoring> defaults,
    std::shared_ptr<base::HttpSession> session, const base::XdgPaths& paths,
    const base::Diagnostics& diagnostics) {
    const int port = routerPort();
    app::ModelSwitchEnvironment environment{
        paths.modelsDirectory(), llm::liveFileExists,
        [defaults, session, diagnostics, port](const std::filesystem::path& path) {
            return app::LLMRuntime::forModel(*defaults, path,
                                             llm::isInterimModel(path.filename().string()), session,
                                             diagnostics, port);
        },
        diagnostics};
    return [runtime, environment](const std::string& fileName) {
        app::performModelSwitch(fileName, runtime->get(), environment);
    };
}

// NUVREL_DEBUG_LATENCY: when the panel and a card are drawn, on standard error.
std::function<void(std::string_view)> latencyLog(const base::Diagnostics& diagnostics) {
    if (!environmentValue("NUVREL_DEBUG_LATENCY")) return nullptr;
    return [diagnostics](std::string_view line) { diagnostics.latency(line); };
}

void applySettingsDebugHooks(const std::function<SettingsWindow&()>& openSettings) {
    const auto first = environmentValue("NUVREL_DEBUG_SETTINGS_TAB");
    if (environmentValue("NUVREL_DEBUG_SHOW_SETTINGS") || first) {
        openSettings().showTab(
            settingsTabFromRawValue(first.value_or("")).value_or(SettingsTab::general));
    }
    if (auto second = environmentValue("NUVREL_DEBUG_SETTINGS_TAB2"); first && second) {
        if (const auto tab = settingsTabFromRawValue(*second))
            QTimer::singleShot(2000, [openSettings, tab] { openSettings().showTab(*tab); });
    }
    if (environmentValue("NUVREL_DEBUG_START_HOTKEY_RECORDING"))
        openSettings().startHotkeyRecording();
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
    const auto session = std::make_shared<base::HttpSession>();
    const app::LaunchSettings launch =
        app::liveLaunchSettings(defaults, session, routerPort(), false, diagnostics);
    app::AppState::Environment environment;
    environment.userDefaults = defaults;
    environment.keychain = launch.keychain;
    environment.preferredLanguages = app::preferredLanguagesFromEnvironment(environ);
    environment.debugLoggingEnabled = app::anyDebugVariableSet(environ);
    environment.diagnostics = diagnostics;
    if (auto lang = environmentValue("NUVREL_DEBUG_LANG"))
        environment.languageOverride = core::appLanguageFromRawValue(*lang);
    environment.defaultModelFileName = app::modelFileInUse(*defaults, paths.modelsDirectory())
                                           .value_or(std::string(llm::interimModelFileName));
    auto state = app::AppState::create(queue, environment);
    const auto runtime = launch.runtime;
    state->makePipeline = app::makePipelineFactory(launch);
    state->modelSwitchHandler = modelSwitchHandler(runtime, defaults, session, paths, diagnostics);
    DesktopColorScheme colorScheme;

    const bool debugShow = environmentValue("NUVREL_DEBUG_SHOW_PANEL").has_value();
    int status = 0;
    {
        PanelWindow panel(
            state, PanelEffects::live(),
            PanelWindow::Options{.keepOnFocusLoss = debugShow,
                                 .followPalette = true,
                                 .desktopPrefersDark = [&] { return colorScheme.prefersDark(); },
                                 .latencyLog = latencyLog(diagnostics)});
        window = &panel;
        colorScheme.onChanged = [&panel] { panel.desktopThemeChanged(); };
        // Made on first use: an idle panel carries no settings window.
        std::unique_ptr<SettingsWindow> settings;
        const auto openSettings = [&]() -> SettingsWindow& {
            if (!settings) {
                auto installation = std::make_shared<ModelInstallation>(
                    state, queue,
                    ModelInstallation::Environment{
                        .modelsDirectory = paths.modelsDirectory(),
                        .networkLog = launch.networkLog,
                        .download = {.session = session,
                                     .openStaging = platform::liveOpenStaging,
                                     .availableSpace = platform::liveAvailableSpace},
                        .diagnostics = diagnostics});
                settings = std::make_unique<SettingsWindow>(
                    state, SettingsWindow::Services{.networkLogFile = paths.networkActivityFile(),
                                                    .installation = std::move(installation),
                                                    .revealFile = PanelEffects::live().revealFile});
            }
            return *settings;
        };
        panel.onOpenSettings = [&] { openSettings().showTab(SettingsTab::general); };
        // Quit from the tray takes the one quit path: the children stop after the loop.
        PanelTray tray(state, {.open = [&panel] { panel.showPanel(); },
                               .settings = [&] { openSettings().showTab(SettingsTab::general); },
                               .quit = [] { QCoreApplication::quit(); }});
        panel.onStateChanged = [&settings, &tray] {
            if (settings) settings->refresh();
            tray.refreshTitles();
        };

        // The desktop's portal first; the X11 grab where there is none.
        GlobalShortcutsPortal portal(QDBusConnection::sessionBus(), diagnostics,
                                     [&panel] { panel.toggle(); });
        X11Hotkey hotkey(diagnostics, [&panel] { panel.toggle(); });
        bool grabbed = false;
        const auto grabOnX11 = [&] {
            if (grabbed || !hotkey.available()) return;
            grabbed = true;
            hotkey.registerCombination(state->hotkeyKeyCode(), state->hotkeyModifiers(), true);
            state->hotkeyChangeHandler = [&hotkey](std::uint32_t keyCode, std::uint32_t modifiers) {
                return hotkey.reregister(keyCode, modifiers);
            };
        };
        // A portal that refuses, now or after a change in the settings, leaves the X11 grab.
        portal.onRefused = grabOnX11;
        if (portal.available() && portal.bind(state->hotkeyKeyCode(), state->hotkeyModifiers())) {
            state->hotkeyChangeHandler = [&portal](std::uint32_t keyCode, std::uint32_t modifiers) {
                return portal.bind(keyCode, modifiers);
            };
        } else {
            grabOnX11();
        }
        if (hotkey.available()) {
            panel.onAboutToShow = [&hotkey] { hotkey.noteActiveWindow(); };
            panel.onDismissed = [&hotkey] { hotkey.restoreActiveWindow(); };
        }

        // The clipboard history is kept by the resident program's child, stopped with it.
        std::optional<ResidentChild> clipboardWatcher;
        std::error_code selfError;
        const auto self = std::filesystem::read_symlink("/proc/self/exe", selfError);
        if (const auto nuvrel = companionCommandLineProgram(self)) {
            clipboardWatcher.emplace(*nuvrel, std::vector<std::string>{"watch-clipboard"},
                                     diagnostics);
        } else {
            diagnostics.event("no nuvrel program beside nuvrel-panel: no clipboard history");
        }

        const QuitOnSignals quitOnSignals(signals);
        if (!arguments.background || arguments.toggle || debugShow || toggleArrived)
            panel.showPanel();
        if (auto query = environmentValue("NUVREL_DEBUG_QUERY")) {
            if (!panel.isVisible()) panel.showPanel();
            state->setQuery(*query);
            state->run(*query);
        }
        applySettingsDebugHooks(openSettings);
        if (auto delay = environmentValue("NUVREL_DEBUG_TOGGLE_AFTER_MS"))
            QTimer::singleShot(std::atoi(delay->c_str()), &panel, [&panel] { panel.toggle(); });

        status = QApplication::exec();
        panel.onStateChanged = nullptr;
        colorScheme.onChanged = nullptr;
        settings.reset();
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
