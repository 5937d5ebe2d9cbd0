// The verbs around the engine: settings, diagnostics, and what a
// calculator sentence and `explain` leave behind when run as the real program.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <sstream>

#include "app/app_test_support.h"
#include "app/command_line.h"
#include "app/diagnostics_report.h"
#include "app/settings_command.h"
#include "app/settings_keys.h"
#include "support/helper_process.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

using namespace std::chrono_literals;

TEST(SettingsCommand, SetChecksTheValueAndARefusalKeepsTheStoredOne) {
    struct Case {
        std::vector<std::string> args;
        int status;
        const char* stored;  // searxngEndpoint afterwards
        const char* error;   // part of what standard error says
    };
    const Case cases[] = {
        {{"settings", "set", "searxngEndpoint", "http://example.invalid"},
         0,
         "http://example.invalid",
         ""},
        {{"settings", "set", "searxngEndpoint", "ftp://x"},
         1,
         "http://example.invalid",
         "Enter a valid http:// or https:// address"},
        {{"settings", "set", "searxngEndpoint", "https://"},
         1,
         "http://example.invalid",
         "Enter a valid"},
        {{"settings", "set", "searxngEndpoint", "HTTPS://Searx.Example"},
         0,
         "HTTPS://Searx.Example",
         ""},
        {{"settings", "set", "searxngEndpoint", "  "}, 0, "  ", ""},
        {{"settings", "set", "hotkeyKeyCode", "space"}, 1, "  ", "not a valid value"},
        {{"settings", "set", "lang", "fr"}, 1, "  ", "not a valid value"},
        {{"settings", "set", "noSuchKey", "1"}, 1, "  ", "Unknown setting"},
        {{"settings", "unset", "searxngEndpoint"}, 0, nullptr, ""},
    };
    test::InMemorySettingsStore store;
    for (const Case& c : cases) {
        const auto parsed = std::get<SettingsOptions>(parseSettingsArguments(c.args));
        std::ostringstream out, err;
        EXPECT_EQ(runSettingsCommand(parsed, store, core::LocalizedStrings::en(), out, err),
                  c.status)
            << c.args[3 % c.args.size()];
        EXPECT_NE(err.str().find(c.error), std::string::npos) << err.str();
        EXPECT_EQ(store.string(settingsKey::searxngEndpoint),
                  c.stored ? std::optional<std::string>(c.stored) : std::nullopt);
    }
    store.set(settingsKey::networkFeaturesEnabled, "0");
    store.set(settingsKey::hotkeyKeyCode, std::int64_t{36});
    std::ostringstream out, err;
    runSettingsCommand({}, store, core::LocalizedStrings::en(), out, err);
    EXPECT_NE(out.str().find("networkFeaturesEnabled      \"0\"   (default: \"1\")"),
              std::string::npos)
        << out.str();
    EXPECT_NE(out.str().find("hotkeyKeyCode               \"36\"   (default: \"49\")"),
              std::string::npos);
    EXPECT_NE(out.str().find("searxngEndpoint             -   (default: \"\")"), std::string::npos);
}

// Becomes any probe, one that fails.
struct Failing {
    template <class R, class... A>
    operator std::function<R(A...)>() const {
        return [](A...) -> R { throw DiagnosticsProbeError(); };
    }
};

TEST(DiagnosticsReport, EveryLineStandsWhenEveryProbeFails) {
    const Failing f;
    const DiagnosticsReport::Probes probes{f, f, f, f, f, f, f, f, f, f, f, f, f};
    const std::string report = DiagnosticsReport::assemble(
        core::LocalizedStrings::en(), "nuvrel-nano-router-v5-q4_k_m.gguf", probes,
        std::chrono::system_clock::time_point(std::chrono::seconds(1'800'000'000)));
    const char* expected =
        "Nuvrel Diagnostic Report\n"
        "This report contains no personal content — no search queries, clipboard contents, or "
        "file names.\n"
        "Generated at: 2027-01-15T08:00:00Z\n"
        "[System]\n"
        "App version: check failed - unavailable\n"
        "macOS version: check failed - unavailable\n"
        "Chip: check failed - unavailable\n"
        "Total RAM: check failed - unavailable\n"
        "[Model status]\n"
        "Installed models: check failed - unavailable\n"
        "Selected model: nuvrel-nano-router-v5-q4_k_m.gguf\n"
        "Models directory: check failed - unavailable\n"
        "[llama-server status]\n"
        "Server binary: check failed - unavailable\n"
        "Port 8765 (router): check failed - unavailable\n"
        "Port 8766 (summary): check failed - unavailable\n"
        "Running server process(es): check failed - unavailable\n"
        "[Recent network activity (last 10)]\n"
        "check failed - unavailable\n"
        "[Permission status]\n"
        "Accessibility: check failed - unavailable\n"
        "Notifications: check failed - unavailable";
    EXPECT_EQ(report, expected);
}

TEST(DiagnosticsReport, ModelsSizesServersAndHostsAreWrittenWithoutPersonalText) {
    DiagnosticsReport::Probes probes;
    probes.appVersion = [] { return std::string("0.1.0"); };
    probes.osVersion = [] { return std::string("Debian GNU/Linux 12 (bookworm)"); };
    probes.isAppleSilicon = [] { return false; };
    probes.totalRAMBytes = [] { return std::uint64_t{25'769'803'776}; };
    probes.installedModelFileNames = [] { return std::vector<std::string>{"a.gguf", "b.gguf"}; };
    probes.modelFileSizeBytes = [](const std::string& name) -> std::int64_t {
        if (name == "a.gguf") throw std::runtime_error("gone");
        return 986'000'000;
    };
    probes.modelsDirectoryPath = [] { return std::string("/home/u/.local/share/nuvrel/models"); };
    probes.serverBinaryPath = [] { return std::optional<std::string>("/opt/homebrew/bin/x"); };
    probes.portIsHealthy = [](int port) { return port == 8765; };
    probes.listeningServerPIDs = [](int port) {
        return port == 8765 ? std::vector<std::int32_t>{4242} : std::vector<std::int32_t>{};
    };
    probes.recentNetworkActivity = [] {
        return std::vector<std::pair<std::string, NetworkActivityLog::Purpose>>(
            12, {"api.tavily.com", NetworkActivityLog::Purpose::webSearch});
    };
    probes.isAccessibilityTrusted = [] { return true; };
    probes.isNotificationsAuthorized = [] { return false; };
    const std::string report =
        DiagnosticsReport::assemble(core::LocalizedStrings::en(), "b.gguf", probes, {});
    for (const char* line : {
             "Chip: not arm64\n",
             "Total RAM: 25.77 GB\n",
             "Installed models: a.gguf (check failed - gone), b.gguf (986 MB)\n",
             "Server binary: Homebrew: /opt/homebrew/bin/x\n",
             "Port 8765 (router): responding\nPort 8766 (summary): not responding\n",
             "Running server process(es): 4242\n",
             "Accessibility: available\nNotifications: not available",
         }) {
        EXPECT_NE(report.find(line), std::string::npos) << line << "\n" << report;
    }
    std::size_t hosts = 0;
    for (auto at = report.find("api.tavily.com — "); at != std::string::npos;
         at = report.find("api.tavily.com — ", at + 1))
        ++hosts;
    EXPECT_EQ(hosts, 10u);
    EXPECT_EQ(DiagnosticsReport::byteCountText(999), "999 bytes");
    EXPECT_EQ(DiagnosticsReport::byteCountText(1'500'000), "1.5 MB");
}

// The real program: what it prints, on which stream, and what it leaves in the home folder.
TEST(ShellProgram, ACalculatorSentenceAndExplainPrintOnlyTheirAnswerAndLeaveNothing) {
    nuvrel::test::TemporaryHome home;
    const auto run = [](const std::string& arguments) {
        // Standard error joins standard output, so that any line of it shows.
        return nuvrel::test::runToEnd(
                   {"/bin/sh", "-c", "exec \"$0\" " + arguments + " 2>&1", NUVREL_PATH}, 30s)
            .output;
    };
    EXPECT_EQ(run("explain --json '15% of 80'"),
              "{\"step\":3,\"matcher\":\"CalculatorFastPath\",\"value\":{\"result\":\"15% of 80 = "
              "12\"}}\n");
    EXPECT_EQ(run("explain --json '아 오늘 진짜 피곤하다'"),
              "{\"step\":21,\"matcher\":\"router\"}\n");
    EXPECT_EQ(std::distance(std::filesystem::recursive_directory_iterator(home.path()),
                            std::filesystem::recursive_directory_iterator()),
              0);
    // A sentence the fast paths answer looks for no model file and says nothing about one.
    EXPECT_EQ(run("ask 2+2"), "2 + 2 = 4\n");
}

}  // namespace
}  // namespace nuvrel::app
