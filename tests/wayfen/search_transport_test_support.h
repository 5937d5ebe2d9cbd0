#pragma once
// What the tests of the JSON and Wikipedia transports share: pacers that count or really
// wait, a log of what a loopback server received, and a prompt-cancellation check.

#include <gtest/gtest.h>
#include <httplib.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/cancellation.h"
#include "base/http.h"
#include "base/task.h"
#include "support/error_of.h"
#include "support/loopback_server.h"
#include "support/tls_loopback_server.h"
#include "wayfen/duckduckgo_request_pacer.h"

namespace wayfen::test {

// A pacer whose clock stands still and whose sleep only counts: every turn after the first
// sleeps once, so the count shows how many turns were taken.
struct CountingPacer {
    std::shared_ptr<std::atomic<int>> sleeps = std::make_shared<std::atomic<int>>(0);
    PacerPtr pacer = std::make_shared<DuckDuckGoRequestPacer>(
        std::chrono::hours(1), [] { return std::chrono::steady_clock::time_point{}; },
        [counter = sleeps](std::chrono::nanoseconds) { ++*counter; });
};

// Fired once, from any thread, however often it is called.
class Signal {
public:
    void fire() {
        std::call_once(once_, [this] { promise_.set_value(); });
    }
    std::future<void> future() { return promise_.get_future(); }

private:
    std::promise<void> promise_;
    std::once_flag once_;
};

// A pacer with the live sleep and an interval of an hour: its second turn waits until the
// task is cancelled. `waiting` fires as that wait begins.
inline PacerPtr hourPacer(std::shared_ptr<Signal> waiting) {
    return std::make_shared<DuckDuckGoRequestPacer>(std::chrono::hours(1),
                                                    std::chrono::steady_clock::now,
                                                    [waiting](std::chrono::nanoseconds duration) {
                                                        waiting->fire();
                                                        nuvrel::base::liveSleep(duration);
                                                    });
}

inline std::shared_ptr<nuvrel::base::HttpSession> sessionTrusting(
    const nuvrel::test::TlsLoopbackServer& server) {
    nuvrel::base::HttpSessionOptions options;
    options.caCertificatesFile = server.caCertificatesFile();
    return std::make_shared<nuvrel::base::HttpSession>(options);
}

struct ReceivedRequest {
    std::string method;
    // The request target exactly as it came over the wire, not decoded.
    std::string target;
    std::string path;
    httplib::Headers headers;
    httplib::Params params;
    std::string body;

    std::string header(const std::string& name) const {
        const auto found = headers.find(name);
        return found == headers.end() ? std::string() : found->second;
    }
    std::string param(const std::string& name) const {
        const auto found = params.find(name);
        return found == params.end() ? std::string() : found->second;
    }
};

// What a server received, in order; handlers run on the server's threads.
class RequestLog {
public:
    void add(const httplib::Request& request) {
        std::lock_guard lock(mutex_);
        requests_.push_back({request.method, request.target, request.path, request.headers,
                             request.params, request.body});
    }
    std::vector<ReceivedRequest> all() const {
        std::lock_guard lock(mutex_);
        return requests_;
    }
    std::size_t size() const {
        std::lock_guard lock(mutex_);
        return requests_.size();
    }

private:
    mutable std::mutex mutex_;
    std::vector<ReceivedRequest> requests_;
};

using nuvrel::test::errorOf;

// A loopback server whose POST `path` answers every request with `status` and a JSON `body`.
inline std::unique_ptr<nuvrel::test::LoopbackServer> postAnswering(const std::string& path,
                                                                   int status, std::string body,
                                                                   RequestLog* log = nullptr) {
    return std::make_unique<nuvrel::test::LoopbackServer>([=](httplib::Server& routes) {
        routes.Post(path, [=](const httplib::Request& request, httplib::Response& response) {
            if (log != nullptr) log->add(request);
            response.status = status;
            response.set_content(body, "application/json");
        });
    });
}

// A loopback server whose POST `path` fires `reached` and holds the request until it stops.
inline std::unique_ptr<nuvrel::test::LoopbackServer> postStalling(const std::string& path,
                                                                  std::shared_ptr<Signal> reached) {
    // Set before any request can arrive: the test sends only once it has the server.
    auto self = std::make_shared<nuvrel::test::LoopbackServer*>(nullptr);
    auto server = std::make_unique<nuvrel::test::LoopbackServer>([=](httplib::Server& routes) {
        routes.Post(path, [=](const httplib::Request&, httplib::Response& response) {
            reached->fire();
            (*self)->pause(std::chrono::seconds(20));
            response.set_content("{}", "application/json");
        });
    });
    *self = server.get();
    return server;
}

// Runs `call` on a task, cancels that task once `reached` is ready, and expects it to end in
// base::Cancelled well before any time-out of the call could have ended it.
inline void expectPromptCancellation(const std::function<void()>& call, std::future<void> reached) {
    using namespace std::chrono_literals;
    nuvrel::base::Task<void> task(call);
    ASSERT_EQ(reached.wait_for(10s), std::future_status::ready);
    const auto start = std::chrono::steady_clock::now();
    task.cancel();
    EXPECT_THROW(task.value(), nuvrel::base::Cancelled);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
}

}  // namespace wayfen::test
