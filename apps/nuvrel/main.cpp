// nuvrel: the command-line front end. Parses the arguments and hands over to the library.
#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <thread>

#include "app/app_state.h"
#include "app/command_line.h"
#include "app/debug_log.h"
#include "app/install_server_command.h"
#include "app/interface_language.h"
#include "app/json_settings_store.h"
#include "app/launch.h"
#include "app/lazy_llm_runtime.h"
#include "app/models_command.h"
#include "app/netlog_command.h"
#include "app/query_history.h"
#include "app/settings_catalog.h"
#include "app/settings_keys.h"
#include "app/shell_commands.h"
#include "app/terminal_session.h"
#include "base/http.h"
#include "base/paths.h"
#include "core/localized_strings.h"
#include "llm/model_resolution.h"
#include "platform/linux/clipboard_watcher.h"
#include "platform/linux/detached_timer_center.h"
#include "platform/linux/edit_line_reader.h"
#include "platform/linux/geoclue_location_provider.h"
#include "platform/linux/secret_service_keychain.h"

extern char** environ;

namespace {

using namespace nuvrel;

std::optional<std::string> environmentValue(const char* name) {
    const char* value = std::getenv(name);
    if (!value || !*value) return std::nullopt;
    return std::string(value);
}

// Ctrl-C and SIGTERM arrive on one watcher thread and are handed to the main queue, so that
// cancelling a run goes through the same run control as the panel's Escape. The watcher is
// joined before the queue and the session it uses go away; SIGUSR1 tells it to end.
class SignalWatcher {
public:
    SignalWatcher(const sigset_t& signals, base::MainQueue& queue, app::TerminalSession& session,
                  platform::EditLineReader* editor)
        : thread_([signals, &queue, &session, editor] { watch(signals, queue, session, editor); }) {
    }
    ~SignalWatcher() {
        pthread_kill(thread_.native_handle(), SIGUSR1);
        thread_.join();
    }
    SignalWatcher(const SignalWatcher&) = delete;
    SignalWatcher& operator=(const SignalWatcher&) = delete;

private:
    static void watch(sigset_t signals, base::MainQueue& queue, app::TerminalSession& session,
                      platform::EditLineReader* editor) {
        while (true) {
            int signal = 0;
            if (sigwait(&signals, &signal) != 0 || signal == SIGUSR1) return;
            // A blocking read of standard input cannot be woken otherwise: closing it ends
            // the read, and with it the interactive loop. The line editor has a wake-up of its
            // own, and needs the terminal open to put it back as it was.
            if (editor && editor->isReading())
                editor->interrupt();
            else if (session.isReadingInput())
                ::close(STDIN_FILENO);
            if (signal == SIGTERM) {
                queue.post([&session] { session.terminate(); });
            } else {
                queue.post([&session] { session.interrupt(); });
            }
        }
    }

    std::thread thread_;
};

// NUVREL_DEBUG_ROUTER_PORT lets a test run the program against a server on a port of its own.
int routerPort() {
    const auto value = environmentValue("NUVREL_DEBUG_ROUTER_PORT");
    const int port = value ? std::atoi(value->c_str()) : 0;
    return port > 0 && port < 65536 ? port : llm::routerServerPort;
}

}  // namespace

int main(int argc, char** argv) {
    // A pending timer: this program run again, detached, by the timer notification centre.
    if (argc > 1 && argv[1] == platform::timerHelperVerb) {
        return platform::runTimerHelper(
            std::vector<std::string>(argv + 2, argv + argc),
            base::XdgPaths::fromEnvironment().stateHome / "nuvrel" / "timers");
    }
    if (argc > 1 && argv[1] == std::string_view("watch-clipboard")) {
        return platform::runClipboardWatcher(base::XdgPaths::fromEnvironment().stateHome,
                                             base::Diagnostics(base::standardErrorSink()));
    }
    const auto parsed = app::parseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
    if (const auto* error = std::get_if<app::UsageError>(&parsed)) {
        std::cerr << "nuvrel: " << error->message << "\nTry 'nuvrel --help' for more.\n";
        return app::exitUsage;
    }
    app::CommandLine command = std::get<app::CommandLine>(parsed);
    if (command.verb == app::CommandLine::Verb::help) {
        std::cout << app::usageText();
        return app::exitResult;
    }
    if (command.verb == app::CommandLine::Verb::version) {
        std::cout << "nuvrel " NUVREL_VERSION "\n";
        return app::exitResult;
    }
    if (command.verb == app::CommandLine::Verb::installServer) {
        app::NetworkActivityLog log(std::chrono::system_clock::now,
                                    base::XdgPaths::fromEnvironment().networkActivityFile());
        return app::runInstallServerCommand(log, std::cout, std::cerr);
    }
    if (command.verb == app::CommandLine::Verb::netlog) {
        return app::runNetlogCommand(command.netlog, environ, std::cout);
    }
    if (command.verb == app::CommandLine::Verb::models) {
        return app::runLiveModelsCommand(command.models, environ, NUVREL_VERSION, routerPort(),
                                         std::cout, std::cerr);
    }
    if (auto status = app::runLiveShellCommand(command, environ, NUVREL_VERSION)) return *status;
    if (!command.options.language) {
        if (auto lang = environmentValue("NUVREL_DEBUG_LANG")) {
            command.options.language = core::appLanguageFromRawValue(*lang);
        }
    }
    if (auto query = environmentValue("NUVREL_DEBUG_QUERY");
        query && command.verb == app::CommandLine::Verb::interactive) {
        command.verb = app::CommandLine::Verb::ask;
        command.options.sentence = *query;
    }

    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);  // before any thread starts: all inherit it

    base::MainQueue queue;
    // The program's one sink of diagnostic lines: standard error.
    const base::Diagnostics diagnostics(base::standardErrorSink());
    const auto paths = base::XdgPaths::fromEnvironment();
    auto defaults = std::make_shared<app::JsonSettingsStore>(paths.settingsFile(), diagnostics);
    app::reportMistypedSettings(*defaults, diagnostics);
    const app::LaunchSettings launch =
        app::liveLaunchSettings(defaults, std::make_shared<base::HttpSession>(), routerPort(),
                                command.options.noNetwork, diagnostics);
    const auto runtime = launch.runtime;
    const auto makePipeline = app::makePipelineFactory(launch);
    if (command.verb == app::CommandLine::Verb::explain) {
        const auto language = app::interfaceLanguage(
            command.options.language, *defaults, app::preferredLanguagesFromEnvironment(environ));
        return app::runExplainCommand(command.options.sentence, command.options.json, language,
                                      makePipeline, std::cout);
    }

    app::AppState::Environment environment;
    environment.userDefaults = defaults;
    environment.preferredLanguages = app::preferredLanguagesFromEnvironment(environ);
    environment.debugLoggingEnabled = app::anyDebugVariableSet(environ);
    environment.diagnostics = diagnostics;
    environment.languageOverride = command.options.language;
    // The name alone, found without a line; as the resolution, the interim file when none is.
    environment.defaultModelFileName = app::modelFileInUse(*defaults, paths.modelsDirectory())
                                           .value_or(std::string(llm::interimModelFileName));
    auto state = app::AppState::create(queue, environment);
    state->makePipeline = makePipeline;

    app::TerminalSession session(queue, state, std::cout, command.options.json);
    session.noModelInstalled = [&paths] {
        return !app::modelFileInUse(app::JsonSettingsStore(paths.settingsFile()),
                                    paths.modelsDirectory());
    };
    const bool terminal = ::isatty(STDIN_FILENO) && ::isatty(STDOUT_FILENO);
    // Line editing and a history kept across runs, only for a person at a terminal.
    std::optional<app::QueryHistory> history;
    std::unique_ptr<platform::EditLineReader> editor;
    if (terminal && command.verb == app::CommandLine::Verb::interactive) {
        history.emplace(app::QueryHistory::fileIn(paths.stateHome), diagnostics);
        try {
            editor = std::make_unique<platform::EditLineReader>(
                std::string(core::LocalizedStrings::strings(state->lang()).placeholder) + "> ",
                history->entries());
        } catch (const std::exception& error) {
            diagnostics.event(std::string("line editing unavailable: ") + error.what());
        }
    }
    const SignalWatcher watcher(signals, queue, session, editor.get());

    session.setConfirmationPolicy({command.options.yes, terminal ? &std::cin : nullptr});
    int status = app::exitResult;
    if (command.verb == app::CommandLine::Verb::ask) {
        status = session.ask(command.options.sentence);
    } else if (editor) {
        status = session.interactive([&]() -> std::optional<std::string> {
            auto line = editor->readLine();
            if (line) history->add(*line);
            return line;
        });
        std::cout << '\n';
    } else {
        status = session.interactive(std::cin, terminal);
    }
    // The runs end first (their tasks may still be talking to the server), then the servers:
    // no child outlives the program.
    state->cancelActiveRun();
    queue.runUntil([&] { return state->tasksInFlight() == 0; });
    runtime->stopServers();
    return status;
}
