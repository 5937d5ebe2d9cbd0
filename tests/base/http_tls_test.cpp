#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "base/http.h"
#include "support/tls_loopback_server.h"

namespace nuvrel::base {
namespace {

using nuvrel::test::TlsLoopbackServer;

TEST(HttpSession, HttpsPeersAreCheckedAgainstTheGivenCertificateAuthorities) {
    TlsLoopbackServer server([](httplib::Server& routes) {
        routes.Get("/hello", [](const httplib::Request&, httplib::Response& response) {
            response.set_content("over TLS", "text/plain");
        });
    });
    HttpRequest request;
    request.url = *Url::parse(server.url("/hello"));

    // The test certificate is in no system store: by default the handshake is refused.
    HttpSession defaults;
    std::optional<HttpError> refused;
    try {
        defaults.send(request);
    } catch (const HttpError& error) {
        refused = error;
    }
    ASSERT_TRUE(refused.has_value());
    EXPECT_EQ(refused->kind(), HttpError::Kind::transport);

    HttpSessionOptions options;
    options.caCertificatesFile = server.caCertificatesFile();
    HttpSession trusting(options);
    const HttpResponse response = trusting.send(request);
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(response.body, "over TLS");

    // The name checked is the one connected to: the certificate covers localhost too.
    request.url = *Url::parse("https://localhost:" + std::to_string(server.port()) + "/hello");
    EXPECT_EQ(trusting.send(request).body, "over TLS");
}

}  // namespace
}  // namespace nuvrel::base
