#include "llm/server_binary.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "support/environment_override.h"
#include "support/temporary_home.h"

namespace nuvrel::llm {

inline void PrintTo(const ServerBinary& binary, std::ostream* out) {
    *out << binary.path << " (kind " << static_cast<int>(binary.kind) << ")";
}

namespace {

namespace fs = std::filesystem;
using Kind = ServerBinary::Kind;

void writeFile(const fs::path& path, fs::perms permissions) {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << "#!/bin/sh\nexit 0\n";
    fs::permissions(path, permissions);
}

void makeExecutable(const fs::path& path) {
    writeFile(path, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                        fs::perms::others_read | fs::perms::others_exec);
}

class CurrentDirectory {
public:
    explicit CurrentDirectory(const fs::path& path) : old_(fs::current_path()) {
        fs::current_path(path);
    }
    ~CurrentDirectory() { fs::current_path(old_); }

private:
    fs::path old_;
};

class ServerBinaryTest : public testing::Test {
protected:
    nuvrel::test::TemporaryHome home;
    fs::path programFolder = home.path() / "opt/nuvrel/bin";
    fs::path cacheInstall = installedServerPath();
    fs::path pathA = home.path() / "path-a";
    fs::path pathB = home.path() / "path-b";

    ServerBinarySearch search(
        std::optional<std::string> pathVariable,
        std::function<bool(const fs::path&)> isExecutable = liveIsExecutable) {
        return ServerBinarySearch{programFolder, cacheInstall, std::move(pathVariable),
                                  std::move(isExecutable)};
    }
};

TEST_F(ServerBinaryTest, ProbesEveryPlaceInOrderAndFindsNothingWhenNothingRuns) {
    std::vector<fs::path> probed;
    const auto recording = [&](const fs::path& path) {
        probed.push_back(path);
        return false;
    };
    // An empty entry would be the current folder: never probed.
    EXPECT_EQ(findServerBinary(search(pathA.string() + "::" + pathB.string(), recording)),
              std::nullopt);
    EXPECT_EQ(probed,
              (std::vector<fs::path>{
                  programFolder / "llama-server", cacheInstall, "/opt/homebrew/bin/llama-server",
                  "/usr/local/bin/llama-server", pathA / "llama-server", pathB / "llama-server"}));

    // PATH unset: nothing after the two fixed paths; no program folder: not probed.
    probed.clear();
    ServerBinarySearch withoutPath = search(std::nullopt, recording);
    withoutPath.executableDirectory = std::nullopt;
    EXPECT_EQ(findServerBinary(withoutPath), std::nullopt);
    EXPECT_EQ(probed, (std::vector<fs::path>{cacheInstall, "/opt/homebrew/bin/llama-server",
                                             "/usr/local/bin/llama-server"}));
}

TEST_F(ServerBinaryTest, FirstHitWinsFromBundledThroughFixedPathsToPATH) {
    makeExecutable(programFolder / "llama-server");
    makeExecutable(cacheInstall);
    makeExecutable(pathA / "llama-server");
    makeExecutable(pathB / "llama-server");
    // The fixed folders belong to the machine: stand-ins say which of them hold a server.
    std::set<fs::path> fixedHits = {"/opt/homebrew/bin/llama-server",
                                    "/usr/local/bin/llama-server"};
    const auto isExecutable = [&](const fs::path& path) {
        if (path.string().starts_with("/opt/homebrew/") ||
            path.string().starts_with("/usr/local/")) {
            return fixedHits.contains(path);
        }
        return liveIsExecutable(path);
    };
    const std::string pathVariable = pathA.string() + ":" + pathB.string();

    EXPECT_EQ(findServerBinary(search(pathVariable, isExecutable)),
              (ServerBinary{programFolder / "llama-server", Kind::bundled}));
    fs::remove(programFolder / "llama-server");
    EXPECT_EQ(findServerBinary(search(pathVariable, isExecutable)),
              (ServerBinary{cacheInstall, Kind::bundled}));
    fs::remove(cacheInstall);
    EXPECT_EQ(findServerBinary(search(pathVariable, isExecutable)),
              (ServerBinary{"/opt/homebrew/bin/llama-server", Kind::fixedPath}));
    fixedHits.erase("/opt/homebrew/bin/llama-server");
    EXPECT_EQ(findServerBinary(search(pathVariable, isExecutable)),
              (ServerBinary{"/usr/local/bin/llama-server", Kind::fixedPath}));
    fixedHits.clear();
    EXPECT_EQ(findServerBinary(search(pathVariable, isExecutable)),
              (ServerBinary{pathA / "llama-server", Kind::path}));
    fs::remove(pathA / "llama-server");
    EXPECT_EQ(findServerBinary(search(pathVariable, isExecutable)),
              (ServerBinary{pathB / "llama-server", Kind::path}));
}

TEST_F(ServerBinaryTest, OnlyExecutableFilesCount) {
    writeFile(programFolder / "llama-server", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_directories(cacheInstall);  // a folder named llama-server
    fs::permissions(cacheInstall, fs::perms::all);
    makeExecutable(pathB / "real-llama-server");
    fs::create_directories(pathA);
    fs::create_symlink(pathB / "real-llama-server", pathA / "llama-server");

    EXPECT_FALSE(liveIsExecutable(programFolder / "llama-server"));
    EXPECT_FALSE(liveIsExecutable(cacheInstall));
    EXPECT_EQ(findServerBinary(search(pathA.string())),
              (ServerBinary{pathA / "llama-server", Kind::path}));
}

TEST_F(ServerBinaryTest, PATHSkipsEmptyEntriesAndAnchorsRelativeOnesToTheCurrentFolder) {
    // A server in the current folder must not be found through an empty PATH entry.
    makeExecutable(home.path() / "llama-server");
    CurrentDirectory inHome(home.path());
    EXPECT_EQ(findServerBinary(search("::" + pathA.string() + ":")), std::nullopt);
    EXPECT_EQ(findServerBinary(search("")), std::nullopt);

    makeExecutable(home.path() / "tools/bin/llama-server");
    const auto found = findServerBinary(search(":tools/bin:"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->kind, Kind::path);
    EXPECT_TRUE(found->path.is_absolute()) << found->path;
    EXPECT_TRUE(fs::equivalent(found->path, home.path() / "tools/bin/llama-server"));
}

TEST_F(ServerBinaryTest, LiveSearchFindsTheScriptInstallInTheUsersCache) {
    EXPECT_EQ(cacheInstall, home.path() / ".cache/nuvrel/llama-server/3.22.1/bin/llama-server");
    test::EnvironmentOverride emptyPath("PATH", "");
    makeExecutable(cacheInstall);
    EXPECT_EQ(findServerBinary(), (ServerBinary{cacheInstall, Kind::bundled}));
    EXPECT_EQ(findServerBinaryPath(), cacheInstall);
    fs::remove(cacheInstall);
    // A machine with a server in a fixed folder finds that one instead, rightly.
    if (!liveIsExecutable("/opt/homebrew/bin/llama-server") &&
        !liveIsExecutable("/usr/local/bin/llama-server")) {
        EXPECT_EQ(findServerBinary(), std::nullopt);
    }
}

}  // namespace
}  // namespace nuvrel::llm
