// A one-shot `nuvrel ask` while another live instance owns the router's server: the program
// finds it healthy, uses it as a guest and leaves it running.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

#include "base/files.h"
#include "base/paths.h"
#include "llm/model_resolution.h"
#include "support/helper_process.h"
#include "support/real_llama_server.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

using namespace std::chrono_literals;

TEST(GuestServerTest, AOneShotAskUsesTheServerAnotherInstanceOwnsAndLeavesItRunning) {
    ASSERT_TRUE(test::realServerAvailable());
    test::TemporaryHome home;
    const auto models = base::XdgPaths::fromEnvironment().modelsDirectory();
    std::filesystem::create_directories(models);
    const auto model = models / llm::interimModelFileName;
    std::filesystem::create_symlink(test::tinyTestModel(), model);
    constexpr int port = 18667;
    const auto pidFile = base::XdgPaths::fromEnvironment().logsDirectory() /
                         ("llama-server-" + std::to_string(port) + ".pid");

    test::HelperProcess owner({PROCESS_HELPER_PATH, "own-server", test::realServerBinary().string(),
                               model.string(), std::to_string(port)});
    const auto line = owner.readLine(60s);
    ASSERT_TRUE(line) << "the owning instance never started its server";
    const pid_t server = std::stoi(*line);
    const auto record = base::readFile(pidFile);
    ASSERT_TRUE(record);

    ::setenv("NUVREL_DEBUG_ROUTER_PORT", std::to_string(port).c_str(), 1);
    test::HelperProcess ask(
        {NUVREL_PATH, "ask", "--json", "--lang", "en", "--no-network", "아 오늘 진짜 피곤하다"});
    ::unsetenv("NUVREL_DEBUG_ROUTER_PORT");
    const auto output = ask.readLine(60s);
    const auto status = ask.waitForExit(60s);
    ASSERT_TRUE(status) << "the one-shot ask did not end";
    ASSERT_TRUE(WIFEXITED(*status));
    EXPECT_LE(WEXITSTATUS(*status), 1);
    ASSERT_TRUE(output);
    const auto outcome = nlohmann::json::parse(*output, nullptr, false);
    ASSERT_TRUE(outcome.is_object()) << *output;
    // Routed by the real server: no fast path takes this sentence, and the server answered.
    EXPECT_NE(output->find("outcome"), std::string::npos) << *output;
    EXPECT_EQ(output->find("Couldn't reach the local model"), std::string::npos) << *output;

    EXPECT_EQ(::kill(server, 0), 0) << "the guest stopped the owner's server";
    EXPECT_EQ(base::readFile(pidFile), record);

    owner.closeInput();
    ASSERT_TRUE(owner.waitForExit(20s));
    EXPECT_NE(::kill(server, 0), 0);
}

}  // namespace
}  // namespace nuvrel::app
