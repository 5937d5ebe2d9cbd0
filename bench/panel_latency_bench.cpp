// The resident panel on a real X server (Xvfb with openbox), driven by xdotool as a user
// drives it: from the hotkey's key event to the first frame of the panel with its field, and
// from Return to the card drawn for "15% of 80". The figures are the program's own timestamps
// (NUVREL_DEBUG_LATENCY); "with_xdotool_ms" adds the key's trip from a fresh xdotool process
// through the X server, as a check on them.
#include <benchmark/benchmark.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

#include "base/paths.h"
#include "support/environment_override.h"
#include "support/helper_process.h"
#include "support/temporary_home.h"
#include "support/x11_session.h"

namespace {

using namespace std::chrono_literals;
using nuvrel::test::HelperProcess;

bool xdotool(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "/usr/bin/xdotool");
    HelperProcess tool(arguments);
    const auto status = tool.waitForExit(10s);
    return status && WIFEXITED(*status) && WEXITSTATUS(*status) == 0;
}

struct ResidentPanel {
    nuvrel::test::TemporaryHome home;
    nuvrel::test::X11Session x11;
    std::unique_ptr<HelperProcess> bus;
    nuvrel::test::EnvironmentOverride environment;
    std::unique_ptr<HelperProcess> panel;

    ResidentPanel() {
        bus = std::make_unique<HelperProcess>(std::vector<std::string>{
            "/usr/bin/dbus-daemon", "--session", "--nofork", "--print-address"});
        const std::string address = bus->readLine(10s).value_or("");
        environment.set("DBUS_SESSION_BUS_ADDRESS", address.c_str());
        environment.set("QT_QPA_PLATFORM", "xcb");
        environment.set("XDG_RUNTIME_DIR", home.path().c_str());
        environment.set("NUVREL_DEBUG_LATENCY", "1");
        // openbox keeps Alt+Space for its window menu: the panel takes Ctrl+Shift+K here.
        const auto settings = nuvrel::base::XdgPaths::fromEnvironment().settingsFile();
        std::filesystem::create_directories(settings.parent_path());
        std::ofstream(settings) << R"({"hotkeyKeyCode":40,"hotkeyModifiers":4608})";
        // Its diagnostics come on standard output, where the bench reads lines.
        panel = std::make_unique<HelperProcess>(std::vector<std::string>{
            "/bin/sh", "-c", "exec \"$0\" --background 2>&1", NUVREL_PANEL_PATH});
        // Its shortcut is grabbed a moment after it starts: press until the panel shows.
        for (int i = 0; i < 20; ++i) {
            xdotool({"key", "ctrl+shift+k"});
            if (latency("after the toggle", 1s)) break;
        }
        xdotool({"key", "Escape"});
    }

    // The milliseconds of the next latency line that holds `what`.
    std::optional<double> latency(const std::string& what, std::chrono::milliseconds limit = 10s) {
        while (const auto line = panel->readLine(limit)) {
            const auto at = line->find(what);
            if (line->find("[nuvrel-latency]") == std::string::npos || at == std::string::npos)
                continue;
            return std::strtod(line->c_str() + line->find("drawn ") + 6, nullptr);
        }
        return std::nullopt;
    }
};

ResidentPanel& residentPanel() {
    static ResidentPanel panel;  // one for the whole run, as the user's stays resident
    return panel;
}

double millisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

void BM_PanelHotkeyToFirstFrame(benchmark::State& state) {
    ResidentPanel& panel = residentPanel();
    if (!panel.x11.ready()) return state.SkipWithError("no Xvfb");
    double outside = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        xdotool({"key", "ctrl+shift+k"});
        const auto drawn = panel.latency("after the toggle");
        outside += millisecondsSince(start);
        if (!drawn) return state.SkipWithError("the panel logged no frame");
        state.SetIterationTime(*drawn / 1000);
        state.PauseTiming();
        xdotool({"key", "Escape"});  // hides the empty panel
        state.ResumeTiming();
    }
    state.counters["with_xdotool_ms"] = outside / double(state.iterations());
}
BENCHMARK(BM_PanelHotkeyToFirstFrame)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(30);

void BM_PanelReturnToCalculationCard(benchmark::State& state) {
    ResidentPanel& panel = residentPanel();
    if (!panel.x11.ready()) return state.SkipWithError("no Xvfb");
    xdotool({"key", "ctrl+shift+k"});
    panel.latency("after the toggle");
    double outside = 0;
    for (auto _ : state) {
        state.PauseTiming();
        xdotool({"type", "--delay", "0", "15% of 80"});
        state.ResumeTiming();
        const auto start = std::chrono::steady_clock::now();
        xdotool({"key", "Return"});
        const auto drawn = panel.latency("after the Return");
        outside += millisecondsSince(start);
        if (!drawn) return state.SkipWithError("the panel logged no card");
        state.SetIterationTime(*drawn / 1000);
        state.PauseTiming();
        xdotool({"key", "Escape"});  // clears the field and the card
        state.ResumeTiming();
    }
    state.counters["with_xdotool_ms"] = outside / double(state.iterations());
}
BENCHMARK(BM_PanelReturnToCalculationCard)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(30);

}  // namespace
