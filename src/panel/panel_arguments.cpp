#include "panel/panel_arguments.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace nuvrel::panel {

namespace {
// Qt's options that take a value, left for QApplication to read.
constexpr std::array<std::string_view, 6> qtOptionsWithValue{
    "-platform", "-display", "-geometry", "-style", "-qwindowgeometry", "-platformtheme"};
}  // namespace

std::variant<PanelArguments, PanelUsageError> parsePanelArguments(
    const std::vector<std::string>& args) {
    PanelArguments parsed;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--toggle") {
            parsed.toggle = true;
        } else if (arg == "--background") {
            parsed.background = true;
        } else if (arg == "--install-autostart") {
            parsed.verb = PanelArguments::Verb::installAutostart;
        } else if (arg == "--help" || arg == "-h") {
            parsed.verb = PanelArguments::Verb::help;
        } else if (arg == "--version") {
            parsed.verb = PanelArguments::Verb::version;
        } else if (std::find(qtOptionsWithValue.begin(), qtOptionsWithValue.end(), arg) !=
                   qtOptionsWithValue.end()) {
            ++i;
        } else {
            return PanelUsageError{"unknown option " + arg};
        }
    }
    return parsed;
}

std::string panelUsageText() {
    return "usage: nuvrel-panel [--toggle] [--background]\n"
           "       nuvrel-panel --install-autostart\n"
           "\n"
           "  --toggle             show or hide the running panel (bind it to a shortcut)\n"
           "  --background         start hidden; the shortcut shows the panel\n"
           "  --install-autostart  start the panel at login (writes the XDG autostart entry)\n";
}

}  // namespace nuvrel::panel
