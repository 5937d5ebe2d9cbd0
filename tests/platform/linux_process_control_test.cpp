#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "base/files.h"
#include "platform/live_process_control.h"
#include "support/temporary_home.h"

namespace nuvrel::platform {
namespace {

using namespace std::chrono_literals;
using base::ChildProcess;
using base::Signal;
using base::SignalResult;

// A socket of this process on 127.0.0.1 or ::1 at an ephemeral port; listening or not. It is
// inheritable on purpose: a spawn must close it in the child all the same.
class TestSocket {
public:
    TestSocket(int family, bool listening) : fd_(::socket(family, SOCK_STREAM, 0)) {
        if (family == AF_INET) {
            sockaddr_in address{};
            address.sin_family = AF_INET;
            address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
            EXPECT_EQ(::bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
            socklen_t size = sizeof address;
            ::getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &size);
            port_ = ntohs(address.sin_port);
        } else {
            sockaddr_in6 address{};
            address.sin6_family = AF_INET6;
            address.sin6_addr = in6addr_loopback;
            EXPECT_EQ(::bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
            socklen_t size = sizeof address;
            ::getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &size);
            port_ = ntohs(address.sin6_port);
        }
        if (listening) {
            EXPECT_EQ(::listen(fd_, 4), 0);
        }
    }
    ~TestSocket() { ::close(fd_); }
    int port() const { return port_; }

private:
    int fd_;
    int port_ = 0;
};

bool waitUntilExited(ChildProcess& child, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (child.isRunning()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(10ms);
    }
    return true;
}

TEST(LinuxProcessControl, NamesThisProcessAsTheListenerOfItsOwnSockets) {
    auto processes = liveProcessControl();
    const std::vector<std::int32_t> self{::getpid()};
    {
        TestSocket ipv4(AF_INET, true);
        EXPECT_EQ(processes->listeningPIDs(ipv4.port()), self);
    }
    {
        TestSocket ipv6(AF_INET6, true);
        EXPECT_EQ(processes->listeningPIDs(ipv6.port()), self);
    }
    // Bound but not listening: nobody listens on that port.
    TestSocket bound(AF_INET, false);
    EXPECT_TRUE(processes->listeningPIDs(bound.port()).empty());

    EXPECT_EQ(processes->processName(::getpid()), "platform_tests");
    EXPECT_EQ(processes->ownPID(), ::getpid());
    EXPECT_EQ(processes->processName(0), std::nullopt);
}

TEST(LinuxProcessControl, SpawnsWithOutputToTheFileInItsOwnGroupAndReapsOnce) {
    test::TemporaryHome home;
    auto processes = liveProcessControl();
    const auto output = home.path() / "out.log";
    base::writeFileAtomically(output, "");
    // The socket must not leak into the child, or the child would listen on it too.
    TestSocket listener(AF_INET, true);

    // "exec" keeps the shell's PID for sleep, so the handle's process is the sleeper.
    auto child = processes->spawn(
        {"/bin/sh", {"-c", "echo out:$0; echo err:$1 >&2; exec sleep 30", "a b", "c"}, output});
    ASSERT_TRUE(child->isRunning());
    EXPECT_EQ(::getpgid(child->pid()), child->pid());
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(processes->processName(child->pid()), "sleep");
    EXPECT_EQ(processes->listeningPIDs(listener.port()), std::vector<std::int32_t>{::getpid()});
    EXPECT_EQ(processes->signal(child->pid(), Signal::probe), SignalResult::delivered);

    // Blocking SIGTERM here must not block it in children spawned afterwards.
    sigset_t term, previous;
    sigemptyset(&term);
    sigaddset(&term, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &term, &previous);
    auto second = processes->spawn({"/bin/sleep", {"30"}, output});
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    EXPECT_TRUE(second->signal(Signal::terminate));
    EXPECT_TRUE(waitUntilExited(*second, 2s));

    EXPECT_TRUE(child->signal(Signal::terminate));
    ASSERT_TRUE(waitUntilExited(*child, 2s));
    EXPECT_FALSE(child->signal(Signal::kill));  // reaped: the ID is no longer ours to signal
    EXPECT_EQ(processes->signal(child->pid(), Signal::probe), SignalResult::noSuchProcess);
    EXPECT_EQ(base::readFile(output), "out:a b\nerr:c\n");

    EXPECT_THROW(processes->spawn({home.path() / "missing", {}, output}), std::system_error);
}

}  // namespace
}  // namespace nuvrel::platform
