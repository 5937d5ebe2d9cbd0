#pragma once
// The arguments of the nuvrel program.

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "app/models_options.h"
#include "app/settings_command.h"
#include "core/app_language.h"

namespace nuvrel::app {

struct AskOptions {
    std::optional<core::AppLanguage> language;
    bool json = false;
    bool noNetwork = false;
    // Confirms what asks for confirmation without asking (for scripts).
    bool yes = false;
    std::string sentence;  // the words joined by one blank, NFC
};

struct NetlogOptions {
    std::optional<core::AppLanguage> language;
    bool json = false;
    std::size_t limit = 50;
};

struct CommandLine {
    enum class Verb {
        ask,
        interactive,
        netlog,
        installServer,
        help,
        version,
        models,
        explain,
        settings,
        key,
        diagnostics,
    };
    Verb verb = Verb::interactive;
    AskOptions
        options;  // ask and explain; interactive takes --lang, --json, --no-network and --yes too
    NetlogOptions netlog;
    ModelsOptions models;
    SettingsOptions settings;
    KeyOptions key;
    // diagnostics --copy: also put the report on the clipboard.
    bool copyDiagnostics = false;
};

struct UsageError {
    std::string message;
};

// `args` without the program name.
std::variant<CommandLine, UsageError> parseCommandLine(const std::vector<std::string>& args);

std::string usageText();

}  // namespace nuvrel::app
