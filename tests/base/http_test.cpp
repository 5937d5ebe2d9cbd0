#include "base/http.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <string>
#include <vector>

#include "base/task.h"
#include "support/environment_override.h"
#include "support/error_of.h"
#include "support/loopback_server.h"

namespace nuvrel::base {
namespace {

using namespace std::chrono_literals;
using nuvrel::test::LoopbackServer;
using Clock = std::chrono::steady_clock;

HttpRequest requestTo(const std::string& address) {
    HttpRequest request;
    request.url = *Url::parse(address);
    return request;
}

// A listening socket on 127.0.0.1 driven by hand: to see raw request bytes, or to see that
// nobody connected at all.
class RawListener {
public:
    RawListener() {
        fd_ = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (fd_ < 0 || ::bind(fd_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            ::listen(fd_, 4) != 0 ||
            ::getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
            throw std::runtime_error("raw listener: no socket");
        }
        port_ = ntohs(address.sin_port);
    }
    ~RawListener() { ::close(fd_); }

    std::string url(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(port_) + path;
    }

    bool hasPendingConnection(std::chrono::milliseconds wait) const {
        pollfd entry{fd_, POLLIN, 0};
        return ::poll(&entry, 1, static_cast<int>(wait.count())) > 0;
    }

    // Accepts one connection, reads the request head, answers with an empty 200.
    std::string answerOne() const {
        const int connection = ::accept(fd_, nullptr, nullptr);
        std::string head;
        char buffer[4096];
        while (head.find("\r\n\r\n") == std::string::npos) {
            const auto count = ::recv(connection, buffer, sizeof buffer, 0);
            if (count <= 0) break;
            head.append(buffer, static_cast<std::size_t>(count));
        }
        const std::string reply =
            "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
        ::send(connection, reply.data(), reply.size(), MSG_NOSIGNAL);
        ::close(connection);
        return head;
    }

private:
    int fd_ = -1;
    int port_ = 0;
};

TEST(HttpSession, ReturnsEveryStatusWithItsHeadersAndBody) {
    LoopbackServer server([](httplib::Server& routes) {
        routes.Get("/missing", [](const auto&, auto& res) {
            res.status = 404;
            res.set_content("nope", "text/plain");
        });
        routes.Get("/busy", [](const auto&, auto& res) {
            res.status = 503;
            res.set_header("Retry-After", "1");
            res.set_content("loading", "text/plain");
        });
        routes.Get("/ok", [](const auto&, auto& res) { res.set_content("fine", "text/plain"); });
    });
    HttpSession session;

    const auto missing = session.send(requestTo(server.url("/missing")));
    EXPECT_EQ(missing.status, 404);
    EXPECT_EQ(missing.body, "nope");

    const auto busy = session.send(requestTo(server.url("/busy")));
    EXPECT_EQ(busy.status, 503);
    EXPECT_EQ(busy.body, "loading");
    EXPECT_EQ(busy.header("retry-after"), "1");
    EXPECT_EQ(busy.header("CONTENT-TYPE"), "text/plain");
    EXPECT_EQ(busy.contentLength(), 7u);
    EXPECT_EQ(busy.header("X-Absent"), std::nullopt);

    const auto ok = session.send(requestTo(server.url("/ok")));
    EXPECT_EQ(ok.status, 200);
    EXPECT_EQ(ok.body, "fine");
    EXPECT_FALSE(ok.truncated);
    EXPECT_EQ(ok.url.text(), server.url("/ok"));
}

TEST(HttpSession, SendsMethodBodyAndContentTypeAsGiven) {
    struct Seen {
        std::string method, body, contentType, userAgent;
        std::size_t userAgents = 0;
    };
    std::mutex mutex;
    Seen seen;
    const auto record = [&](const httplib::Request& req, httplib::Response& res) {
        std::lock_guard lock(mutex);
        seen = {req.method, req.body, req.get_header_value("Content-Type"),
                req.get_header_value("User-Agent"), req.get_header_value_count("User-Agent")};
        res.set_content("ok", "text/plain");
    };
    LoopbackServer server([&](httplib::Server& routes) {
        routes.Post("/echo", record);
        routes.Put("/echo", record);
        routes.Delete("/echo", record);
        routes.Get("/echo", record);
    });
    HttpSessionOptions options;
    options.userAgent = "NuvrelTest/1.0";
    HttpSession session(options);

    auto post = requestTo(server.url("/echo"));
    post.method = "POST";
    post.body = R"({"a":1})";
    post.headers = {{"Content-Type", "application/json"}};
    EXPECT_EQ(session.send(post).status, 200);
    EXPECT_EQ(seen.method, "POST");
    EXPECT_EQ(seen.body, R"({"a":1})");
    EXPECT_EQ(seen.contentType, "application/json");
    EXPECT_EQ(seen.userAgent, "NuvrelTest/1.0");

    // No form type slips in when the caller names none.
    auto put = requestTo(server.url("/echo"));
    put.method = "PUT";
    put.body = "raw";
    session.send(put);
    EXPECT_EQ(seen.method, "PUT");
    EXPECT_EQ(seen.body, "raw");
    EXPECT_EQ(seen.contentType, "");

    auto remove = requestTo(server.url("/echo"));
    remove.method = "DELETE";
    session.send(remove);
    EXPECT_EQ(seen.method, "DELETE");
    EXPECT_EQ(seen.body, "");

    // A request's own User-Agent replaces the session's, once.
    auto get = requestTo(server.url("/echo"));
    get.headers = {{"User-Agent", "Mozilla/5.0 Test"}};
    session.send(get);
    EXPECT_EQ(seen.method, "GET");
    EXPECT_EQ(seen.userAgent, "Mozilla/5.0 Test");
    EXPECT_EQ(seen.userAgents, 1u);
}

TEST(HttpSession, SendsHeadersInTheGivenOrder) {
    RawListener listener;
    auto head = std::async(std::launch::async, [&] { return listener.answerOne(); });
    auto request = requestTo(listener.url("/ordered"));
    request.headers = {{"X-Zeta", "1"}, {"X-Alpha", "2"}, {"X-Zeta", "3"}, {"X-Empty", ""}};
    HttpSession session;
    EXPECT_EQ(session.send(request).status, 200);

    const std::string raw = head.get();
    const auto zeta1 = raw.find("X-Zeta: 1\r\n");
    const auto alpha = raw.find("X-Alpha: 2\r\n");
    const auto zeta3 = raw.find("X-Zeta: 3\r\n");
    ASSERT_NE(zeta1, std::string::npos) << raw;
    ASSERT_NE(alpha, std::string::npos) << raw;
    ASSERT_NE(zeta3, std::string::npos) << raw;
    EXPECT_LT(zeta1, alpha);
    EXPECT_LT(alpha, zeta3);
    EXPECT_NE(raw.find("X-Empty:"), std::string::npos) << raw;
    EXPECT_EQ(raw.find("Cookie"), std::string::npos) << raw;
}

TEST(HttpSession, DecodesCompressedBodiesOnlyWhenAsked) {
    const std::string text(20'000, 'x');
    std::atomic<bool> offered{false};
    LoopbackServer server([&](httplib::Server& routes) {
        routes.Get("/text", [&](const httplib::Request& req, httplib::Response& res) {
            offered = req.has_header("Accept-Encoding");
            res.set_content(text, "text/plain");
        });
    });
    HttpSession session;

    const auto plain = session.send(requestTo(server.url("/text")));
    EXPECT_FALSE(offered.load());
    EXPECT_EQ(plain.body, text);
    EXPECT_EQ(plain.contentLength(), text.size());

    auto request = requestTo(server.url("/text"));
    request.decompress = true;
    const auto decoded = session.send(request);
    EXPECT_TRUE(offered.load());
    EXPECT_TRUE(decoded.header("Content-Encoding").has_value());
    EXPECT_EQ(decoded.body, text);
    EXPECT_LT(decoded.contentLength().value_or(text.size()), text.size());
}

TEST(HttpSession, FollowsRedirectsAskingThePolicyBeforeEachHop) {
    std::mutex mutex;
    std::vector<std::string> afterHops;  // method and body seen behind each rewritten hop
    LoopbackServer server([&](httplib::Server& routes) {
        routes.Get("/start", [](const auto&, auto& res) { res.set_redirect("middle", 302); });
        routes.Get("/middle", [&](const auto&, auto& res) {
            res.set_redirect("http://127.0.0.1:" + std::to_string(server.port()) + "/final", 301);
        });
        routes.Get("/final", [](const auto&, auto& res) { res.set_content("done", "text/plain"); });
        routes.Post("/form", [](const auto&, auto& res) { res.set_redirect("/landing", 303); });
        routes.Post("/moved", [](const auto&, auto& res) { res.set_redirect("/landing", 307); });
        routes.Post("/found", [](const auto&, auto& res) { res.set_redirect("/landing", 302); });
        const auto landing = [&](const httplib::Request& req, httplib::Response& res) {
            std::lock_guard lock(mutex);
            afterHops.push_back(req.method + " " + req.body + " " +
                                req.get_header_value("Content-Type"));
            res.set_content("landed", "text/plain");
        };
        routes.Get("/landing", landing);
        routes.Post("/landing", landing);
    });

    std::vector<std::string> asked;
    HttpSessionOptions options;
    options.redirectPolicy = [&](const Url& from, const Url& to, int status) {
        asked.push_back(from.path() + " -> " + to.path() + " " + std::to_string(status));
        return true;
    };
    HttpSession session(options);

    const auto reply = session.send(requestTo(server.url("/start")));
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, "done");
    EXPECT_EQ(reply.url.text(), server.url("/final"));
    EXPECT_EQ(asked, (std::vector<std::string>{"/start -> /middle 302", "/middle -> /final 301"}));

    // 303 (and 302 after a POST) turns a POST into a GET without its body; 307 repeats it.
    auto form = requestTo(server.url("/form"));
    form.method = "POST";
    form.body = "a=1";
    form.headers = {{"Content-Type", "application/x-www-form-urlencoded"}};
    EXPECT_EQ(session.send(form).body, "landed");
    auto moved = form;
    moved.url = *Url::parse(server.url("/moved"));
    EXPECT_EQ(session.send(moved).body, "landed");
    moved.url = *Url::parse(server.url("/found"));
    EXPECT_EQ(session.send(moved).body, "landed");
    EXPECT_EQ(afterHops, (std::vector<std::string>{
                             "GET  ", "POST a=1 application/x-www-form-urlencoded", "GET  "}));
}

TEST(HttpSession, CredentialsStayWithTheirOriginAcrossRedirects) {
    std::mutex mutex;
    std::vector<std::string> authorizations;
    LoopbackServer other([&](httplib::Server& routes) {
        routes.Get("/check", [&](const httplib::Request& req, httplib::Response& res) {
            std::lock_guard lock(mutex);
            authorizations.push_back("other:" + req.get_header_value("Authorization"));
            res.set_content("x", "text/plain");
        });
    });
    LoopbackServer home([&](httplib::Server& routes) {
        routes.Get("/away", [&](const auto&, auto& res) { res.set_redirect(other.url("/check")); });
        routes.Get("/stay", [](const auto&, auto& res) { res.set_redirect("/check"); });
        routes.Get("/check", [&](const httplib::Request& req, httplib::Response& res) {
            std::lock_guard lock(mutex);
            authorizations.push_back("home:" + req.get_header_value("Authorization"));
            res.set_content("x", "text/plain");
        });
    });
    HttpSession session;
    for (const char* path : {"/stay", "/away"}) {
        auto request = requestTo(home.url(path));
        request.headers = {{"Authorization", "Bearer secret"}};
        EXPECT_EQ(session.send(request).status, 200);
    }
    EXPECT_EQ(authorizations, (std::vector<std::string>{"home:Bearer secret", "other:"}));
}

TEST(HttpSession, ARefusedRedirectReturnsThe3xxAndALoopIsCut) {
    std::atomic<int> finalHits{0};
    std::atomic<int> loopHits{0};
    LoopbackServer server([&](httplib::Server& routes) {
        routes.Get("/start", [](const auto&, auto& res) {
            res.set_redirect("/final", 302);
            res.set_content("see elsewhere", "text/plain");
        });
        routes.Get("/final", [&](const auto&, auto& res) {
            ++finalHits;
            res.set_content("done", "text/plain");
        });
        routes.Get("/loop", [&](const auto&, auto& res) {
            ++loopHits;
            res.set_redirect("/loop");
        });
    });

    HttpSessionOptions refuseFinal;
    refuseFinal.redirectPolicy = [](const Url&, const Url& to, int) {
        return to.path() != "/final";
    };
    HttpSession refusing(refuseFinal);
    const auto refused = refusing.send(requestTo(server.url("/start")));
    EXPECT_EQ(refused.status, 302);
    EXPECT_EQ(refused.header("Location"), "/final");
    EXPECT_EQ(refused.body, "see elsewhere");
    EXPECT_EQ(refused.url.text(), server.url("/start"));
    EXPECT_EQ(finalHits.load(), 0);

    HttpSessionOptions threeHops;
    threeHops.maxRedirects = 3;
    HttpSession limited(threeHops);
    const auto error =
        test::errorOf<HttpError>([&] { limited.send(requestTo(server.url("/loop"))); });
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->kind(), HttpError::Kind::tooManyRedirects);
    EXPECT_EQ(loopHits.load(), 4);  // the request and three followed hops
}

TEST(HttpSession, TimeOutsEndSlowReplies) {
    std::unique_ptr<LoopbackServer> server;
    server = std::make_unique<LoopbackServer>([&](httplib::Server& routes) {
        routes.Get("/slow-head", [&](const auto&, auto& res) {
            server->pause(5s);
            res.set_content("late", "text/plain");
        });
        routes.Get("/stall", [&](const auto&, auto& res) {
            res.set_chunked_content_provider("text/plain",
                                             [&](std::size_t offset, httplib::DataSink& sink) {
                                                 if (offset == 0) return sink.write("begin", 5);
                                                 server->pause(5s);
                                                 return false;
                                             });
        });
    });
    HttpSession session;

    auto slow = requestTo(server->url("/slow-head"));
    slow.timeout = 200ms;
    auto start = Clock::now();
    auto error = test::errorOf<HttpError>([&] { session.send(slow); });
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->kind(), HttpError::Kind::timedOut);
    EXPECT_LT(Clock::now() - start, 1500ms);

    // No whole-call limit, but a body that stops flowing.
    auto stall = requestTo(server->url("/stall"));
    stall.timeout = 0ms;
    stall.idleTimeout = 300ms;
    start = Clock::now();
    error = test::errorOf<HttpError>([&] { session.send(stall); });
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->kind(), HttpError::Kind::timedOut);
    EXPECT_GE(Clock::now() - start, 300ms);
    EXPECT_LT(Clock::now() - start, 1500ms);
}

TEST(HttpSession, CancellingTheTaskAbortsASlowBodyAtOnce) {
    std::unique_ptr<LoopbackServer> server;
    server = std::make_unique<LoopbackServer>([&](httplib::Server& routes) {
        routes.Get("/drip", [&](const auto&, auto& res) {
            res.set_chunked_content_provider("text/plain",
                                             [&](std::size_t offset, httplib::DataSink& sink) {
                                                 if (offset == 0) return sink.write("first", 5);
                                                 server->pause(5s);
                                                 return false;
                                             });
        });
    });
    HttpSession session;
    std::promise<void> firstChunk;
    std::atomic<bool> signalled{false};
    Task<HttpResponse> download([&] {
        return session.send(requestTo(server->url("/drip")), [&](std::string_view) {
            if (!signalled.exchange(true)) firstChunk.set_value();
            return true;
        });
    });
    ASSERT_EQ(firstChunk.get_future().wait_for(5s), std::future_status::ready);

    const auto start = Clock::now();
    download.cancel();
    EXPECT_THROW(download.value(), Cancelled);
    EXPECT_LT(Clock::now() - start, 200ms);
}

TEST(HttpSession, AnAlreadyCancelledTaskNeverConnects) {
    RawListener listener;
    HttpSession session;
    Task<void> late([&] {
        currentCancellation()->cancel();
        session.send(requestTo(listener.url("/never")));
    });
    EXPECT_THROW(late.value(), Cancelled);
    EXPECT_FALSE(listener.hasPendingConnection(50ms));
}

TEST(HttpSession, TheByteCapKeepsAtMostCapBytesAndStopsReading) {
    constexpr std::size_t cap = 1000;
    constexpr std::size_t endlessTotal = 64u << 20;
    std::atomic<std::size_t> endlessSent{0};
    std::promise<void> endlessFinished;
    LoopbackServer server([&](httplib::Server& routes) {
        routes.Get("/exact", [](const auto&, auto& res) {
            res.set_content(std::string(cap, 'a'), "text/plain");
        });
        routes.Get("/over", [](const auto&, auto& res) {
            res.set_content(std::string(cap, 'a') + "b", "text/plain");
        });
        routes.Get("/endless", [&](const auto&, auto& res) {
            res.set_chunked_content_provider(
                "text/plain", [&](std::size_t, httplib::DataSink& sink) {
                    const std::string block(64 << 10, 'z');
                    if (endlessSent < endlessTotal && sink.write(block.data(), block.size())) {
                        endlessSent += block.size();
                        return true;
                    }
                    endlessFinished.set_value();
                    return false;
                });
        });
    });
    HttpSession session;

    auto exact = requestTo(server.url("/exact"));
    exact.maxBodyBytes = cap;
    const auto exactReply = session.send(exact);
    EXPECT_EQ(exactReply.body.size(), cap);
    EXPECT_FALSE(exactReply.truncated);

    auto over = requestTo(server.url("/over"));
    over.maxBodyBytes = cap;
    const auto overReply = session.send(over);
    EXPECT_EQ(overReply.body, std::string(cap, 'a'));
    EXPECT_TRUE(overReply.truncated);
    EXPECT_EQ(overReply.status, 200);

    std::size_t streamed = 0;
    const auto streamedReply = session.send(over, [&](std::string_view chunk) {
        streamed += chunk.size();
        return true;
    });
    EXPECT_EQ(streamed, cap);
    EXPECT_TRUE(streamedReply.truncated);

    // The server learns that nobody reads any more long before its stream is out.
    auto endless = requestTo(server.url("/endless"));
    endless.maxBodyBytes = cap;
    const auto endlessReply = session.send(endless);
    EXPECT_TRUE(endlessReply.truncated);
    EXPECT_EQ(endlessReply.body.size(), cap);
    ASSERT_EQ(endlessFinished.get_future().wait_for(5s), std::future_status::ready);
    EXPECT_LT(endlessSent.load(), endlessTotal / 4);
}

TEST(HttpSession, StreamsTheBodyAndLetsTheCallerStopOrRefuseTheHead) {
    std::string large;
    for (int i = 0; large.size() < 300'000; ++i) large += std::to_string(i) + ",";
    LoopbackServer server([&](httplib::Server& routes) {
        routes.Get("/large", [&](const auto&, auto& res) { res.set_content(large, "text/plain"); });
        routes.Get("/moved", [](const auto&, auto& res) { res.set_redirect("/large"); });
    });
    HttpSession session;

    std::string collected;
    std::size_t chunks = 0;
    const auto whole = session.send(requestTo(server.url("/large")), [&](std::string_view chunk) {
        collected += chunk;
        ++chunks;
        return true;
    });
    EXPECT_EQ(collected, large);
    EXPECT_GT(chunks, 1u);
    EXPECT_EQ(whole.body, "");
    EXPECT_FALSE(whole.truncated);

    std::size_t received = 0;
    const auto stopped = session.send(requestTo(server.url("/large")), [&](std::string_view chunk) {
        received += chunk.size();
        return false;
    });
    EXPECT_EQ(stopped.status, 200);
    EXPECT_GT(received, 0u);
    EXPECT_LT(received, large.size());

    // The head handler sees the final response of a redirect, before any body.
    std::vector<std::string> heads;
    bool bodySeen = false;
    const auto refused = session.send(
        requestTo(server.url("/moved")),
        [&](const HttpResponse& head) {
            heads.push_back(std::to_string(head.status) + " " + head.url.path() + " " +
                            head.header("Content-Length").value_or("?"));
            return false;
        },
        [&](std::string_view) {
            bodySeen = true;
            return true;
        });
    EXPECT_EQ(heads, (std::vector<std::string>{"200 /large " + std::to_string(large.size())}));
    EXPECT_FALSE(bodySeen);
    EXPECT_EQ(refused.status, 200);
}

TEST(HttpSession, FailuresBeforeAnyResponseAreHttpErrors) {
    // Bound but not listening: every connection attempt is refused.
    const int socketFD = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    ASSERT_EQ(::bind(socketFD, reinterpret_cast<sockaddr*>(&address), length), 0);
    ASSERT_EQ(::getsockname(socketFD, reinterpret_cast<sockaddr*>(&address), &length), 0);
    const int port = ntohs(address.sin_port);

    HttpSession session;
    auto error = test::errorOf<HttpError>(
        [&] { session.send(requestTo("http://127.0.0.1:" + std::to_string(port) + "/")); });
    ::close(socketFD);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->kind(), HttpError::Kind::cannotConnect);

    error = test::errorOf<HttpError>([&] { session.send(HttpRequest{}); });
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->kind(), HttpError::Kind::badURL);
    error = test::errorOf<HttpError>([&] { session.send(requestTo("ftp://127.0.0.1/file")); });
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->kind(), HttpError::Kind::badURL);
}

TEST(HttpSession, ProxiesFromTheEnvironmentNeverApplyToLoopback) {
    LoopbackServer server([](httplib::Server& routes) {
        routes.Get("/", [](const auto&, auto& res) { res.set_content("direct", "text/plain"); });
    });
    RawListener deadProxy;  // listens but never answers
    test::EnvironmentOverride environment;
    const std::string proxy = deadProxy.url("");
    for (const char* name : {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"}) {
        environment.set(name, proxy.c_str());
    }
    for (const char* name : {"no_proxy", "NO_PROXY"}) environment.set(name, nullptr);
    HttpSession session;

    auto viaAddress = requestTo(server.url("/"));
    auto viaName = requestTo("http://localhost:" + std::to_string(server.port()) + "/");
    for (auto* request : {&viaAddress, &viaName}) {
        request->timeout = 2s;
        EXPECT_EQ(session.send(*request).body, "direct") << request->url.text();
    }
    EXPECT_FALSE(deadProxy.hasPendingConnection(0ms));

    // Elsewhere the environment's proxy is used: the request goes to it.
    auto remote = requestTo("http://example.invalid/");
    remote.timeout = 300ms;
    EXPECT_TRUE(test::errorOf<HttpError>([&] { session.send(remote); }).has_value());
    EXPECT_TRUE(deadProxy.hasPendingConnection(0ms));
}

TEST(HttpSession, ServesSeveralTasksAtOnceAndReusesConnections) {
    constexpr int callers = 4;
    std::mutex mutex;
    std::condition_variable allArrived;
    int arrived = 0;
    std::vector<int> remotePorts;
    std::unique_ptr<LoopbackServer> server;
    server = std::make_unique<LoopbackServer>([&](httplib::Server& routes) {
        // Each call waits until all callers are inside the server: a session that ran its
        // calls one by one would never get there.
        routes.Get("/together", [&](const httplib::Request& req, httplib::Response& res) {
            std::unique_lock lock(mutex);
            ++arrived;
            allArrived.notify_all();
            const bool together = allArrived.wait_for(lock, 5s, [&] { return arrived >= callers; });
            res.status = together ? 200 : 504;
            res.set_content(req.get_param_value("n"), "text/plain");
        });
        routes.Get("/port", [&](const httplib::Request& req, httplib::Response& res) {
            std::lock_guard lock(mutex);
            remotePorts.push_back(req.remote_port);
            res.set_content("x", "text/plain");
        });
    });
    HttpSession session;

    std::vector<std::unique_ptr<Task<HttpResponse>>> tasks;
    for (int n = 0; n < callers; ++n) {
        tasks.push_back(std::make_unique<Task<HttpResponse>>([&, n] {
            return session.send(requestTo(server->url("/together?n=" + std::to_string(n))));
        }));
    }
    for (int n = 0; n < callers; ++n) {
        const auto reply = tasks[n]->value();
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(reply.body, std::to_string(n));
    }

    session.send(requestTo(server->url("/port")));
    session.send(requestTo(server->url("/port")));
    ASSERT_EQ(remotePorts.size(), 2u);
    EXPECT_EQ(remotePorts[0], remotePorts[1]);
}

}  // namespace
}  // namespace nuvrel::base
