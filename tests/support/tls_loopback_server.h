#pragma once
// A real HTTPS server on 127.0.0.1 at an ephemeral port, for tests of code whose addresses
// are always https. It presents a self-signed test certificate for 127.0.0.1 and localhost;
// a client trusts it through caCertificatesFile(). Handlers are registered as with
// LoopbackServer.

#include <httplib.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace nuvrel::test {

class TlsLoopbackServer {
public:
    explicit TlsLoopbackServer(const std::function<void(httplib::Server&)>& routes);
    ~TlsLoopbackServer();
    TlsLoopbackServer(const TlsLoopbackServer&) = delete;
    TlsLoopbackServer& operator=(const TlsLoopbackServer&) = delete;

    int port() const { return port_; }
    // "https://127.0.0.1:<port>" followed by `path`.
    std::string url(std::string_view path = "/") const;
    // The PEM file of the server's certificate, which is its own authority.
    std::string caCertificatesFile() const;

    // As LoopbackServer::pause: false at once when the server is being stopped.
    bool pause(std::chrono::milliseconds duration);

private:
    std::filesystem::path folder_;
    std::unique_ptr<httplib::SSLServer> server_;
    int port_ = 0;
    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable stopping_;
    bool stopped_ = false;
};

}  // namespace nuvrel::test
