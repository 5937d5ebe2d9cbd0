#include "app/command_line.h"

#include <charconv>
#include <string_view>

#include "base/text.h"

namespace nuvrel::app {

namespace {

// "--name value" or "--name=value".
bool isOption(const std::string& arg, std::string_view name) {
    return arg == name ||
           (arg.starts_with(name) && arg.size() > name.size() && arg[name.size()] == '=');
}

// The value of the option at args[i]; moves i past a separate value.
std::optional<std::string> optionValue(const std::vector<std::string>& args, std::size_t& i) {
    const std::string& arg = args[i];
    if (const auto equals = arg.find('='); equals != std::string::npos)
        return arg.substr(equals + 1);
    if (i + 1 == args.size()) return std::nullopt;
    return args[++i];
}

std::optional<UsageError> parseLanguage(const std::vector<std::string>& args, std::size_t& i,
                                        std::optional<core::AppLanguage>& language) {
    const auto value = optionValue(args, i);
    if (!value) return UsageError{"--lang needs a value: en, ko, zh or ja"};
    language = core::appLanguageFromRawValue(*value);
    if (!language) return UsageError{"unknown language \"" + *value + "\": use en, ko, zh or ja"};
    return std::nullopt;
}

std::optional<UsageError> parseLimit(const std::vector<std::string>& args, std::size_t& i,
                                     std::size_t& limit) {
    const auto value = optionValue(args, i);
    if (!value) return UsageError{"--limit needs a number, e.g. --limit 20"};
    const char* end = value->data() + value->size();
    const auto [stop, error] = std::from_chars(value->data(), end, limit);
    if (value->empty() || error != std::errc() || stop != end) {
        return UsageError{"--limit takes a whole number, not \"" + *value + "\""};
    }
    return std::nullopt;
}

std::optional<UsageError> parseNetlogOptions(const std::vector<std::string>& args,
                                             NetlogOptions& options) {
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--json") {
            options.json = true;
        } else if (isOption(arg, "--lang")) {
            if (auto error = parseLanguage(args, i, options.language)) return error;
        } else if (isOption(arg, "--limit")) {
            if (auto error = parseLimit(args, i, options.limit)) return error;
        } else {
            return UsageError{"netlog does not take \"" + arg + "\""};
        }
    }
    return std::nullopt;
}

// Takes the options of `ask` and of the interactive mode; the rest are the sentence's words.
std::optional<UsageError> parseOptions(const std::vector<std::string>& args, std::size_t start,
                                       AskOptions& options, std::vector<std::string>& words) {
    bool optionsEnded = false;
    for (std::size_t i = start; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (optionsEnded || arg.empty() || arg[0] != '-' || arg == "-") {
            words.push_back(arg);
            continue;
        }
        if (arg == "--") {
            optionsEnded = true;
        } else if (arg == "--json") {
            options.json = true;
        } else if (arg == "--no-network") {
            options.noNetwork = true;
        } else if (arg == "--yes") {
            options.yes = true;
        } else if (isOption(arg, "--lang")) {
            if (auto error = parseLanguage(args, i, options.language)) return error;
        } else {
            return UsageError{"unknown option " + arg +
                              " (a sentence that starts with \"-\" goes after --)"};
        }
    }
    return std::nullopt;
}

// settings, key and diagnostics; nothing for another verb.
std::optional<std::variant<CommandLine, UsageError>> parseMaintenanceVerb(
    const std::vector<std::string>& args, CommandLine line) {
    if (args.empty()) return std::nullopt;
    if (args[0] == "settings") {
        auto parsed = parseSettingsArguments(args);
        if (auto* error = std::get_if<std::string>(&parsed)) return UsageError{*error};
        line.verb = CommandLine::Verb::settings;
        line.settings = std::get<SettingsOptions>(parsed);
        return line;
    }
    if (args[0] == "key") {
        auto parsed = parseKeyArguments(args);
        if (auto* error = std::get_if<std::string>(&parsed)) return UsageError{*error};
        line.verb = CommandLine::Verb::key;
        line.key = std::get<KeyOptions>(parsed);
        return line;
    }
    if (args[0] == "diagnostics") {
        for (std::size_t i = 1; i < args.size(); ++i) {
            if (args[i] == "--copy") {
                line.copyDiagnostics = true;
            } else if (isOption(args[i], "--lang")) {
                if (auto error = parseLanguage(args, i, line.options.language)) return *error;
            } else {
                return UsageError{"diagnostics does not take \"" + args[i] + "\""};
            }
        }
        line.verb = CommandLine::Verb::diagnostics;
        return line;
    }
    return std::nullopt;
}

}  // namespace

std::variant<CommandLine, UsageError> parseCommandLine(const std::vector<std::string>& args) {
    CommandLine line;
    if (!args.empty() && args[0] == "models") {
        auto models = parseModelsArguments(args);
        if (const auto* error = std::get_if<ModelsUsageError>(&models))
            return UsageError{error->message};
        line.verb = CommandLine::Verb::models;
        line.models = std::get<ModelsOptions>(std::move(models));
        return line;
    }
    for (const auto& arg : args) {
        if (arg == "--") break;
        if (arg == "--help" || arg == "-h" || (&arg == &args.front() && arg == "help")) {
            line.verb = CommandLine::Verb::help;
            return line;
        }
    }
    if (!args.empty() && args[0] == "--version") {
        line.verb = CommandLine::Verb::version;
        return line;
    }
    if (!args.empty() && args[0] == "install-server") {
        if (args.size() == 1) {
            line.verb = CommandLine::Verb::installServer;
            return line;
        }
        if (args.size() == 2 && (args[1] == "--help" || args[1] == "-h")) {
            line.verb = CommandLine::Verb::help;
            return line;
        }
        return UsageError{"install-server does not take \"" + args[1] + "\""};
    }
    if (!args.empty() && args[0] == "netlog") {
        if (auto error = parseNetlogOptions(args, line.netlog)) return *error;
        line.verb = CommandLine::Verb::netlog;
        return line;
    }
    if (auto maintenance = parseMaintenanceVerb(args, line)) return *maintenance;
    const bool explain = !args.empty() && args[0] == "explain";
    const bool ask = !args.empty() && (args[0] == "ask" || explain);
    if (!ask && !args.empty() && args[0].rfind("-", 0) != 0) {
        return UsageError{"unknown command \"" + args[0] + "\""};
    }
    std::vector<std::string> words;
    if (auto error = parseOptions(args, ask ? 1 : 0, line.options, words)) return *error;
    std::string sentence;
    for (const auto& word : words) {
        if (!sentence.empty()) sentence.push_back(' ');
        sentence += word;
    }
    line.options.sentence = base::text::nfc(base::text::trim(sentence));
    if (ask) {
        if (line.options.sentence.empty())
            return UsageError{args[0] + " needs a sentence, e.g. nuvrel " + args[0] +
                              " \"15% of 80\""};
        line.verb = explain ? CommandLine::Verb::explain : CommandLine::Verb::ask;
    } else if (!words.empty()) {
        return UsageError{"a sentence goes after ask: nuvrel ask \"" + line.options.sentence +
                          "\""};
    }
    return line;
}

std::string usageText() {
    return R"(nuvrel — a natural-language launcher

Usage:
  nuvrel ask [options] [--] <sentence...>   run one sentence and print its card
  nuvrel [options]                          read sentences line by line and answer each
  nuvrel netlog [--json] [--limit N] [--lang en|ko|zh|ja]
                                            list the recent requests that left this computer
  nuvrel models [list|install|add|use|remove|check-updates] ...
                                            list, install and switch local models
                                            (nuvrel models --help)
  nuvrel watch-clipboard                    keep the clipboard history until stopped
                                            (X11 through xclip, Wayland through wl-paste)
  nuvrel install-server                     build the local model server if it is missing
                                            (ten minutes or more, once) and print its path
  nuvrel explain [--json] [--lang L] [--] <sentence...>
                                            say which step would answer the sentence and
                                            what it understood, without doing anything
  nuvrel settings [--json]                  list every setting with its value and default
  nuvrel settings set KEY VALUE             change a setting (checked first)
  nuvrel settings unset KEY                 go back to the default
  nuvrel key set firecrawl                  keep your Firecrawl API key in the desktop's
                                            key store (GNOME Keyring, KWallet); read from
                                            standard input, not shown
  nuvrel key remove firecrawl               forget it
  nuvrel diagnostics [--copy]               print a report to paste into a problem report
                                            (no searches, notes or file names); --copy
                                            also puts it on the clipboard
  nuvrel --help | --version

Options:
  --lang en|ko|zh|ja   interface language (default: the saved setting, else the system's)
  --json               print the outcome as one JSON object
  --no-network         do not use web search, weather or currency for this run
  --yes                carry out what asks for confirmation (deleting an event, a
                       reminder, a note or a file; sending a message) without asking
  --                   end of options: what follows is the sentence ("-2^2")
  --limit N            netlog: show at most N requests, newest first (default 50)

Examples:
  nuvrel ask "15% of 80"               nuvrel ask "weather in Seoul"
  nuvrel ask "100 dollars in won"      nuvrel ask "10분 타이머"
  nuvrel ask "open Firefox"            nuvrel ask "find report.pdf"
  nuvrel explain --json "delete the meeting tomorrow"
  nuvrel settings set searxngEndpoint https://searx.example.org

Exit status: 0 for a result, 1 for an error, 2 for bad usage, 3 when something that
needs confirmation was not carried out, 130 when cancelled.
Ctrl-C cancels the running sentence; a second Ctrl-C quits.
On a terminal the line-by-line mode edits lines (arrow keys, Ctrl-R searches earlier
sentences) and keeps its history in $XDG_STATE_HOME/nuvrel/history, for you alone.

Confirmation: a deletion or a message is shown first. On a terminal nuvrel asks
"[y/N]" for each item; only "y" or "yes" (or 예, 네, 是, 好, はい) carries it out.
With --yes it is carried out without asking. With neither, nothing is done, the card
is printed (--json prints the plan) and the exit status is 3.

Environment:
  NUVREL_DEBUG_QUERY   run this sentence once and exit (also instead of the line-by-line
                       mode), logging the routed slots
  NUVREL_DEBUG_LANG    interface language for this run (en, ko, zh, ja)
  NUVREL_DEBUG_ROUTER_PORT  port of the router's model server (default 8765)
)";
}

}  // namespace nuvrel::app
