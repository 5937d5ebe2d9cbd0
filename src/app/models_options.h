#pragma once
// The arguments of `nuvrel models` and its verbs.

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "core/app_language.h"

namespace nuvrel::app {

struct ModelsOptions {
    enum class Action { list, install, add, use, remove, checkUpdates, help };
    Action action = Action::list;
    // help: the verb whose help is asked for (list for `nuvrel models --help`).
    Action helpFor = Action::list;
    std::optional<core::AppLanguage> language;
    bool json = false;
    bool force = false;
    // install: a catalog name, an http(s) address or nothing (the recommended model);
    // add: a path; use, remove: a name.
    std::string target;
    std::optional<std::string> sha256;
    std::optional<std::string> asFileName;
};

struct ModelsUsageError {
    std::string message;
};

// `args` from "models" on.
std::variant<ModelsOptions, ModelsUsageError> parseModelsArguments(
    const std::vector<std::string>& args);

// The help text of `nuvrel models` or one of its verbs.
std::string modelsUsageText(ModelsOptions::Action action);

}  // namespace nuvrel::app
