#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "base/cancellation.h"
#include "base/sleep.h"
#include "base/task.h"
#include "wayfen/fallback_web_search_transport.h"
#include "wayfen/searxng_transport.h"

namespace wayfen {
namespace {

using namespace std::chrono_literals;

// The members' names in the order they were asked.
struct CallLog {
    std::mutex mutex;
    std::vector<std::string> names;
    void add(const std::string& name) {
        std::lock_guard lock(mutex);
        names.push_back(name);
    }
    std::vector<std::string> snapshot() {
        std::lock_guard lock(mutex);
        return names;
    }
};

class ScriptedTransport final : public WebSearchTransport {
public:
    ScriptedTransport(std::string name, std::shared_ptr<CallLog> log,
                      std::function<std::string()> behaviour)
        : name_(std::move(name)), log_(std::move(log)), behaviour_(std::move(behaviour)) {}

    std::string fetchResultsHTML(const std::string& query) const override {
        log_->add(name_ + ":" + query);
        return behaviour_();
    }

private:
    std::string name_;
    std::shared_ptr<CallLog> log_;
    std::function<std::string()> behaviour_;
};

const std::string challengePage =
    R"(<form id="challenge-form"></form><div data-testid="anomaly-modal"></div><script src="anomaly.js">)";

std::string pageOf(const std::string& title, const std::string& url) {
    return SearXNGTransport::reserialize({{title, url, "snippet"}});
}

struct Chain {
    std::shared_ptr<CallLog> log = std::make_shared<CallLog>();

    WebSearchTransportPtr member(const std::string& name, std::function<std::string()> behaviour) {
        return std::make_shared<ScriptedTransport>(name, log, std::move(behaviour));
    }
    WebSearchTransportPtr returning(const std::string& name, std::string html) {
        return member(name, [html] { return html; });
    }
    WebSearchTransportPtr failing(const std::string& name, int status) {
        return member(name, [status]() -> std::string {
            throw WebSearchTransportError::badHTTPStatus(status);
        });
    }
};

TEST(FallbackWebSearchTransport, ThrownErrorFallsOverAndKeepsTheFirstError) {
    Chain c;
    const std::string wiki = pageOf("Seoul", "https://en.wikipedia.org/wiki/Seoul");
    FallbackWebSearchTransport rescued(c.failing("tavily", 429), c.returning("wiki", wiki));
    EXPECT_EQ(rescued.fetchResultsHTML("q"), wiki);

    FallbackWebSearchTransport emptyRescue(c.failing("tavily", 429), c.returning("wiki", ""));
    EXPECT_EQ(emptyRescue.fetchResultsHTML("q"), "");

    FallbackWebSearchTransport bothFail(
        c.failing("tavily", 429),
        c.member("other", []() -> std::string { throw std::runtime_error("other"); }));
    try {
        bothFail.fetchResultsHTML("q");
        FAIL() << "expected the primary's error";
    } catch (const WebSearchTransportError& error) {
        EXPECT_EQ(error, WebSearchTransportError::badHTTPStatus(429));
    }
    EXPECT_EQ(c.log->snapshot(), (std::vector<std::string>{"tavily:q", "wiki:q", "tavily:q",
                                                           "wiki:q", "tavily:q", "other:q"}));
}

TEST(FallbackWebSearchTransport, UsablePageEndsTheWalk) {
    Chain c;
    const std::string page = pageOf("Result", "https://example.com/");
    FallbackWebSearchTransport chain(c.returning("first", page), c.returning("second", "other"));

    EXPECT_EQ(chain.fetchResultsHTML("q"), page);
    EXPECT_EQ(c.log->snapshot(), (std::vector<std::string>{"first:q"}));
}

TEST(FallbackWebSearchTransport, ChallengeOrEmptyPageFallsOverButIsKeptWhenTheSecondaryFails) {
    Chain c;
    const std::string junkOnly = pageOf("Stock photo", "https://www.shutterstock.com/") + "\n" +
                                 pageOf("More", "https://gettyimages.com/");
    const std::string rescue = pageOf("Real", "https://example.org/");

    for (const std::string& primaryPage : {challengePage, junkOnly, std::string()}) {
        FallbackWebSearchTransport rescued(c.returning("p", primaryPage), c.returning("s", rescue));
        EXPECT_EQ(rescued.fetchResultsHTML("q"), rescue);

        FallbackWebSearchTransport kept(c.returning("p", primaryPage), c.failing("s", 500));
        EXPECT_EQ(kept.fetchResultsHTML("q"), primaryPage);
    }
    // The secondary's page is returned as it is, even when it is a challenge itself.
    FallbackWebSearchTransport challenged(c.returning("p", ""), c.returning("s", challengePage));
    EXPECT_EQ(challenged.fetchResultsHTML("q"), challengePage);
}

TEST(FallbackWebSearchTransport, CancellationIsFinal) {
    Chain c;
    FallbackWebSearchTransport cancelledPrimary(
        c.member("p", []() -> std::string { throw nuvrel::base::Cancelled(); }),
        c.returning("s", pageOf("Never", "https://example.com/")));
    EXPECT_THROW(cancelledPrimary.fetchResultsHTML("q"), nuvrel::base::Cancelled);
    EXPECT_EQ(c.log->snapshot(), (std::vector<std::string>{"p:q"}));

    // Cancelled while the second member is at work: the third is never asked.
    auto started = std::make_shared<std::atomic<bool>>(false);
    auto chain =
        foldIntoFallbackChain({c.failing("first", 503),
                               c.member("second",
                                        [started]() -> std::string {
                                            started->store(true);
                                            nuvrel::base::liveSleep(60s);
                                            return "";
                                        }),
                               c.returning("third", pageOf("Third", "https://example.net/"))});
    nuvrel::base::Task<std::string> query([chain] { return chain->fetchResultsHTML("walk"); });
    while (!started->load()) std::this_thread::sleep_for(1ms);
    query.cancel();

    EXPECT_THROW(query.value(), nuvrel::base::Cancelled);
    EXPECT_EQ(c.log->snapshot(), (std::vector<std::string>{"p:q", "first:walk", "second:walk"}));
}

TEST(FoldIntoFallbackChain, MembersAreTriedInListOrder) {
    Chain c;
    EXPECT_EQ(foldIntoFallbackChain({}), nullptr);

    const auto only = c.failing("only", 500);
    EXPECT_EQ(foldIntoFallbackChain({only}), only);

    const std::string last = pageOf("Last", "https://example.com/");
    const auto chain = foldIntoFallbackChain({c.failing("a", 429), c.returning("b", challengePage),
                                              c.returning("c", ""), c.returning("d", last)});
    EXPECT_EQ(chain->fetchResultsHTML("q"), last);
    EXPECT_EQ(c.log->snapshot(), (std::vector<std::string>{"a:q", "b:q", "c:q", "d:q"}));

    // Two members: the error that reaches the caller is the head's.
    const auto pair = foldIntoFallbackChain({c.failing("head", 429), c.failing("tail", 404)});
    try {
        pair->fetchResultsHTML("q");
        FAIL() << "expected the head's error";
    } catch (const WebSearchTransportError& error) {
        EXPECT_EQ(error, WebSearchTransportError::badHTTPStatus(429));
    }
}

}  // namespace
}  // namespace wayfen
