#include "app/netlog_command.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <nlohmann/json.hpp>
#include <sstream>

#include "app/network_activity_json.h"
#include "base/files.h"
#include "base/time_text.h"
#include "support/environment_override.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

using namespace std::chrono_literals;
using Purpose = NetworkActivityLog::Purpose;
using Entry = NetworkActivityLog::Entry;
using TimePoint = std::chrono::system_clock::time_point;

const TimePoint morning =
    TimePoint(std::chrono::sys_days(std::chrono::year(2026) / 11 / 22)) + 7h + 15min + 3s;

NetlogReport sampleReport() {
    return {{{morning + 5s, "huggingface.co", "/model.gguf", Purpose::modelDownload, 1024},
             {morning, "api.open-meteo.com", "/v1/forecast", Purpose::weather, std::nullopt}},
            3,
            false,
            "/data/nuvrel/network-activity.json"};
}

TEST(NetlogText, ListsEachRequestInLocalTimeWithAlignedColumnsThenTheSummary) {
    // Local time is Korea's: UTC+9, no daylight saving.
    const test::EnvironmentOverride zone("TZ", "KST-9");
    EXPECT_EQ(netlogText(sampleReport(), core::LocalizedStrings::en()),
              "Recent activity\n"
              "2026-11-22 16:15:08  huggingface.co      /model.gguf   Model Download\n"
              "2026-11-22 16:15:03  api.open-meteo.com  /v1/forecast  Weather\n"
              "\n"
              "3 outbound requests in the past 24 hours\n"
              "Calls to the local model server stay on this computer and are not listed.\n"
              "Log file: /data/nuvrel/network-activity.json\n");

    const auto korean = netlogText(sampleReport(), core::LocalizedStrings::ko());
    EXPECT_NE(korean.find("최근 활동\n"), std::string::npos) << korean;
    EXPECT_NE(korean.find("  모델 다운로드\n"), std::string::npos) << korean;
    EXPECT_NE(korean.find("지난 24시간 동안 외부 요청 3건\n"), std::string::npos) << korean;
    EXPECT_NE(korean.find("로그 파일: /data/nuvrel/network-activity.json\n"), std::string::npos)
        << korean;
}

TEST(NetlogText, SaysSoWhenNothingWasRecordedAndWhenTheRingMayHaveDroppedSomeOfTheDay) {
    NetlogReport empty{{}, 0, false, "/f.json"};
    const auto none = netlogText(empty, core::LocalizedStrings::ja());
    EXPECT_EQ(none.rfind("ネットワークアクティビティはまだ記録されていません\n\n過去24時間の外部へ"
                         "のリクエスト：0件\n",
                         0),
              0u)
        << none;

    NetlogReport full{{}, 500, true, "/f.json"};
    EXPECT_NE(netlogText(full, core::LocalizedStrings::en())
                  .find("500+ outbound requests in the past 24 hours (only the most recent 500 are "
                        "kept)\n"),
              std::string::npos);
    EXPECT_NE(netlogText(full, core::LocalizedStrings::zh())
                  .find("过去 24 小时内有 500+ 次对外请求（仅保留最近的 500 条）"),
              std::string::npos);

    // A full ring that reaches back past the day has the day's whole count.
    NetlogReport fullButOld{{}, 20, true, "/f.json"};
    EXPECT_NE(netlogText(fullButOld, core::LocalizedStrings::en())
                  .find("\n20 outbound requests in the past 24 hours\n"),
              std::string::npos);
}

TEST(NetlogJSON, CarriesTheEntriesAsTheLogFileDoesAndTheSummaryAsValues) {
    const auto json = nlohmann::json::parse(netlogJSON(sampleReport()));
    EXPECT_EQ(json, nlohmann::json::parse(R"({
        "entries": [
            {"timestamp": "2026-11-22T07:15:08Z", "host": "huggingface.co", "path": "/model.gguf",
             "purpose": "modelDownload", "bytes": 1024},
            {"timestamp": "2026-11-22T07:15:03Z", "host": "api.open-meteo.com", "path": "/v1/forecast",
             "purpose": "weather"}],
        "countLast24Hours": 3,
        "isAtCapacity": false,
        "file": "/data/nuvrel/network-activity.json"})"));
}

// The command end to end, against a log file in a temporary home.
class NetlogCommandTest : public ::testing::Test {
protected:
    test::TemporaryHome home;
    std::string dataHome = "XDG_DATA_HOME=" + (home.path() / "data").string();
    std::string configHome = "XDG_CONFIG_HOME=" + (home.path() / "config").string();
    std::string homeVariable = "HOME=" + home.path().string();
    std::filesystem::path logFile = home.path() / "data" / "nuvrel" / "network-activity.json";
    std::filesystem::path settingsFile = home.path() / "config" / "nuvrel" / "settings.json";
    const TimePoint now =
        std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());

    void SetUp() override {
        const std::vector<Entry> entries{
            {now - 1h, "api.open-meteo.com", "/v1/forecast", Purpose::weather, std::nullopt},
            {now - 2h, "api.frankfurter.app", "/v1/latest", Purpose::currency, std::nullopt},
            {now - 30h, "huggingface.co", "/model.gguf", Purpose::modelDownload, 123456}};
        base::writeFileAtomically(logFile, encodeNetworkActivity(entries));
    }

    std::string run(const NetlogOptions& options, std::vector<std::string> extra = {}) const {
        std::vector<std::string> variables{homeVariable, dataHome, configHome};
        variables.insert(variables.end(), extra.begin(), extra.end());
        std::vector<const char*> environment;
        for (const auto& variable : variables) environment.push_back(variable.c_str());
        environment.push_back(nullptr);
        std::ostringstream out;
        EXPECT_EQ(runNetlogCommand(options, environment.data(), out), 0);
        return out.str();
    }
};

TEST_F(NetlogCommandTest, PrintsTheLogOfTheHomeItIsGivenInTheChosenLanguage) {
    const auto english = run({});
    EXPECT_NE(english.find("api.open-meteo.com"), std::string::npos) << english;
    EXPECT_NE(english.find("huggingface.co"), std::string::npos) << english;
    EXPECT_NE(english.find("\n2 outbound requests in the past 24 hours\n"), std::string::npos)
        << english;
    EXPECT_NE(english.find("Log file: " + logFile.string()), std::string::npos) << english;

    EXPECT_NE(run({}, {"LANG=ko_KR.UTF-8"}).find("지난 24시간 동안 외부 요청 2건"),
              std::string::npos)
        << "the system's language without a saved one";
    base::writeFileAtomically(settingsFile, R"({"lang": "ja"})");
    EXPECT_NE(run({}, {"LANG=ko_KR.UTF-8"}).find("過去24時間の外部へのリクエスト：2件"),
              std::string::npos)
        << "the saved language over the system's";
    EXPECT_NE(run({}, {"NUVREL_DEBUG_LANG=zh"}).find("过去 24 小时内有 2 次对外请求"),
              std::string::npos);
    EXPECT_NE(
        run({core::AppLanguage::ko, false, 50}, {"NUVREL_DEBUG_LANG=zh"}).find("외부 요청 2건"),
        std::string::npos)
        << "--lang over everything";
}

TEST_F(NetlogCommandTest, LimitsTheListButNotTheCount) {
    const auto json = nlohmann::json::parse(run({std::nullopt, true, 1}));
    ASSERT_EQ(json["entries"].size(), 1u);
    EXPECT_EQ(json["entries"][0]["host"], "api.open-meteo.com");
    EXPECT_EQ(json["entries"][0]["timestamp"], base::iso8601Timestamp(now - 1h));
    EXPECT_EQ(json["countLast24Hours"], 2);
    EXPECT_EQ(json["file"], logFile.string());

    const auto all = nlohmann::json::parse(run({std::nullopt, true, 50}));
    EXPECT_EQ(all["entries"].size(), 3u);
    EXPECT_EQ(all["entries"][2]["bytes"], 123456);

    const auto text = run({std::nullopt, false, 0});
    EXPECT_EQ(text.find("api.open-meteo.com"), std::string::npos) << text;
    EXPECT_NE(text.find("\n2 outbound requests"), std::string::npos) << text;
}

TEST_F(NetlogCommandTest, LooksWithoutWritingAndCopesWithNoLogYet) {
    const auto before = base::readFile(logFile);
    run({});
    EXPECT_EQ(base::readFile(logFile), before);

    std::filesystem::remove(logFile);
    const auto json = nlohmann::json::parse(run({std::nullopt, true, 50}));
    EXPECT_TRUE(json["entries"].empty());
    EXPECT_EQ(json["countLast24Hours"], 0);
    EXPECT_NE(run({}).find("No network activity recorded yet\n"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(logFile)) << "looking creates no file";
}

}  // namespace
}  // namespace nuvrel::app
