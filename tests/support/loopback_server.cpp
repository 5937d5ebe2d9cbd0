#include "support/loopback_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace nuvrel::test {

namespace {

// httplib 0.11 lets a worker wait out an idle keep-alive connection (5 s) even after stop(),
// so a client that keeps its connection open would hold up the destructor. Shutting down the
// server's side of every accepted connection ends those waits at once.
void shutDownAcceptedConnections(int port) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
        int fd = -1;
        try {
            fd = std::stoi(entry.path().filename().string());
        } catch (const std::exception&) {
            continue;
        }
        sockaddr_in local{};
        socklen_t length = sizeof local;
        if (::getsockname(fd, reinterpret_cast<sockaddr*>(&local), &length) != 0 ||
            local.sin_family != AF_INET || ntohs(local.sin_port) != port) {
            continue;
        }
        int listening = 0;
        socklen_t optionLength = sizeof listening;
        ::getsockopt(fd, SOL_SOCKET, SO_ACCEPTCONN, &listening, &optionLength);
        if (listening == 0) ::shutdown(fd, SHUT_RDWR);
    }
}

}  // namespace

LoopbackServer::LoopbackServer(const std::function<void(httplib::Server&)>& routes,
                               std::string host)
    : host_(std::move(host)) {
    routes(server_);
    port_ = server_.bind_to_any_port(host_);
    if (port_ <= 0) throw std::runtime_error("loopback server: no port to bind");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    // The socket listens from bind on, so connections already queue; waiting for the loop
    // makes stop() in the destructor reach a running server.
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!server_.is_running()) {
        if (std::chrono::steady_clock::now() > giveUp) {
            server_.stop();
            thread_.join();
            throw std::runtime_error("loopback server: did not start");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

LoopbackServer::~LoopbackServer() {
    {
        std::lock_guard lock(mutex_);
        stopped_ = true;
    }
    stopping_.notify_all();
    server_.stop();
    shutDownAcceptedConnections(port_);
    thread_.join();
}

std::string LoopbackServer::url(std::string_view path) const {
    return "http://" + host_ + ":" + std::to_string(port_) + std::string(path);
}

bool LoopbackServer::pause(std::chrono::milliseconds duration) {
    std::unique_lock lock(mutex_);
    return !stopping_.wait_for(lock, duration, [&] { return stopped_; });
}

}  // namespace nuvrel::test
