#pragma once
// The arguments of nuvrel-panel.

#include <string>
#include <variant>
#include <vector>

namespace nuvrel::panel {

struct PanelArguments {
    enum class Verb {
        run,               // start, or toggle the running panel
        installAutostart,  // write the login entry and end
        help,
        version,
    };
    Verb verb = Verb::run;
    // --toggle: only tell the running panel to toggle (a first start shows the panel).
    bool toggle = false;
    // --background: a first start stays hidden until the hotkey (the login entry's way).
    bool background = false;
};

struct PanelUsageError {
    std::string message;
};

// `args` without the program name. Qt's own options (-platform, -display) pass through.
std::variant<PanelArguments, PanelUsageError> parsePanelArguments(
    const std::vector<std::string>& args);

std::string panelUsageText();

}  // namespace nuvrel::panel
