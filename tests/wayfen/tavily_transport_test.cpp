#include "wayfen/tavily_transport.h"

#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "base/http.h"
#include "search_transport_test_support.h"
#include "support/loopback_server.h"
#include "wayfen/duckduckgo_lite_parser.h"
#include "wayfen/searxng_transport.h"

namespace wayfen {
namespace {

using namespace std::chrono_literals;
using nuvrel::base::HttpSession;
using nuvrel::base::Url;
using nuvrel::test::LoopbackServer;
using test::CountingPacer;
using test::errorOf;
using test::RequestLog;

// A server whose /search answers every request with `status` and `body`.
std::unique_ptr<LoopbackServer> serverAnswering(int status, std::string body,
                                                RequestLog* log = nullptr) {
    return test::postAnswering("/search", status, std::move(body), log);
}

TavilyTransport transportFor(
    const LoopbackServer& server, PacerPtr pacer = CountingPacer().pacer, int resultLimit = 8,
    TavilyTransport::SearchDepth depth = TavilyTransport::SearchDepth::basic) {
    return TavilyTransport(std::make_shared<HttpSession>(), 10, std::move(pacer), resultLimit,
                           depth, *Url::parse(server.url("/search")));
}

TEST(TavilyTransport, SendsAKeylessJsonSearchWithTheLimitAndDepth) {
    RequestLog log;
    const auto server = serverAnswering(200, R"({"results": []})", &log);
    transportFor(*server).fetchResultsHTML("rust \"borrow\" 검사기");
    transportFor(*server, CountingPacer().pacer, 3, TavilyTransport::SearchDepth::advanced)
        .fetchResultsHTML("second");

    const auto requests = log.all();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].method, "POST");
    EXPECT_EQ(requests[0].path, "/search");
    EXPECT_EQ(requests[0].header("X-Tavily-Access-Mode"), "keyless");
    EXPECT_EQ(requests[0].header("Content-Type"), "application/json");
    EXPECT_EQ(requests[0].header("Authorization"), "");

    const auto first = nlohmann::json::parse(requests[0].body);
    EXPECT_EQ(first.size(), 3u);
    EXPECT_EQ(first.at("query"), "rust \"borrow\" 검사기");
    EXPECT_EQ(first.at("max_results"), 8);
    EXPECT_EQ(first.at("search_depth"), "basic");

    const auto second = nlohmann::json::parse(requests[1].body);
    EXPECT_EQ(second.at("max_results"), 3);
    EXPECT_EQ(second.at("search_depth"), "advanced");
}

TEST(TavilyTransport, KeepsUsableResultsInOrderAndWritesThemInTheWireShape) {
    const auto server = serverAnswering(200, R"({
        "query": "ignored", "answer": null, "response_time": 0.4,
        "results": [
            {"title": "  First <b>hit</b>\n", "url": "https://example.com/a?x=1",
             "content": "\n  One & only.  ", "score": 0.9},
            {"title": " \n\t ", "url": "https://example.com/blank-title", "content": "dropped"},
            {"url": "https://example.com/no-title", "content": "dropped"},
            {"title": "No URL", "content": "dropped"},
            {"title": "Empty URL", "url": "", "content": "dropped"},
            {"title": "No content", "url": "https://example.org/"},
            {"title": "Null content", "url": "https://example.net/b", "content": null}
        ]})");

    const std::string html = transportFor(*server).fetchResultsHTML("query");

    EXPECT_EQ(html, SearXNGTransport::reserialize({
                        {"First <b>hit</b>", "https://example.com/a?x=1", "One & only."},
                        {"No content", "https://example.org/", ""},
                        {"Null content", "https://example.net/b", ""},
                    }));
    const auto parsed = DuckDuckGoLiteParser::parse(html, 10);
    ASSERT_EQ(parsed.size(), 3u);
    EXPECT_EQ(parsed[0].url, "https://example.com/a?x=1");
    EXPECT_EQ(parsed[0].snippet, "One & only.");
}

TEST(TavilyTransport, AWellFormedReplyWithoutResultsIsEmptyTextNotAnError) {
    for (const std::string body :
         {R"({"results": []})", R"({})", R"({"results": null})", R"({"answer": "x", "n": 1})"}) {
        const auto server = serverAnswering(200, body);
        EXPECT_EQ(transportFor(*server).fetchResultsHTML("q"), "") << body;
    }
}

TEST(TavilyTransport, StatusesAndBadBodiesMapToTheirErrors) {
    const auto failureFor = [](int status, const std::string& body) {
        const auto server = serverAnswering(status, body);
        return errorOf<TavilyTransportError>([&] { transportFor(*server).fetchResultsHTML("q"); });
    };
    const std::string fine = R"({"results": []})";
    EXPECT_EQ(failureFor(429, fine), TavilyTransportError::rateLimited());
    EXPECT_EQ(failureFor(503, fine), TavilyTransportError::badHTTPStatus(503));
    EXPECT_EQ(failureFor(500, fine), TavilyTransportError::badHTTPStatus(500));
    // No key is used, so a refusal is a plain bad status.
    EXPECT_EQ(failureFor(401, fine), TavilyTransportError::badHTTPStatus(401));
    EXPECT_EQ(failureFor(404, fine), TavilyTransportError::badHTTPStatus(404));
    EXPECT_EQ(failureFor(304, ""), TavilyTransportError::badHTTPStatus(304));
    EXPECT_EQ(failureFor(204, ""), TavilyTransportError::undecodableBody());
    EXPECT_EQ(failureFor(200, "<html>busy</html>"), TavilyTransportError::undecodableBody());
    EXPECT_EQ(failureFor(200, R"([{"title": "a"}])"), TavilyTransportError::undecodableBody());
    EXPECT_EQ(failureFor(200, R"({"results": {"title": "a"}})"),
              TavilyTransportError::undecodableBody());
    EXPECT_EQ(failureFor(200, R"({"results": [{"title": 7, "url": "https://a.example/"}]})"),
              TavilyTransportError::undecodableBody());
    EXPECT_EQ(failureFor(200, "{\"results\": [{\"title\": \"\xff\", \"url\": \"https://a/\"}]}"),
              TavilyTransportError::undecodableBody());
    EXPECT_EQ(failureFor(200, fine), std::nullopt);
    EXPECT_NE(TavilyTransportError::badHTTPStatus(503), TavilyTransportError::badHTTPStatus(500));
}

TEST(TavilyTransport, ANetworkFailureIsPassedThroughAsTheSessionReportsIt) {
    int closedPort = 0;
    {
        const auto server = serverAnswering(200, "{}");
        closedPort = server->port();
    }
    const TavilyTransport transport(
        std::make_shared<HttpSession>(), 10, CountingPacer().pacer, 8,
        TavilyTransport::SearchDepth::basic,
        *Url::parse("http://127.0.0.1:" + std::to_string(closedPort) + "/search"));
    const auto error = errorOf<nuvrel::base::HttpError>([&] { transport.fetchResultsHTML("q"); });
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->kind(), nuvrel::base::HttpError::Kind::cannotConnect);
}

TEST(TavilyTransport, EverySearchTakesAPacerTurnFirst) {
    RequestLog log;
    const auto server = serverAnswering(200, "{}", &log);
    const CountingPacer counting;
    const auto transport = transportFor(*server, counting.pacer);
    transport.fetchResultsHTML("one");
    transport.fetchResultsHTML("two");
    transport.fetchResultsHTML("three");
    EXPECT_EQ(log.size(), 3u);
    EXPECT_EQ(counting.sleeps->load(), 2);

    // A search cancelled while it waits for its turn never reaches the service.
    auto waiting = std::make_shared<test::Signal>();
    const auto paced = transportFor(*server, test::hourPacer(waiting));
    paced.fetchResultsHTML("first turn");
    test::expectPromptCancellation([&] { paced.fetchResultsHTML("second turn"); },
                                   waiting->future());
    EXPECT_EQ(log.size(), 4u);
}

TEST(TavilyTransport, CancellingDuringTheRequestEndsInCancelledAtOnce) {
    auto reached = std::make_shared<test::Signal>();
    const auto server = test::postStalling("/search", reached);
    const auto transport = transportFor(*server);
    test::expectPromptCancellation([&] { transport.fetchResultsHTML("slow"); }, reached->future());
}

}  // namespace
}  // namespace wayfen
