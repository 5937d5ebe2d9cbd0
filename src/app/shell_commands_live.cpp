// The live forms of `nuvrel settings`, `nuvrel key` and `nuvrel diagnostics`.

#include <unistd.h>

#include <iostream>

#include "app/command_line.h"
#include "app/interface_language.h"
#include "app/json_settings_store.h"
#include "app/launch.h"
#include "app/models_command.h"
#include "app/settings_command.h"
#include "app/settings_keys.h"
#include "app/shell_commands.h"
#include "base/paths.h"
#include "llm/model_resolution.h"
#include "platform/linux/secret_service_keychain.h"
#include "platform/posix/terminal_secret.h"

namespace nuvrel::app {

std::optional<int> runLiveShellCommand(const CommandLine& command, const char* const* environment,
                                       const std::string& appVersion) {
    using Verb = CommandLine::Verb;
    if (command.verb != Verb::settings && command.verb != Verb::key &&
        command.verb != Verb::diagnostics)
        return std::nullopt;
    const base::Diagnostics diagnostics(base::standardErrorSink());
    const auto paths = base::XdgPaths::fromEnvironment();
    JsonSettingsStore store(paths.settingsFile(), diagnostics);
    const auto& strings = core::LocalizedStrings::strings(interfaceLanguage(
        command.options.language, store, preferredLanguagesFromEnvironment(environment)));

    if (command.verb == Verb::settings)
        return runSettingsCommand(command.settings, store, strings, std::cout, std::cerr);
    if (command.verb == Verb::key) {
        platform::SecretServiceKeychain keychain(diagnostics);
        const auto read = [&strings] {
            if (::isatty(STDIN_FILENO))
                std::cerr << std::string(strings.searchTabFirecrawlPlaceholderEmpty) << ": "
                          << std::flush;
            return platform::readSecretLine();
        };
        return runKeyCommand(command.key, keychain, read, strings, std::cout, std::cerr);
    }
    // As the panel shows it: the saved choice, else what the router would load.
    const std::string selected =
        store.string(settingsKey::modelFile)
            .value_or(modelFileInUse(store, paths.modelsDirectory())
                          .value_or(std::string(llm::interimModelFileName)));
    const std::string report = DiagnosticsReport::assemble(
        strings, selected,
        liveDiagnosticsProbes(appVersion, std::make_shared<base::HttpSession>(),
                              std::make_shared<NetworkActivityLog>(std::chrono::system_clock::now,
                                                                   paths.networkActivityFile())),
        std::chrono::system_clock::now());
    std::cout << report << '\n';
    if (command.copyDiagnostics) {
        std::cerr << std::string(liveCopyToClipboard(report)
                                     ? strings.diagnosticsCopiedFeedback
                                     : strings.diagnosticsNoClipboardMessage)
                  << '\n';
    }
    return 0;
}

}  // namespace nuvrel::app
