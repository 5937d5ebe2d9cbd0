#include "wayfen/duckduckgo_lite_transport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "base/cancellation.h"
#include "support/loopback_server.h"

namespace wayfen {

void PrintTo(const WebSearchTransportError& error, std::ostream* out) {
    *out << error.description();
}

namespace {

using namespace std::chrono_literals;
using nuvrel::base::Url;
using nuvrel::test::LoopbackServer;

const std::string challengePage =
    R"(<form id="challenge-form"></form><div data-testid="anomaly-modal"></div><script src="anomaly.js">)";
const std::string resultsPage =
    "<a rel=\"nofollow\" href='//duckduckgo.com/l/?uddg=https%3A%2F%2Fexample.com%2F' "
    "class='result-link'>Example</a>";

struct Reply {
    int status;
    std::string body;
};

// The Lite endpoint, answering with the scripted replies in turn (the last one repeats).
class LiteServer {
public:
    explicit LiteServer(std::vector<Reply> replies)
        : replies_(std::move(replies)), server_([this](httplib::Server& routes) {
              routes.Get("/lite/", [this](const httplib::Request& req, httplib::Response& res) {
                  std::lock_guard lock(mutex_);
                  queries_.push_back(req.get_param_value("q"));
                  userAgents_.push_back(req.get_header_value("User-Agent"));
                  const Reply& reply = replies_[std::min(queries_.size(), replies_.size()) - 1];
                  res.status = reply.status;
                  res.set_content(reply.body, "text/html");
              });
          }) {}

    Url baseURL() const { return *Url::parse(server_.url("/lite/")); }
    std::vector<std::string> queries() {
        std::lock_guard lock(mutex_);
        return queries_;
    }
    std::vector<std::string> userAgents() {
        std::lock_guard lock(mutex_);
        return userAgents_;
    }

private:
    std::vector<Reply> replies_;
    std::mutex mutex_;
    std::vector<std::string> queries_;
    std::vector<std::string> userAgents_;
    LoopbackServer server_;
};

// Back-off sleeps and pacer sleeps, in the order they were asked for.
struct SleepLog {
    std::shared_ptr<std::vector<std::string>> entries =
        std::make_shared<std::vector<std::string>>();
    std::shared_ptr<bool> backOffCancelled = std::make_shared<bool>(false);

    nuvrel::base::SleepFn backOff() const {
        return [entries = entries, cancelled = backOffCancelled](std::chrono::nanoseconds d) {
            entries->push_back("back-off " + std::to_string(d.count()));
            if (*cancelled) throw nuvrel::base::Cancelled();
        };
    }
    PacerPtr pacer() const {
        const auto standing = std::chrono::steady_clock::now();
        return std::make_shared<DuckDuckGoRequestPacer>(
            std::chrono::duration<double>(2.0), [standing] { return standing; },
            [entries = entries](std::chrono::nanoseconds d) {
                entries->push_back("pacer " + std::to_string(d.count()));
            });
    }
};

DuckDuckGoLiteTransport transportFor(const LiteServer& server, const SleepLog& sleeps) {
    return DuckDuckGoLiteTransport(std::make_shared<nuvrel::base::HttpSession>(), 5.0,
                                   server.baseURL(), 1'500'000'000, sleeps.pacer(),
                                   sleeps.backOff());
}

std::optional<WebSearchTransportError> errorOf(const DuckDuckGoLiteTransport& transport) {
    try {
        transport.fetchResultsHTML("q");
    } catch (const WebSearchTransportError& error) {
        return error;
    }
    return std::nullopt;
}

TEST(DuckDuckGoLiteTransport, ReturnsThePageAsItCame) {
    LiteServer server({{200, resultsPage}});
    SleepLog sleeps;

    EXPECT_EQ(transportFor(server, sleeps).fetchResultsHTML("도쿄 & ramen"), resultsPage);
    EXPECT_EQ(server.queries(), (std::vector<std::string>{"도쿄 & ramen"}));
    EXPECT_EQ(server.userAgents()[0],
              "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 (KHTML, like "
              "Gecko) Version/17.4 Safari/605.1.15");
    EXPECT_TRUE(sleeps.entries->empty());
    EXPECT_EQ(DuckDuckGoLiteTransport::defaultBaseURL().text(),
              "https://lite.duckduckgo.com/lite/");
}

TEST(DuckDuckGoLiteTransport, ChallengeIsTriedOnceMoreAfterTheBackOff) {
    LiteServer cleared({{200, challengePage}, {200, resultsPage}});
    SleepLog sleeps;
    EXPECT_EQ(transportFor(cleared, sleeps).fetchResultsHTML("q"), resultsPage);
    // One pacer turn per try: the second try waits for its turn after the back-off.
    EXPECT_EQ(*sleeps.entries,
              (std::vector<std::string>{"back-off 1500000000", "pacer 2000000000"}));

    LiteServer stubborn({{200, challengePage}});
    SleepLog more;
    EXPECT_EQ(transportFor(stubborn, more).fetchResultsHTML("q"), challengePage);
    EXPECT_EQ(stubborn.queries().size(), 2u);
    EXPECT_EQ(more.entries->front(), "back-off 1500000000");
}

TEST(DuckDuckGoLiteTransport, FailureIsTriedOnceMoreAndTheSecondErrorStands) {
    LiteServer recovered({{503, "busy"}, {200, resultsPage}});
    SleepLog sleeps;
    EXPECT_EQ(transportFor(recovered, sleeps).fetchResultsHTML("q"), resultsPage);

    LiteServer failing({{503, "busy"}, {404, "gone"}});
    EXPECT_EQ(errorOf(transportFor(failing, sleeps)), WebSearchTransportError::badHTTPStatus(404));
    EXPECT_EQ(failing.queries().size(), 2u);

    LiteServer garbled({{200, std::string("\xC3\x28 not UTF-8")}});
    EXPECT_EQ(errorOf(transportFor(garbled, sleeps)), WebSearchTransportError::undecodableBody());

    // A challenge on the second try after a failure is returned, not retried again.
    LiteServer mixed({{500, ""}, {200, challengePage}, {200, resultsPage}});
    EXPECT_EQ(transportFor(mixed, sleeps).fetchResultsHTML("q"), challengePage);
    EXPECT_EQ(mixed.queries().size(), 2u);

    DuckDuckGoLiteTransport noBase(std::make_shared<nuvrel::base::HttpSession>(), 5.0, Url(), 0,
                                   nullptr, sleeps.backOff());
    EXPECT_EQ(errorOf(noBase), WebSearchTransportError::invalidURL());
}

TEST(DuckDuckGoLiteTransport, CancelledBackOffEndsTheFetch) {
    LiteServer server({{200, challengePage}, {200, resultsPage}});
    SleepLog sleeps;
    *sleeps.backOffCancelled = true;

    EXPECT_THROW(transportFor(server, sleeps).fetchResultsHTML("q"), nuvrel::base::Cancelled);
    EXPECT_EQ(server.queries().size(), 1u);
}

}  // namespace
}  // namespace wayfen
