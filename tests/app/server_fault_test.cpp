// The program against a model server that fails under it, in real processes: the real
// llama-server killed in the middle of a routed call, and a server that takes the connection
// and never answers.
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include "base/files.h"
#include "base/paths.h"
#include "llm/model_resolution.h"
#include "llm/pid_file_text.h"
#include "support/helper_process.h"
#include "support/real_llama_server.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::string_view unreachable = "Couldn't reach the local model";

// `nuvrel` with the router's server on `port`, its arguments behind the program's name.
std::unique_ptr<test::HelperProcess> nuvrelOnPort(int port, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), NUVREL_PATH);
    // The program finds the real server on its PATH, the temporary home having none.
    const std::string path = std::getenv("PATH");
    ::setenv("PATH", (test::realServerBinary().parent_path().string() + ":" + path).c_str(), 1);
    ::setenv("NUVREL_DEBUG_ROUTER_PORT", std::to_string(port).c_str(), 1);
    auto process = std::make_unique<test::HelperProcess>(arguments);
    ::unsetenv("NUVREL_DEBUG_ROUTER_PORT");
    ::setenv("PATH", path.c_str(), 1);
    return process;
}

// The tiny model as the router's model of the temporary home.
void installTinyModel() {
    const auto models = base::XdgPaths::fromEnvironment().modelsDirectory();
    std::filesystem::create_directories(models);
    std::filesystem::create_symlink(test::tinyTestModel(), models / llm::interimModelFileName);
}

// Gone for good: neither running nor a zombie waiting to be reaped.
bool gone(pid_t pid) {
    return ::kill(pid, 0) != 0;
}

TEST(ServerFaultTest, AServerKilledMidCallEndsInTheUnreachableCardAndTheNextSentenceStartsAnew) {
    ASSERT_TRUE(test::realServerAvailable());
    test::TemporaryHome home;
    installTinyModel();
    constexpr int port = 18673;
    const auto logs = base::XdgPaths::fromEnvironment().logsDirectory();
    const auto pidFile = logs / ("llama-server-" + std::to_string(port) + ".pid");
    const auto serverPID = [&]() -> std::optional<pid_t> {
        const auto fields = llm::PIDFileText::fields(base::readFile(pidFile).value_or(""));
        if (fields.size() < 2) return std::nullopt;
        return llm::PIDFileText::parsePID(fields[1]);
    };

    const auto nuvrel = nuvrelOnPort(port, {"--json", "--lang", "en", "--no-network"});
    ASSERT_TRUE(nuvrel->writeLine("아 오늘 진짜 피곤하다"));
    // Every server is killed as soon as it is spawned for the call, until the card comes.
    std::vector<pid_t> killed;
    std::optional<std::string> card;
    const auto deadline = Clock::now() + 100s;
    while (!card && Clock::now() < deadline) {
        const auto pid = serverPID();
        if (pid && (killed.empty() || killed.back() != *pid)) {
            ASSERT_EQ(::kill(*pid, SIGKILL), 0);
            killed.push_back(*pid);
        }
        card = nuvrel->readLine(5ms);
    }
    ASSERT_FALSE(killed.empty()) << "the routed call never reached a server: " << card.value_or("");
    ASSERT_TRUE(card);
    EXPECT_NE(card->find(unreachable), std::string::npos) << *card;
    ASSERT_TRUE(nuvrel->writeLine("아 오늘 진짜 피곤하다"));
    const auto next = nuvrel->readLine(100s);
    ASSERT_TRUE(next);
    EXPECT_EQ(next->find(unreachable), std::string::npos) << *next;
    const auto third = serverPID();
    ASSERT_TRUE(third);
    EXPECT_NE(*third, killed.back());
    // The next request found the dead children and reaped them: no zombie is left.
    for (const pid_t pid : killed) EXPECT_TRUE(gone(pid)) << pid;
    EXPECT_FALSE(gone(*third));

    nuvrel->closeInput();
    ASSERT_TRUE(nuvrel->waitForExit(30s));
    EXPECT_TRUE(gone(*third)) << "the program left its server behind";
}

// A listening socket that the kernel completes connections for and nobody ever reads.
class SilentServer {
public:
    SilentServer() {
        fd_ = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (::bind(fd_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            ::listen(fd_, 64) != 0 ||
            ::getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
            ADD_FAILURE() << "no silent server";
        }
        port_ = ntohs(address.sin_port);
    }
    ~SilentServer() { ::close(fd_); }
    int port() const { return port_; }

private:
    int fd_ = -1;
    int port_ = 0;
};

TEST(ServerFaultTest, AServerThatNeverAnswersEndsAtItsTimeOutAndCtrlCEndsItAtOnce) {
    ASSERT_TRUE(test::realServerAvailable());
    test::TemporaryHome home;
    installTinyModel();
    const SilentServer server;
    const std::vector<std::string> ask{"ask", "--json",       "--lang",
                                       "en",  "--no-network", "아 오늘 진짜 피곤하다"};

    const auto interrupted = nuvrelOnPort(server.port(), ask);
    std::this_thread::sleep_for(1500ms);
    ::kill(interrupted->pid(), SIGINT);
    const auto stopped = interrupted->waitForExit(5s);
    ASSERT_TRUE(stopped) << "Ctrl-C did not end the call";
    EXPECT_TRUE(WIFEXITED(*stopped) && WEXITSTATUS(*stopped) == 130) << *stopped;

    const auto waited = nuvrelOnPort(server.port(), ask);
    const auto card = waited->readLine(90s);
    const auto status = waited->waitForExit(5s);
    ASSERT_TRUE(status) << "the call never ended";
    EXPECT_TRUE(WIFEXITED(*status) && WEXITSTATUS(*status) == 1) << *status;
    ASSERT_TRUE(card);
    EXPECT_NE(card->find(unreachable), std::string::npos) << *card;
}

}  // namespace
}  // namespace nuvrel::app
