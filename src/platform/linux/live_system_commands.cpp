#include "platform/linux/live_system_commands.h"

#include <glib.h>
#include <sys/wait.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <vector>

#include "base/regex.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "platform/linux/logind.h"
#include "platform/linux/screenshot_portal.h"

namespace nuvrel::platform {
namespace {

bool onPath(const char* program) {
    gchar* found = g_find_program_in_path(program);
    g_free(found);
    return found != nullptr;
}

struct Run {
    int exitStatus = -1;
    std::string output;
};

// Runs a tool found on PATH and waits for it. Throws when it cannot be started.
Run runTool(const std::vector<std::string>& argv) {
    std::vector<gchar*> args;
    for (const std::string& arg : argv) args.push_back(const_cast<gchar*>(arg.c_str()));
    args.push_back(nullptr);
    gchar* out = nullptr;
    gint status = 0;
    GError* error = nullptr;
    const bool started = g_spawn_sync(nullptr, args.data(), nullptr,
                                      GSpawnFlags(G_SPAWN_SEARCH_PATH | G_SPAWN_STDERR_TO_DEV_NULL),
                                      nullptr, nullptr, &out, nullptr, &status, &error);
    if (!started) {
        const std::string reason = error ? error->message : "spawn failed";
        g_clear_error(&error);
        throw std::runtime_error(argv.front() + " could not be started: " + reason);
    }
    Run run{WIFEXITED(status) ? WEXITSTATUS(status) : -1, out ? out : ""};
    g_free(out);
    return run;
}

void runChecked(const std::vector<std::string>& argv) {
    const Run run = runTool(argv);
    if (run.exitStatus != 0)
        throw std::runtime_error(argv.front() + " exited with status " +
                                 std::to_string(run.exitStatus));
}

class Tools {
public:
    explicit Tools(const LiveSystemCommandSettings& settings)
        : strings_(core::LocalizedStrings::strings(settings.language)),
          logind_(settings.logindBusAddress),
          screenshotFolder_(settings.screenshotFolder),
          sessionBus_(settings.sessionBus) {}

    void sleep() const {
        const Logind::Outcome outcome = logind_.suspend();
        if (outcome == Logind::Outcome::unavailable) throw missing("logind");
        if (outcome == Logind::Outcome::failed)
            throw std::runtime_error("logind refused to suspend");
    }

    void lockScreen() const {
        // Only an absent logind is reported: a lock that logind turned down has nothing the
        // user could act on.
        if (logind_.lockSession() == Logind::Outcome::unavailable) throw missing("logind");
    }

    void setOutputMuted(bool muted) const {
        const std::string flag = muted ? "1" : "0";
        if (onPath("wpctl")) return runChecked({"wpctl", "set-mute", "@DEFAULT_AUDIO_SINK@", flag});
        if (onPath("pactl")) return runChecked({"pactl", "set-sink-mute", "@DEFAULT_SINK@", flag});
        throw missing("wpctl, pactl");
    }

    std::optional<int> outputVolume() const {
        if (onPath("wpctl")) {
            const Run run = runTool({"wpctl", "get-volume", "@DEFAULT_AUDIO_SINK@"});
            return run.exitStatus == 0 ? parseWpctlVolume(run.output) : std::nullopt;
        }
        if (onPath("pactl")) {
            const Run run = runTool({"pactl", "get-sink-volume", "@DEFAULT_SINK@"});
            return run.exitStatus == 0 ? parsePactlVolume(run.output) : std::nullopt;
        }
        throw missing("wpctl, pactl");
    }

    void setOutputVolume(int volume) const {
        if (onPath("wpctl")) {
            char level[16];
            std::snprintf(level, sizeof level, "%d.%02d", volume / 100, volume % 100);
            return runChecked({"wpctl", "set-volume", "@DEFAULT_AUDIO_SINK@", level});
        }
        if (onPath("pactl"))
            return runChecked(
                {"pactl", "set-sink-volume", "@DEFAULT_SINK@", std::to_string(volume) + "%"});
        throw missing("wpctl, pactl");
    }

    std::string takeScreenshot() const {
        std::filesystem::path folder = screenshotFolder_;
        if (folder.empty()) {
            const char* home = std::getenv("HOME");
            folder = std::filesystem::path(home ? home : g_get_home_dir()) / "Desktop";
        }
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        localtime_r(&now, &local);
        const std::string path =
            (folder / desktop::SystemCommandCapability::screenshotFileName(local)).string();
        // A portal may first ask the user to allow captures: it is given time for that.
        const auto bus = sessionBus_ ? sessionBus_() : nullptr;
        if (bus && portalScreenshot(bus->connection(), path, std::chrono::seconds(10))) return path;
        const std::vector<std::vector<std::string>> tools = {
            {"gnome-screenshot", "-f", path},
            {"spectacle", "-b", "-n", "-o", path},
            {"grim", path},
            {"import", "-window", "root", path},
        };
        for (const auto& argv : tools) {
            if (!onPath(argv.front().c_str())) continue;
            std::error_code ignored;
            std::filesystem::create_directories(folder, ignored);
            // As on the other platform, the tool's exit status is not looked at.
            runTool(argv);
            return path;
        }
        throw missing("gnome-screenshot, spectacle, grim, import");
    }

    void openWallpaperSettings() const {
        const char* desktopName = std::getenv("XDG_CURRENT_DESKTOP");
        const bool kde =
            desktopName && std::string_view(desktopName).find("KDE") != std::string_view::npos;
        std::vector<std::vector<std::string>> tools = {
            {"gnome-control-center", "background"},
            {"systemsettings", "kcm_wallpaper"},
        };
        if (kde) std::swap(tools[0], tools[1]);
        for (const auto& argv : tools) {
            if (!onPath(argv.front().c_str())) continue;
            std::vector<gchar*> args;
            for (const std::string& arg : argv) args.push_back(const_cast<gchar*>(arg.c_str()));
            args.push_back(nullptr);
            GError* error = nullptr;
            // The settings window outlives this call: started, not waited for.
            if (!g_spawn_async(nullptr, args.data(), nullptr,
                               GSpawnFlags(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL |
                                           G_SPAWN_STDERR_TO_DEV_NULL),
                               nullptr, nullptr, nullptr, &error)) {
                const std::string reason = error ? error->message : "spawn failed";
                g_clear_error(&error);
                throw std::runtime_error(argv.front() + " could not be started: " + reason);
            }
            return;
        }
        throw missing("gnome-control-center, systemsettings");
    }

private:
    core::UserFacingError missing(std::string_view tool) const {
        return core::UserFacingError(strings_.systemToolMissingMessage(tool));
    }

    const core::LocalizedStrings& strings_;
    Logind logind_;
    std::filesystem::path screenshotFolder_;
    SessionBusSource sessionBus_;
};

}  // namespace

desktop::SystemCommandOperations liveSystemCommandOperations(
    const LiveSystemCommandSettings& settings) {
    auto tools = std::make_shared<const Tools>(settings);
    desktop::SystemCommandOperations operations;
    operations.sleep = [tools] { tools->sleep(); };
    operations.lockScreen = [tools] { tools->lockScreen(); };
    operations.setOutputMuted = [tools](bool muted) { tools->setOutputMuted(muted); };
    operations.outputVolume = [tools] { return tools->outputVolume(); };
    operations.setOutputVolume = [tools](int volume) { tools->setOutputVolume(volume); };
    operations.takeScreenshot = [tools] { return tools->takeScreenshot(); };
    operations.openWallpaperSettings = [tools] { tools->openWallpaperSettings(); };
    return operations;
}

std::optional<int> parseWpctlVolume(std::string_view output) {
    static const base::Regex pattern(R"(Volume:\s*([0-9]+(?:\.[0-9]+)?))");
    const auto found = pattern.firstMatch(output);
    if (!found) return std::nullopt;
    const std::string_view number = found->group(1);
    double level = 0;
    std::from_chars(number.data(), number.data() + number.size(), level);
    return static_cast<int>(std::lround(level * 100));
}

std::optional<int> parsePactlVolume(std::string_view output) {
    static const base::Regex pattern(R"(([0-9]+)%)");
    const auto found = pattern.firstMatch(output);
    if (!found) return std::nullopt;
    const std::string_view number = found->group(1);
    int level = 0;
    std::from_chars(number.data(), number.data() + number.size(), level);
    return level;
}

}  // namespace nuvrel::platform
