// The panel as the resident program: it owns the router's server, a one-shot `nuvrel ask`
// runs as its guest, and quitting the panel takes the server with it.
#include <gtest/gtest.h>
#include <httplib.h>
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <thread>
#include <vector>

#include "base/files.h"
#include "base/paths.h"
#include "llm/model_resolution.h"
#include "support/environment_override.h"
#include "support/helper_process.h"
#include "support/private_bus.h"
#include "support/real_llama_server.h"
#include "support/temporary_home.h"

namespace {

using namespace std::chrono_literals;
using nuvrel::test::HelperProcess;

// The llama-server processes whose command line names `marker` (this test's home), from /proc.
std::vector<pid_t> serversNaming(const std::string& marker) {
    std::vector<pid_t> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        std::string comm, cmdline;
        std::getline(std::ifstream(entry.path() / "comm"), comm);
        std::getline(std::ifstream(entry.path() / "cmdline"), cmdline, '\x01');
        if (comm == "llama-server" && cmdline.find(marker) != std::string::npos)
            found.push_back(std::stoi(name));
    }
    return found;
}

bool healthy(int port) {
    httplib::Client client("127.0.0.1", port);
    client.set_connection_timeout(1s);
    const auto reply = client.Get("/health");
    return reply && reply->status == 200;
}

TEST(ResidentHost, AnAskUsesThePanelsServerAndQuittingThePanelStopsIt) {
    ASSERT_TRUE(nuvrel::test::realServerAvailable());
    nuvrel::test::TemporaryHome home;
    const auto paths = nuvrel::base::XdgPaths::fromEnvironment();
    std::filesystem::create_directories(paths.modelsDirectory());
    std::filesystem::create_symlink(nuvrel::test::tinyTestModel(),
                                    paths.modelsDirectory() / nuvrel::llm::interimModelFileName);
    // No web search behind a routed sentence: nothing leaves the machine.
    nuvrel::base::writeFileAtomically(paths.settingsFile(), R"({"networkFeaturesEnabled":"0"})");
    constexpr int port = 18683;
    nuvrel::test::PrivateBus bus;
    ASSERT_FALSE(bus.address.empty());
    nuvrel::test::EnvironmentOverride environment("QT_QPA_PLATFORM", "offscreen");
    environment.set("XDG_RUNTIME_DIR", home.path().c_str());
    environment.set("NUVREL_DEBUG_ROUTER_PORT", std::to_string(port).c_str());
    const std::string path =
        nuvrel::test::realServerBinary().parent_path().string() + ":" + std::getenv("PATH");
    environment.set("PATH", path.c_str());

    // A sentence that no fast path takes: the panel starts its router's server for it, and
    // says when its outcome is in (its diagnostics come on standard output).
    environment.set("NUVREL_DEBUG_QUERY", "아 오늘 진짜 피곤하다");
    HelperProcess panel{{"/bin/sh", "-c", "exec \"$0\" --background 2>&1", NUVREL_PANEL_PATH}};
    environment.set("NUVREL_DEBUG_QUERY", nullptr);
    std::optional<std::string> line;
    while ((line = panel.readLine(90s)) && line->find("[nuvrel-debug] outcome") != 0) {
    }
    ASSERT_TRUE(line) << "the panel's sentence never ended";
    const std::vector<pid_t> servers = serversNaming(home.path().string());
    ASSERT_EQ(servers.size(), 1u) << "the panel started no server of its own";
    ASSERT_TRUE(healthy(port));

    const auto ask = nuvrel::test::runToEnd(
        {NUVREL_PATH, "ask", "--json", "--lang", "en", "--no-network", "아 오늘 진짜 피곤하다"},
        60s);
    ASSERT_NE(ask.exitCode, -1) << "the one-shot ask did not end";
    // Routed by the panel's server: it answered, and no second server was started.
    EXPECT_EQ(ask.output.find("Couldn't reach the local model"), std::string::npos) << ask.output;
    EXPECT_EQ(serversNaming(home.path().string()), servers) << "the ask started its own server";
    EXPECT_TRUE(healthy(port)) << "the guest stopped the panel's server";

    ::kill(panel.pid(), SIGTERM);
    const auto ended = panel.waitForExit(30s);
    ASSERT_TRUE(ended && WIFEXITED(*ended) && WEXITSTATUS(*ended) == 0);
    EXPECT_TRUE(serversNaming(home.path().string()).empty()) << "a server outlived the panel";
    EXPECT_FALSE(std::filesystem::exists(paths.logsDirectory() /
                                         ("llama-server-" + std::to_string(port) + ".pid")));
}

}  // namespace
