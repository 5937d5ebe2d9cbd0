#pragma once
// A loopback server that serves one file at every path ending in ".gguf" as a model host does
// (HEAD, byte ranges, 206), and can misbehave as real hosts do: ignore Range, answer 416, report
// another size on HEAD, drop a connection half-way through a range, or redirect elsewhere.

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "support/loopback_server.h"

namespace nuvrel::test {

struct HostBehaviour {
    bool ignoreRange = false;
    bool answer416 = false;
    std::optional<std::uint64_t> headLength;
    // The first GET whose range starts at or after `dropAtOffset` sends half its bytes after a
    // pause, then closes the connection.
    std::optional<std::uint64_t> dropAtOffset;
    // Every request is answered with a 302 to this address.
    std::optional<std::string> redirectTo;

    static HostBehaviour make(void (*set)(HostBehaviour&)) {
        HostBehaviour behaviour;
        set(behaviour);
        return behaviour;
    }
};

class RangeFileServer {
public:
    // `routes` may add handlers of the test's own.
    explicit RangeFileServer(std::shared_ptr<const std::string> file,
                             std::string host = "127.0.0.1",
                             std::function<void(httplib::Server&)> routes = {});
    void setBehaviour(HostBehaviour behaviour);
    std::string url(std::string_view path = "/model.gguf") const { return server_->url(path); }
    int getRequests() const { return getRequests_; }
    std::string lastPath() {
        std::lock_guard lock(mutex_);
        return lastPath_;
    }

private:
    std::shared_ptr<const std::string> file_;
    std::mutex mutex_;
    HostBehaviour behaviour_;
    std::string lastPath_;
    std::atomic<int> getRequests_{0};
    std::unique_ptr<LoopbackServer> server_;
};

}  // namespace nuvrel::test
