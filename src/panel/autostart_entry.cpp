#include "panel/autostart_entry.h"

#include <string_view>

#include "base/files.h"

namespace nuvrel::panel {

namespace {

// An Exec argument: quoted when it holds a reserved character, with `"`, `` ` ``, `$` and `\`
// escaped inside the quotes; then every backslash doubled again, as the value of a key.
std::string execArgument(const std::string& argument) {
    constexpr std::string_view reserved = " \t\n\"'\\><~|&;$*?#()`";
    std::string out;
    if (argument.find_first_of(reserved) == std::string::npos) {
        out = argument;
    } else {
        out = "\"";
        for (char c : argument) {
            if (c == '"' || c == '`' || c == '$' || c == '\\') out.push_back('\\');
            out.push_back(c);
        }
        out.push_back('"');
    }
    std::string escaped;
    for (char c : out) {
        if (c == '\\') escaped.push_back('\\');
        escaped.push_back(c);
    }
    return escaped;
}

}  // namespace

std::filesystem::path autostartEntryPath(const base::XdgPaths& paths) {
    return paths.configHome / "autostart" / "nuvrel-panel.desktop";
}

std::string autostartEntryText(const std::filesystem::path& program) {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Nuvrel\n"
           "Exec=" +
           execArgument(program.string()) +
           " --background\n"
           "Icon=nuvrel\n"
           "Terminal=false\n"
           "NoDisplay=true\n"
           "X-GNOME-Autostart-enabled=true\n";
}

std::filesystem::path installAutostartEntry(const base::XdgPaths& paths,
                                            const std::filesystem::path& program) {
    const auto path = autostartEntryPath(paths);
    base::writeFileAtomically(path, autostartEntryText(program));
    return path;
}

}  // namespace nuvrel::panel
