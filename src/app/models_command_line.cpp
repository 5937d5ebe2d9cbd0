#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>

#include "app/models_options.h"

namespace nuvrel::app {

namespace {

using Action = ModelsOptions::Action;

constexpr std::pair<std::string_view, Action> verbs[] = {
    {"list", Action::list}, {"install", Action::install}, {"add", Action::add},
    {"use", Action::use},   {"remove", Action::remove},   {"check-updates", Action::checkUpdates},
};

bool isHexDigest(const std::string& text) {
    return text.size() == 64 && std::all_of(text.begin(), text.end(),
                                            [](unsigned char c) { return std::isxdigit(c) != 0; });
}

}  // namespace

std::variant<ModelsOptions, ModelsUsageError> parseModelsArguments(
    const std::vector<std::string>& args) {
    ModelsOptions options;
    std::size_t i = 1;
    if (i < args.size() && !args[i].starts_with("-")) {
        const auto verb = std::find_if(std::begin(verbs), std::end(verbs),
                                       [&](const auto& entry) { return entry.first == args[i]; });
        if (verb == std::end(verbs))
            return ModelsUsageError{"models has no verb \"" + args[i] + "\""};
        options.action = verb->second;
        ++i;
    }
    std::vector<std::string> positional;
    for (; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const auto value = [&](std::string_view name) -> std::optional<std::string> {
            if (arg.size() > name.size() && arg[name.size()] == '=')
                return arg.substr(name.size() + 1);
            if (i + 1 < args.size()) return args[++i];
            return std::nullopt;
        };
        const auto named = [&](std::string_view name) {
            return arg == name ||
                   (arg.starts_with(name) && arg.size() > name.size() && arg[name.size()] == '=');
        };
        if (arg == "--help" || arg == "-h") {
            options.helpFor = options.action;
            options.action = Action::help;
            return options;
        } else if (arg == "--json") {
            options.json = true;
        } else if (arg == "--force" && options.action == Action::remove) {
            options.force = true;
        } else if (named("--lang")) {
            const auto language = value("--lang");
            options.language = language ? core::appLanguageFromRawValue(*language) : std::nullopt;
            if (!options.language) return ModelsUsageError{"--lang takes en, ko, zh or ja"};
        } else if (named("--sha256") && options.action == Action::install) {
            options.sha256 = value("--sha256");
            if (!options.sha256 || !isHexDigest(*options.sha256))
                return ModelsUsageError{"--sha256 takes the file's 64 hexadecimal digits"};
        } else if (named("--as") && options.action == Action::install) {
            options.asFileName = value("--as");
            if (!options.asFileName || options.asFileName->empty() ||
                options.asFileName->find('/') != std::string::npos || *options.asFileName == "." ||
                *options.asFileName == "..")
                return ModelsUsageError{"--as takes a file name such as my-model.gguf"};
        } else if (arg.starts_with("-") && arg != "-") {
            return ModelsUsageError{"models does not take \"" + arg + "\" here"};
        } else {
            positional.push_back(arg);
        }
    }
    const bool takesTarget = options.action == Action::install || options.action == Action::add ||
                             options.action == Action::use || options.action == Action::remove;
    if (positional.size() > (takesTarget ? 1u : 0u))
        return ModelsUsageError{"models: one name at most, not \"" + positional.back() + "\""};
    if (!positional.empty()) options.target = positional.front();
    const bool isAddress =
        options.target.starts_with("http://") || options.target.starts_with("https://");
    if (options.action == Action::install && isAddress && !options.sha256)
        return ModelsUsageError{"installing from an address needs --sha256 HEX"};
    if (options.action == Action::install && !isAddress && options.asFileName)
        return ModelsUsageError{
            "--as goes with an address: models install URL --sha256 HEX --as FILE"};
    if (options.target.empty() && (options.action == Action::add || options.action == Action::use ||
                                   options.action == Action::remove))
        return ModelsUsageError{"this verb needs a name: see nuvrel models --help"};
    return options;
}

std::string modelsUsageText(Action action) {
    switch (action) {
        case Action::install:
            return R"(Usage: nuvrel models install [NAME] [--json]
       nuvrel models install URL --sha256 HEX [--as FILE.gguf] [--json]

Downloads a model into the models folder. Without a name: the model recommended for this
computer's memory. NAME is a catalog name from `nuvrel models` (or an offered update's file).
A URL installs any GGUF file; its SHA-256 is checked before the file goes into place, and
--as gives it another file name. A progress bar shows on a terminal; Ctrl-C stops and keeps
what arrived, and the same command resumes from there. The setting "modelMirror" (a base
URL) replaces the host of the catalog's addresses.
)";
        case Action::add:
            return R"(Usage: nuvrel models add PATH [--json]

Copies a GGUF model file that is already on this computer into the models folder.
)";
        case Action::use:
            return R"(Usage: nuvrel models use NAME

Switches to an installed model: its server is started to check that it loads; if it does
not, the previous model stays in use.
)";
        case Action::remove:
            return R"(Usage: nuvrel models remove NAME [--force]

Deletes an installed model file. The model in use is kept unless --force is given.
)";
        case Action::checkUpdates:
            return R"(Usage: nuvrel models check-updates [--json]

Asks whether a newer router model is out. An offer is shown by `nuvrel models` until it is
installed.
)";
        default:
            return R"(Usage: nuvrel models [list] [--json] [--lang en|ko|zh|ja]
       nuvrel models install [NAME | URL --sha256 HEX [--as FILE.gguf]] [--json]
       nuvrel models add PATH
       nuvrel models use NAME
       nuvrel models remove NAME [--force]
       nuvrel models check-updates [--json]

Lists the catalog's models and the installed files: size, role, whether installed, which one
is in use and which one suits this computer. `nuvrel models <verb> --help` tells more.
)";
    }
}

}  // namespace nuvrel::app
