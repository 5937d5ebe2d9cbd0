#pragma once
// A real HTTP server on 127.0.0.1 at an ephemeral port, for tests of anything that speaks
// HTTP. The test registers its handlers on the httplib::Server in the constructor's set-up
// function; the server then listens on its own thread until the object is destroyed.

#include <httplib.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace nuvrel::test {

class LoopbackServer {
public:
    // Calls `routes` to register handlers, then starts listening on `host` (any 127.x.y.z
    // address: a second one stands for another host); returns once it accepts connections.
    explicit LoopbackServer(const std::function<void(httplib::Server&)>& routes,
                            std::string host = "127.0.0.1");
    // Stops listening, wakes handlers waiting in pause(), closes connections that clients
    // keep open, and joins the server's threads.
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    int port() const { return port_; }
    // "http://<host>:<port>" followed by `path`.
    std::string url(std::string_view path = "/") const;

    // For slow handlers: waits `duration`, but returns false at once when the server is
    // being stopped, so that a test never waits for a handler that is still sleeping.
    bool pause(std::chrono::milliseconds duration);

private:
    httplib::Server server_;
    std::string host_;
    int port_ = 0;
    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable stopping_;
    bool stopped_ = false;
};

}  // namespace nuvrel::test
