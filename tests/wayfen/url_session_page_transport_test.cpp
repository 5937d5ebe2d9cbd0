#include "wayfen/url_session_page_transport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "base/cancellation.h"
#include "base/task.h"
#include "support/loopback_server.h"
#include "wayfen/page_fetcher.h"

namespace wayfen {
namespace {

namespace base = nuvrel::base;
using namespace std::chrono_literals;
using nuvrel::test::LoopbackServer;

base::Url url(const std::string& text) {
    return *base::Url::parse(text);
}

// Admits exactly one loopback server, standing in for "a public host"; everything else,
// another loopback port included, counts as unsafe.
DestinationCheck admitsOnly(const LoopbackServer& server) {
    return [port = server.port()](const base::Url& target) {
        return target.host() == "127.0.0.1" && target.effectivePort() == port;
    };
}

// At connect time, the one address of the loopback test servers stands in for a public one.
bool admitsLoopbackOne(const base::SocketAddress& address) {
    return address.text() == "127.0.0.1";
}

// A server that should never be reached: it counts every request it gets.
struct Forbidden {
    std::atomic<int> requests{0};
    LoopbackServer server{[this](httplib::Server& routes) {
        routes.Get(".*", [this](const httplib::Request&, httplib::Response& res) {
            ++requests;
            res.set_content("<p>private</p>", "text/html");
        });
    }};
};

TEST(URLSessionPageTransport, SendsBrowserHeadersAndReturnsStatusTypeAndBytes) {
    std::mutex seenMutex;
    std::string userAgent, accept;
    LoopbackServer site([&](httplib::Server& routes) {
        routes.Get("/page", [&](const httplib::Request& req, httplib::Response& res) {
            std::lock_guard lock(seenMutex);
            userAgent = req.get_header_value("User-Agent");
            accept = req.get_header_value("Accept");
            res.set_content("<p>hi</p>", "text/html; charset=utf-8");
        });
        routes.Get("/missing", [](const httplib::Request&, httplib::Response& res) {
            res.status = 404;
            res.set_content("gone", "text/plain");
        });
    });
    const URLSessionPageTransport transport(nullptr, 5.0, URLSessionPageTransport::defaultUserAgent,
                                            1'572'864, admitsOnly(site), admitsLoopbackOne);

    const auto page = transport.fetchPage(url(site.url("/page")));
    EXPECT_EQ(page.statusCode, 200);
    EXPECT_EQ(page.contentType, "text/html; charset=utf-8");
    EXPECT_EQ(page.data, "<p>hi</p>");
    {
        std::lock_guard lock(seenMutex);
        EXPECT_EQ(userAgent,
                  "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 (KHTML, "
                  "like Gecko) Version/17.4 Safari/605.1.15");
        EXPECT_EQ(accept, "text/html");
    }

    const auto missing = transport.fetchPage(url(site.url("/missing")));
    EXPECT_EQ(missing.statusCode, 404);
    EXPECT_EQ(missing.contentType, "text/plain");
}

TEST(URLSessionPageTransport, RefusesAnUnsafeDestinationBeforeAnyConnection) {
    Forbidden loopback;
    const URLSessionPageTransport live;
    try {
        live.fetchPage(url(loopback.server.url("/")));
        ADD_FAILURE() << "a loopback URL was fetched";
    } catch (const PageFetchError& error) {
        EXPECT_EQ(error, PageFetchError::unsafeDestination());
    }

    Forbidden other;
    const URLSessionPageTransport guarded(nullptr, 5.0, "test", 1024, admitsOnly(other.server),
                                          admitsLoopbackOne);
    EXPECT_THROW(guarded.fetchPage(url(loopback.server.url("/"))), PageFetchError);
    EXPECT_EQ(loopback.requests.load(), 0);
}

TEST(URLSessionPageTransport, RefusesAnAddressInsideWhateverTheURLSays) {
    // The URL passes the literal check; the connection would go to loopback.
    Forbidden inside;
    const auto admitsAll = [](const base::Url&) { return true; };
    const URLSessionPageTransport live(nullptr, 5.0, "test", 1024, admitsAll);
    try {
        live.fetchPage(url(inside.server.url("/")));
        ADD_FAILURE() << "a connection to loopback was opened";
    } catch (const PageFetchError& error) {
        EXPECT_EQ(error, PageFetchError::unsafeDestination());
    }
    EXPECT_EQ(inside.requests.load(), 0);
}

TEST(URLSessionPageTransport, RefusesARedirectToAnUnsafeHostWithoutRequestingIt) {
    Forbidden loopback;
    LoopbackServer site([&](httplib::Server& routes) {
        routes.Get("/away", [&](const httplib::Request&, httplib::Response& res) {
            res.set_redirect(loopback.server.url("/secret"), 302);
        });
        routes.Get("/inside", [](const httplib::Request&, httplib::Response& res) {
            res.set_redirect("/final", 307);
        });
        routes.Get("/final", [](const httplib::Request& req, httplib::Response& res) {
            res.set_content("<p>final " + req.get_header_value("Accept") + "</p>", "text/html");
        });
        routes.Get("/nowhere",
                   [](const httplib::Request&, httplib::Response& res) { res.status = 302; });
    });
    auto transport = std::make_shared<URLSessionPageTransport>(nullptr, 5.0, "test", 1'572'864,
                                                               admitsOnly(site), admitsLoopbackOne);

    EXPECT_EQ(transport->fetchPage(url(site.url("/away"))).statusCode, 302);
    EXPECT_EQ(transport->fetchPage(url(site.url("/nowhere"))).statusCode, 302);
    const auto followed = transport->fetchPage(url(site.url("/inside")));
    EXPECT_EQ(followed.statusCode, 200);
    EXPECT_EQ(followed.data, "<p>final text/html</p>");

    const PageFetcher fetcher{transport, 5.0, 1'572'864, 3, base::liveSleep};
    const auto pages = fetcher.fetchAll({url(site.url("/away")), url(site.url("/inside"))});
    ASSERT_EQ(pages.size(), 1u);
    EXPECT_EQ(pages[0].url, url(site.url("/inside")));
    EXPECT_EQ(loopback.requests.load(), 0);
}

TEST(URLSessionPageTransport, DefaultRedirectGuardUsesTheSafetyCheck) {
    const SSRFGuardingRedirectDelegate guard;
    const auto from = url("https://example.com/a");
    EXPECT_FALSE(guard(from, url("http://127.0.0.1/admin"), 302));
    EXPECT_FALSE(guard(from, url("http://169.254.169.254/latest/meta-data"), 301));
    EXPECT_FALSE(guard(from, url("http://[::1]:8080/"), 307));
    EXPECT_TRUE(guard(from, url("https://www.example.com/b"), 302));
}

TEST(URLSessionPageTransport, KeepsOneBytePastTheCapSoTheFetcherDropsTheWholePage) {
    LoopbackServer site([](httplib::Server& routes) {
        routes.Get("/exact", [](const httplib::Request&, httplib::Response& res) {
            res.set_content(std::string(40, 'a'), "text/html");
        });
        routes.Get("/big", [](const httplib::Request&, httplib::Response& res) {
            res.set_content(std::string(100'000, 'b'), "text/html");
        });
        routes.Get("/korean", [](const httplib::Request&, httplib::Response& res) {
            res.set_content("\xC7\xD1\xB1\xB9\xBE\xEE", "text/html; charset='euc-kr'");
        });
    });
    auto transport = std::make_shared<URLSessionPageTransport>(nullptr, 5.0, "test", 40,
                                                               admitsOnly(site), admitsLoopbackOne);
    EXPECT_EQ(transport->fetchPage(url(site.url("/exact"))).data.size(), 40u);
    EXPECT_EQ(transport->fetchPage(url(site.url("/big"))).data.size(), 41u);

    const PageFetcher fetcher{transport, 5.0, 40, 3, base::liveSleep};
    const auto pages = fetcher.fetchAll(
        {url(site.url("/exact")), url(site.url("/big")), url(site.url("/korean"))});
    ASSERT_EQ(pages.size(), 2u);
    for (const auto& page : pages) {
        EXPECT_EQ(page.html, page.url.path() == "/exact" ? std::string(40, 'a') : "한국어");
    }
}

TEST(URLSessionPageTransport, CancellingTheTaskAbortsTheRequest) {
    std::atomic<bool> started{false};
    LoopbackServer* self = nullptr;
    LoopbackServer site([&](httplib::Server& routes) {
        routes.Get("/slow", [&](const httplib::Request&, httplib::Response& res) {
            started = true;
            self->pause(30s);
            res.set_content("late", "text/html");
        });
    });
    self = &site;
    const URLSessionPageTransport transport(nullptr, 60.0, "test", 1024, admitsOnly(site),
                                            admitsLoopbackOne);

    base::Task<RawPageResponse> caller([&] { return transport.fetchPage(url(site.url("/slow"))); });
    while (!started) std::this_thread::sleep_for(1ms);
    caller.cancel();
    EXPECT_THROW(caller.value(), base::Cancelled);
}

}  // namespace
}  // namespace wayfen
