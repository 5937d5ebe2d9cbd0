#include "app/network_activity_log.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <thread>

#include "app/network_activity_json.h"
#include "base/files.h"
#include "base/paths.h"
#include "base/time_text.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

using namespace std::chrono_literals;
using Purpose = NetworkActivityLog::Purpose;
using Entry = NetworkActivityLog::Entry;
using TimePoint = std::chrono::system_clock::time_point;

// 2026-11-22T07:15:03Z
const TimePoint start =
    TimePoint(std::chrono::sys_days(std::chrono::year(2026) / 11 / 22)) + 7h + 15min + 3s;

// A clock that a test moves by hand.
struct ManualClock {
    std::shared_ptr<TimePoint> time = std::make_shared<TimePoint>(start);
    NetworkActivityLog::Clock clock() const {
        return [time = time] { return *time; };
    }
    void advance(std::chrono::seconds by) const { *time += by; }
};

class NetworkActivityLogTest : public ::testing::Test {
protected:
    test::TemporaryHome home;
    std::filesystem::path file = base::XdgPaths::fromEnvironment().networkActivityFile();
    ManualClock clock;

    NetworkActivityLog logOnFile() const { return NetworkActivityLog(clock.clock(), file); }
    nlohmann::json fileJSON() const { return nlohmann::json::parse(base::readFile(file).value()); }
};

TEST_F(NetworkActivityLogTest, WritesNewestFirstAndReadsEntriesBackEqual) {
    auto log = logOnFile();
    log.record("api.open-meteo.com", "/v1/forecast", Purpose::weather);
    clock.advance(5s);
    log.record("huggingface.co", "/model.gguf", Purpose::modelDownload, 4'294'967'296);

    const auto json = fileJSON();
    ASSERT_TRUE(json.is_array());
    ASSERT_EQ(json.size(), 2u);
    EXPECT_EQ(json[0],
              nlohmann::json::parse(R"({"timestamp":"2026-11-22T07:15:08Z","host":"huggingface.co",
        "path":"/model.gguf","purpose":"modelDownload","bytes":4294967296})"));
    EXPECT_EQ(json[1], nlohmann::json::parse(R"({"timestamp":"2026-11-22T07:15:03Z",
        "host":"api.open-meteo.com","path":"/v1/forecast","purpose":"weather"})"))
        << "bytes is left out when absent";

    const std::vector<Entry> expected{
        {start + 5s, "huggingface.co", "/model.gguf", Purpose::modelDownload, 4'294'967'296},
        {start, "api.open-meteo.com", "/v1/forecast", Purpose::weather, std::nullopt}};
    EXPECT_EQ(log.recentEntries(10), expected);
    const auto reread = logOnFile();
    EXPECT_EQ(reread.recentEntries(10), expected);
    EXPECT_EQ(reread.recentEntries(1), std::vector<Entry>{expected[0]});
    EXPECT_TRUE(reread.recentEntries(0).empty());
}

TEST_F(NetworkActivityLogTest, EveryPurposeSurvivesTheFileUnderItsCaseName) {
    auto log = logOnFile();
    const std::vector<std::pair<Purpose, std::string>> purposes{
        {Purpose::webSearch, "webSearch"},
        {Purpose::weather, "weather"},
        {Purpose::currency, "currency"},
        {Purpose::modelDownload, "modelDownload"},
        {Purpose::modelUpdateCheck, "modelUpdateCheck"}};
    for (const auto& [purpose, raw] : purposes) log.record("example.com", "/" + raw, purpose);
    const auto json = fileJSON();
    const auto reread = logOnFile().recentEntries(10);
    ASSERT_EQ(reread.size(), purposes.size());
    for (std::size_t i = 0; i < purposes.size(); ++i) {
        const auto& [purpose, raw] = purposes[purposes.size() - 1 - i];
        EXPECT_EQ(json[i]["purpose"], raw);
        EXPECT_EQ(reread[i].purpose, purpose);
    }
}

TEST_F(NetworkActivityLogTest, LoopbackHostsAreNeitherStoredNorWritten) {
    auto log = logOnFile();
    for (const char* host :
         {"LOCALHOST", "localhost", "127.0.0.1", "::1", "router.localhost", "A.LocalHost"}) {
        log.record(host, "/completion", Purpose::webSearch);
    }
    EXPECT_TRUE(log.recentEntries(10).empty());
    EXPECT_FALSE(std::filesystem::exists(file)) << "nothing is written for a local call";

    // Names that only look local leave the machine.
    for (const char* host : {"localhost.example.com", "127.0.0.2", "mylocalhost", "::2"}) {
        log.record(host, "/", Purpose::webSearch);
    }
    EXPECT_EQ(log.recentEntries(10).size(), 4u);
}

// A file of an older version, or edited by hand: its loopback entries are left out, its offsets
// are taken into account and an explicit null byte count is absent.
TEST_F(NetworkActivityLogTest, AnOlderFileIsReadWithoutItsLoopbackEntries) {
    base::writeFileAtomically(file, R"([
        {"timestamp":"2026-11-22T07:00:00Z","host":"127.0.0.1","path":"/health","purpose":"webSearch"},
        {"timestamp":"2026-11-22T07:00:00+09:00","host":"api.tavily.com","path":"/search","purpose":"webSearch","bytes":null},
        {"timestamp":"2026-11-22T05:00:00Z","host":"Localhost","path":"/","purpose":"weather"}])");
    const auto log = logOnFile();
    const auto entries = log.recentEntries(10);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].host, "api.tavily.com");
    EXPECT_EQ(entries[0].bytes, std::nullopt);
    EXPECT_EQ(entries[0].timestamp, start - 9h - 15min - 3s);
    EXPECT_EQ(log.count(24h), 1u);
}

TEST_F(NetworkActivityLogTest, KeepsOnlyTheNewest500) {
    auto log = logOnFile();
    for (int i = 0; i < 499; ++i) {
        log.record("host" + std::to_string(i) + ".example", "/", Purpose::webSearch);
        clock.advance(1s);
    }
    EXPECT_FALSE(log.isAtCapacity());
    log.record("host499.example", "/", Purpose::webSearch);
    EXPECT_TRUE(log.isAtCapacity());
    clock.advance(1s);
    log.record("host500.example", "/", Purpose::webSearch);

    const auto entries = log.recentEntries(1000);
    ASSERT_EQ(entries.size(), 500u);
    EXPECT_EQ(entries.front().host, "host500.example");
    EXPECT_EQ(entries.back().host, "host1.example") << "the oldest entry is pushed out";
    EXPECT_EQ(fileJSON().size(), 500u);
    EXPECT_EQ(logOnFile().recentEntries(1000), entries);
}

TEST_F(NetworkActivityLogTest, ADamagedFileReadsAsEmptyAndIsReplacedAtTheNextRecord) {
    const std::vector<std::string> damaged{
        "not json at all",
        R"({"timestamp":"2026-11-22T07:00:00Z","host":"a.com","path":"/","purpose":"weather"})",
        R"([{"timestamp":"2026-11-22T07:00:00Z","host":"a.com","path":"/","purpose":"teleport"}])",
        R"([{"timestamp":"yesterday","host":"a.com","path":"/","purpose":"weather"}])",
        R"([{"timestamp":"2026-11-22T07:00:00Z","path":"/","purpose":"weather"}])",
        R"([{"timestamp":"2026-11-22T07:00:00Z","host":"a.com","path":"/","purpose":"weather","bytes":"12"}])",
    };
    for (const auto& text : damaged) {
        base::writeFileAtomically(file, text);
        auto log = logOnFile();
        EXPECT_TRUE(log.recentEntries(10).empty()) << text;
        EXPECT_EQ(log.count(24h), 0u) << text;
        log.record("api.frankfurter.app", "/v1/latest", Purpose::currency);
        const auto json = fileJSON();
        ASSERT_EQ(json.size(), 1u) << text;
        EXPECT_EQ(json[0]["host"], "api.frankfurter.app");
    }
}

TEST_F(NetworkActivityLogTest, CountsOnlyEntriesWithinTheWindow) {
    auto log = logOnFile();
    log.record("old.example", "/", Purpose::weather);
    clock.advance(1h);
    log.record("edge.example", "/", Purpose::weather);
    clock.advance(24h);
    log.record("recent.example", "/", Purpose::currency);

    EXPECT_EQ(log.count(24h), 2u) << "an entry exactly 24 hours old still counts";
    EXPECT_EQ(log.count(24h - 1s), 1u);
    EXPECT_EQ(log.count(0s), 1u);
    clock.advance(1s);
    EXPECT_EQ(log.count(0s), 0u);
    EXPECT_EQ(log.count(48h), 3u);
}

// Without a file, or with one that cannot be written, the log lives in memory.
TEST_F(NetworkActivityLogTest, WhatCannotBeWrittenIsKeptInMemory) {
    NetworkActivityLog memory(clock.clock());
    memory.record("api.tavily.com", "/search", Purpose::webSearch);
    memory.record("::1", "/", Purpose::webSearch);
    EXPECT_EQ(memory.recentEntries(10).size(), 1u);
    EXPECT_EQ(memory.count(1h), 1u);
    EXPECT_FALSE(std::filesystem::exists(file.parent_path()));

    // The log's folder is taken by a plain file: nothing can be written below it.
    base::writeFileAtomically(file.parent_path(), "in the way");
    auto log = logOnFile();
    EXPECT_NO_THROW(log.record("api.tavily.com", "/search", Purpose::webSearch));
    EXPECT_EQ(log.recentEntries(10).size(), 1u);
}

TEST_F(NetworkActivityLogTest, ConcurrentRecordsAreAllKept) {
    auto log = logOnFile();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&log, t] {
            for (int i = 0; i < 25; ++i)
                log.record("t" + std::to_string(t) + ".example", "/", Purpose::webSearch);
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(log.recentEntries(500).size(), 100u);
    EXPECT_EQ(logOnFile().recentEntries(500).size(), 100u);
}

TEST(ISO8601Timestamp, ReadsWhatItWritesAndTheCommonVariants) {
    EXPECT_EQ(base::iso8601Timestamp(start), "2026-11-22T07:15:03Z");
    EXPECT_EQ(base::iso8601Timestamp(start + 999ms), "2026-11-22T07:15:03Z");
    EXPECT_EQ(parseISO8601Timestamp("2026-11-22T07:15:03Z"), start);
    EXPECT_EQ(parseISO8601Timestamp("2026-11-22T07:15:03.250Z"), start + 250ms);
    EXPECT_EQ(parseISO8601Timestamp("2026-11-22T02:15:03-05:00"), start);
    EXPECT_EQ(parseISO8601Timestamp("2026-11-22T16:15:03+0900"), start);
    EXPECT_EQ(parseISO8601Timestamp("2024-02-29T00:00:00Z"),
              TimePoint(std::chrono::sys_days(std::chrono::year(2024) / 2 / 29)));
    for (const char* bad :
         {"2026-02-29T00:00:00Z", "2026-11-22T24:00:00Z", "2026-11-22 07:15:03Z",
          "2026-11-22T07:15:03", "2026-11-22T07:15:03Zjunk", "", "2026-13-01T00:00:00Z",
          // Beyond what the clock can hold.
          "1013-11-22T05:00:00Z", "9999-12-31T23:59:59Z"}) {
        EXPECT_EQ(parseISO8601Timestamp(bad), std::nullopt) << bad;
    }
}

}  // namespace
}  // namespace nuvrel::app
