#include "app/json_settings_store.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <vector>

#include "app/settings_catalog.h"
#include "base/files.h"
#include "base/paths.h"
#include "support/recording_sink.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

namespace fs = std::filesystem;

class JsonSettingsStoreFile : public testing::Test {
protected:
    test::TemporaryHome home;
    fs::path file = base::XdgPaths::fromEnvironment().settingsFile();

    void writeRaw(std::string_view bytes) { base::writeFileAtomically(file, bytes); }
    nlohmann::json onDisk() const {
        return nlohmann::json::parse(base::readFile(file).value_or(""), nullptr, false);
    }
};

TEST_F(JsonSettingsStoreFile, ADamagedFileReadsAsEmptyAndIsReplacedOnTheNextWrite) {
    for (const std::string damaged :
         {"{\"lang\": \"ko\"", "[1, 2]", "\"ko\"", "", "\xff\xfe{}", "null"}) {
        writeRaw(damaged);
        test::RecordedDiagnostics recorded;
        JsonSettingsStore store(file, recorded.diagnostics);
        EXPECT_FALSE(store.contains("lang")) << damaged;
        EXPECT_EQ(std::ranges::count(recorded.sink->text(), '\n'), damaged.empty() ? 0 : 1)
            << damaged;
        store.set("lang", "ja");
        EXPECT_EQ(onDisk(), (nlohmann::json{{"lang", "ja"}})) << damaged;
    }

    fs::remove(file);
    JsonSettingsStore missing(file);
    EXPECT_FALSE(missing.string("lang"));

    // A folder where the file belongs: empty, one line, and the program goes on.
    fs::create_directories(file);
    test::RecordedDiagnostics recorded;
    JsonSettingsStore folder(file, recorded.diagnostics);
    EXPECT_FALSE(folder.contains("lang"));
    EXPECT_EQ(std::ranges::count(recorded.sink->text(), '\n'), 1);
}

TEST_F(JsonSettingsStoreFile, AValueOfTheWrongTypeReadsAsAbsent) {
    writeRaw(R"({"lang": 5, "hotkeyKeyCode": "49", "flag": "1", "on": true,
                 "huge": 18446744073709551615, "real": 1.5, "whole": 7, "nested": {"a": 1}})");
    JsonSettingsStore store(file);
    EXPECT_EQ(store.string("lang"), std::nullopt);
    EXPECT_EQ(store.integer("hotkeyKeyCode"), std::nullopt);
    EXPECT_EQ(store.boolean("flag"), std::nullopt);
    EXPECT_EQ(store.string("flag"), "1");
    EXPECT_EQ(store.integer("on"), std::nullopt);
    EXPECT_EQ(store.boolean("on"), true);
    EXPECT_EQ(store.integer("huge"), std::nullopt);
    EXPECT_EQ(store.integer("real"), std::nullopt);
    EXPECT_EQ(store.number("real"), 1.5);
    EXPECT_EQ(store.number("whole"), 7.0);
    EXPECT_EQ(store.integer("whole"), 7);
    EXPECT_EQ(store.string("nested"), std::nullopt);
    EXPECT_TRUE(store.contains("nested"));
    EXPECT_FALSE(store.contains("absent"));

    // Known keys of the wrong type are named in one line; unknown keys are not the program's.
    test::RecordedDiagnostics recorded;
    reportMistypedSettings(store, recorded.diagnostics);
    EXPECT_EQ(recorded.sink->text(),
              "[Nuvrel] settings of the wrong type read as absent, their defaults apply: lang, "
              "hotkeyKeyCode\n");
}

TEST_F(JsonSettingsStoreFile, ValuesRoundTripThroughTheFileWithTheirTypes) {
    constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    {
        JsonSettingsStore store(file);
        store.set("networkFeaturesEnabled", "0");
        store.set("memorySavingModeEnabled", "1");
        store.set("onDevice", true);
        store.set("hotkeyModifiers", std::int64_t{2048});
        store.set("low", smallest);
        store.set("high", largest);
        store.set("modelUpdateLastCheck", 1718000000.25);
        store.set("searxngEndpoint", "https://例え.jp/検索");
        store.set("gone", "soon");
        store.remove("gone");
        store.remove("never there");
    }
    JsonSettingsStore reloaded(file);
    EXPECT_EQ(reloaded.string("networkFeaturesEnabled"), "0");
    EXPECT_EQ(reloaded.boolean("networkFeaturesEnabled"), std::nullopt);
    EXPECT_EQ(reloaded.integer("networkFeaturesEnabled"), std::nullopt);
    EXPECT_EQ(reloaded.string("memorySavingModeEnabled"), "1");
    EXPECT_EQ(reloaded.boolean("onDevice"), true);
    EXPECT_EQ(reloaded.integer("hotkeyModifiers"), 2048);
    EXPECT_EQ(reloaded.integer("low"), smallest);
    EXPECT_EQ(reloaded.integer("high"), largest);
    EXPECT_EQ(reloaded.number("modelUpdateLastCheck"), 1718000000.25);
    EXPECT_EQ(reloaded.string("searxngEndpoint"), "https://例え.jp/検索");
    EXPECT_FALSE(reloaded.contains("gone"));
}

TEST_F(JsonSettingsStoreFile, AnUnwritableFileKeepsTheValueForTheSession) {
    const fs::path blocked = home.path() / "not-a-folder" / "settings.json";
    base::writeFileAtomically(home.path() / "not-a-folder", "a file in the way");
    const nuvrel::test::RecordedDiagnostics recorded;
    JsonSettingsStore store(blocked, recorded.diagnostics);
    store.set("lang", "ko");
    const auto log = recorded.sink->text();
    EXPECT_EQ(store.string("lang"), "ko");
    EXPECT_EQ(log.rfind("[Nuvrel] settings could not be written (", 0), 0u) << log;
}

}  // namespace
}  // namespace nuvrel::app
