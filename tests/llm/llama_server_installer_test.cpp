#include "llm/llama_server_installer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "base/cancellation.h"
#include "base/files.h"
#include "base/task.h"
#include "platform/live_llm.h"
#include "support/temporary_home.h"

namespace nuvrel::llm {
namespace {

using namespace std::chrono_literals;
namespace Installer = LlamaServerInstaller;

struct Recorder {
    std::vector<std::string> calls;
    std::optional<std::filesystem::path> binary;
    std::optional<std::filesystem::path> installer;
    std::optional<std::filesystem::path> installedBinary;

    Installer::Operations operations() {
        return {
            .findServerBinary =
                [this] {
                    calls.push_back("find");
                    return binary;
                },
            .findInstaller =
                [this] {
                    calls.push_back("installer");
                    return installer;
                },
            .runInstall =
                [this](const std::filesystem::path& path) {
                    calls.push_back("run " + path.string());
                    binary = installedBinary;
                },
            .networkLog =
                [this](std::string_view host, std::string_view path) {
                    calls.push_back("log " + std::string(host) + " " + std::string(path));
                },
        };
    }
};

TEST(LlamaServerInstallerTest, InstallsOnlyWhatIsMissingAndLogsTheDownloadFirst) {
    Recorder present;
    present.binary = "/opt/bin/llama-server";
    EXPECT_EQ(Installer::installIfMissing(present.operations()), present.binary);
    EXPECT_EQ(present.calls, std::vector<std::string>{"find"});

    Recorder noInstaller;
    EXPECT_EQ(Installer::installIfMissing(noInstaller.operations()), std::nullopt);
    EXPECT_EQ(noInstaller.calls, (std::vector<std::string>{"find", "installer"}));

    Recorder missing;
    missing.installer = "/src/scripts/install-llama-server.sh";
    missing.installedBinary = "/cache/bin/llama-server";
    EXPECT_EQ(Installer::installIfMissing(missing.operations()), missing.installedBinary);
    EXPECT_EQ(missing.calls,
              (std::vector<std::string>{"find", "installer",
                                        "log npm (node-llama-cpp) install llama-server",
                                        "run /src/scripts/install-llama-server.sh", "find"}));

    // An installation that leaves no binary behind gives nothing, not the installer's word.
    Recorder failing;
    failing.installer = "/src/scripts/install-llama-server.sh";
    EXPECT_EQ(Installer::installIfMissing(failing.operations()), std::nullopt);
}

TEST(LlamaServerInstallerTest, TheProjectScriptIsFoundFromTheBuildTree) {
    const auto script = Installer::findInstallScript();
    ASSERT_TRUE(script);
    EXPECT_TRUE(std::filesystem::is_regular_file(*script));
    EXPECT_EQ(script->filename(), "install-llama-server.sh");
}

TEST(LlamaServerInstallerTest, TheLiveRunWaitsForTheScriptAndACancelEndsItsWholeGroup) {
    nuvrel::test::TemporaryHome home;
    const auto script = home.path() / "install.sh";
    const auto output = home.path() / "install.log";
    base::writeFileAtomically(script, "echo building\necho done > \"$HOME/marker\"\n");
    platform::liveRunInstall(script, output);
    EXPECT_EQ(base::readFile(home.path() / "marker"), "done\n");
    EXPECT_EQ(base::readFile(output), "building\n");

    // A long build: the script waits on a child of its own, as it waits on the compiler.
    const auto childFile = home.path() / "child";
    base::writeFileAtomically(script, "sleep 30 &\necho $! > \"$HOME/child\"\nwait\n");
    base::Task<void> installing([&] { platform::liveRunInstall(script, output); });
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    while (!base::readFile(childFile).value_or("").ends_with("\n")) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
        std::this_thread::sleep_for(10ms);
    }
    const std::string child =
        base::readFile(childFile)->substr(0, base::readFile(childFile)->size() - 1);
    installing.cancel();
    EXPECT_THROW(installing.value(), base::Cancelled);
    // Gone, or a zombie waiting for init: either way no longer running.
    const auto running = [&] {
        const auto stat = base::readFile("/proc/" + child + "/stat");
        return stat && stat->find(") Z ") == std::string::npos;
    };
    const auto gone = std::chrono::steady_clock::now() + 5s;
    while (running() && std::chrono::steady_clock::now() < gone) {
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_FALSE(running()) << "the script's child outlived the cancelled install";
}

}  // namespace
}  // namespace nuvrel::llm
