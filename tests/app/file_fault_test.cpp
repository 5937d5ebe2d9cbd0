// The program's files under real faults, in real processes: killed in the middle of a write,
// two writers at once, and a full disk (a file size limit).

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <nlohmann/json.hpp>
#include <random>
#include <thread>

#include "app/network_activity_json.h"
#include "base/files.h"
#include "support/helper_process.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

using namespace std::chrono_literals;

// A settings file written by the helper is whole when its padding is one letter, all of it.
bool isWholeSettingsFile(const std::string& text) {
    const auto json = nlohmann::json::parse(text, nullptr, false);
    if (!json.is_object() || !json.contains("padding")) return json.is_object();
    const auto padding = json["padding"].get<std::string>();
    return padding == std::string(64 * 1024, padding.front());
}

TEST(FileFaultTest, AWriterKilledAtAnyPointLeavesTheOldOrTheNewWholeFile) {
    const test::TemporaryHome home;
    std::mt19937 random(15);
    struct Case {
        const char* mode;
        std::vector<std::string> extra;
        bool (*whole)(const std::string&);
    };
    const Case cases[] = {
        {"write-settings", {"100000"}, isWholeSettingsFile},
        {"record-netlog",
         {"100000", "example.org"},
         [](const std::string& text) { return decodeNetworkActivity(text).has_value(); }},
    };
    for (const auto& [mode, extra, whole] : cases) {
        const auto file = home.path() / (std::string(mode) + ".json");
        for (int round = 0; round < 12; ++round) {
            std::vector<std::string> argv{PROCESS_HELPER_PATH, mode, file.string()};
            argv.insert(argv.end(), extra.begin(), extra.end());
            test::HelperProcess writer(argv);
            if (std::string(mode) == "write-settings") {
                ASSERT_EQ(writer.readLine(10s), "ready");
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(random() % 40));
            ::kill(writer.pid(), SIGKILL);
            ASSERT_TRUE(writer.waitForExit(10s));
            const auto text = base::readFile(file);
            if (!text) continue;  // killed before its first write
            EXPECT_TRUE(whole(*text)) << mode << " round " << round << ": a torn file";
        }
    }
}

TEST(FileFaultTest, TwoProcessesRecordingAtOnceLoseNoEntry) {
    const test::TemporaryHome home;
    const auto file = home.path() / "network-activity.json";
    test::HelperProcess first(
        {PROCESS_HELPER_PATH, "record-netlog", file.string(), "120", "a.org"});
    test::HelperProcess second(
        {PROCESS_HELPER_PATH, "record-netlog", file.string(), "120", "b.org"});
    for (auto* writer : {&first, &second}) {
        const auto status = writer->waitForExit(60s);
        ASSERT_TRUE(status && WIFEXITED(*status) && WEXITSTATUS(*status) == 0);
    }
    const auto entries = decodeNetworkActivity(base::readFile(file).value_or(""));
    ASSERT_TRUE(entries) << "the file is no longer valid";
    std::map<std::string, std::set<std::string>> paths;
    for (const auto& entry : *entries) paths[entry.host].insert(entry.path);
    EXPECT_EQ(paths["a.org"].size(), 120u);
    EXPECT_EQ(paths["b.org"].size(), 120u);
}

TEST(FileFaultTest, AFullDiskFailsTheSettingsWriteClearlyAndKeepsTheOldFile) {
    const test::TemporaryHome home;
    const auto folder = home.path() / "limited";
    const auto file = folder / "settings.json";
    const std::string old = R"({"appLanguage":"ko"})";
    base::writeFileAtomically(file, old);

    test::HelperProcess writer(
        {PROCESS_HELPER_PATH, "write-settings-limited", file.string(), "4096"});
    std::vector<std::string> lines;
    while (auto line = writer.readLine(10s)) lines.push_back(*line);
    const auto status = writer.waitForExit(10s);
    ASSERT_TRUE(status && WIFEXITED(*status)) << "ended by signal " << WTERMSIG(status.value_or(0));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "[Nuvrel] settings could not be written (File too large)");
    EXPECT_EQ(lines[1], "done");
    EXPECT_EQ(base::readFile(file), old);
    // No half-written temporary file is left beside it.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
}

}  // namespace
}  // namespace nuvrel::app
