#include "app/command_line.h"

#include "base/text.h"

namespace nuvrel::app {

namespace {

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
        } else if (arg == "--lang" || arg.rfind("--lang=", 0) == 0) {
            std::string value;
            if (arg == "--lang") {
                if (i + 1 == args.size()) return UsageError{"--lang needs a value: en, ko, zh or ja"};
                value = args[++i];
            } else {
                value = arg.substr(7);
            }
            options.language = core::appLanguageFromRawValue(value);
            if (!options.language) return UsageError{"unknown language \"" + value + "\": use en, ko, zh or ja"};
        } else {
            return UsageError{"unknown option " + arg + " (a sentence that starts with \"-\" goes after --)"};
        }
    }
    return std::nullopt;
}

}  // namespace

std::variant<CommandLine, UsageError> parseCommandLine(const std::vector<std::string>& args) {
    CommandLine line;
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
    const bool ask = !args.empty() && args[0] == "ask";
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
        if (line.options.sentence.empty()) return UsageError{"ask needs a sentence, e.g. nuvrel ask \"15% of 80\""};
        line.verb = CommandLine::Verb::ask;
    } else if (!words.empty()) {
        return UsageError{"a sentence goes after ask: nuvrel ask \"" + line.options.sentence + "\""};
    }
    return line;
}

std::string usageText() {
    return R"(nuvrel — a natural-language launcher

Usage:
  nuvrel ask [options] [--] <sentence...>   run one sentence and print its card
  nuvrel [options]                          read sentences line by line and answer each
  nuvrel --help | --version

Options:
  --lang en|ko|zh|ja   interface language (default: the saved setting, else the system's)
  --json               print the outcome as one JSON object
  --no-network         do not use web search, weather or currency for this run
  --                   end of options: what follows is the sentence ("-2^2")

Exit status: 0 for a result, 1 for an error, 2 for bad usage, 130 when cancelled.
Ctrl-C cancels the running sentence; a second Ctrl-C quits.

Environment:
  NUVREL_DEBUG_QUERY   run this sentence at start and log the routed slots
  NUVREL_DEBUG_LANG    interface language for this run (en, ko, zh, ja)
  NUVREL_DEBUG_ROUTER_PORT  port of the router's model server (default 8765)
)";
}

}  // namespace nuvrel::app
