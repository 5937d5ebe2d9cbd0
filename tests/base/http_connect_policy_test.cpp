// The connect policy sees the address a name leads to, on every hop: a URL's words cannot
// hide that it leads inside.
#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "base/http.h"
#include "support/loopback_server.h"

namespace nuvrel::base {
namespace {

TEST(HttpConnectPolicy, NamesThatLeadToARefusedAddressAreNeverConnected) {
    std::atomic<int> insideRequests{0};
    test::LoopbackServer inside([&](httplib::Server& routes) {
        routes.Get(".*", [&](const httplib::Request&, httplib::Response& res) {
            ++insideRequests;
            res.set_content("private", "text/plain");
        });
    });
    const std::string insidePort = std::to_string(inside.port());
    test::LoopbackServer site([&](httplib::Server& routes) {
        routes.Get("/page", [](const httplib::Request&, httplib::Response& res) {
            res.set_content("public", "text/plain");
        });
        routes.Get("/hop", [&](const httplib::Request&, httplib::Response& res) {
            res.set_redirect("http://inside.test:" + insidePort + "/secret", 302);
        });
    });
    const std::string sitePort = std::to_string(site.port());

    HttpSessionOptions options;
    // 127.0.0.1 stands in for a public address; every other one is inside.
    options.connectPolicy = [](const SocketAddress& address) {
        return address.text() == "127.0.0.1";
    };
    options.resolve = {"public.test:" + sitePort + ":127.0.0.1",
                       "inside.test:" + insidePort + ":127.0.0.2",
                       "inside6.test:" + insidePort + ":[::1]"};
    HttpSession session(std::move(options));
    const auto get = [&](const std::string& url) {
        HttpRequest request;
        request.url = *Url::parse(url);
        return session.send(request);
    };
    const auto refusal = [&](const std::string& url) -> std::string {
        try {
            get(url);
        } catch (const HttpError& error) {
            return error.kind() == HttpError::Kind::refusedAddress ? error.message()
                                                                   : error.description();
        }
        return "connected";
    };

    EXPECT_EQ(get("http://public.test:" + sitePort + "/page").body, "public");
    EXPECT_EQ(refusal("http://inside.test:" + insidePort + "/secret"),
              "inside.test leads to 127.0.0.2");
    EXPECT_EQ(refusal("http://inside6.test:" + insidePort + "/secret"),
              "inside6.test leads to ::1");
    EXPECT_EQ(refusal("http://public.test:" + sitePort + "/hop"), "inside.test leads to 127.0.0.2")
        << "a redirect's destination is checked when its connection opens";
    EXPECT_EQ(insideRequests.load(), 0);
}

}  // namespace
}  // namespace nuvrel::base
