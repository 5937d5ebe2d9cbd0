#include "base/files.h"

#include <gtest/gtest.h>

#include <map>

#include "base/paths.h"
#include "support/temporary_home.h"

namespace nuvrel::base {
namespace {

TEST(XdgPaths, DefaultsBelowHomeAndRelativeValuesIgnored) {
    std::map<std::string, std::string> env{
        {"HOME", "/home/u"}, {"XDG_DATA_HOME", "relative/data"}, {"XDG_CONFIG_HOME", "/etc/cfg"}};
    auto paths = XdgPaths::fromEnvironment([&](const char* name) -> std::optional<std::string> {
        auto it = env.find(name);
        if (it == env.end()) return std::nullopt;
        return it->second;
    });
    EXPECT_EQ(paths.dataHome, "/home/u/.local/share");
    EXPECT_EQ(paths.configHome, "/etc/cfg");
    EXPECT_EQ(paths.stateHome, "/home/u/.local/state");
    EXPECT_EQ(paths.modelsDirectory(), "/home/u/.local/share/nuvrel/models");
    EXPECT_EQ(paths.logsDirectory(), "/home/u/.local/state/nuvrel/logs");
    EXPECT_EQ(paths.settingsFile(), "/etc/cfg/nuvrel/settings.json");
    EXPECT_EQ(paths.networkActivityFile(), "/home/u/.local/share/nuvrel/network-activity.json");
}

TEST(Files, AtomicWriteCreatesFoldersReplacesWholeAndLeavesNoTemporary) {
    test::TemporaryHome home;
    const auto file = home.path() / "a" / "b" / "settings.json";
    writeFileAtomically(file, "first");
    writeFileAtomically(file, "second, longer");
    EXPECT_EQ(readFile(file), "second, longer");
    int entries = 0;
    for ([[maybe_unused]] auto& entry : std::filesystem::directory_iterator(file.parent_path()))
        ++entries;
    EXPECT_EQ(entries, 1);
    EXPECT_FALSE(readFile(home.path() / "missing"));
    EXPECT_THROW(writeFileAtomically("/proc/nuvrel-cannot-write/x", "y"),
                 std::filesystem::filesystem_error);
}

}  // namespace
}  // namespace nuvrel::base
