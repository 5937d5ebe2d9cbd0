#include "wayfen/firecrawl_transport.h"

#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "base/http.h"
#include "base/text.h"
#include "search_transport_test_support.h"
#include "support/loopback_server.h"
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

std::unique_ptr<LoopbackServer> serverAnswering(int status, std::string body,
                                                RequestLog* log = nullptr) {
    return test::postAnswering("/v2/search", status, std::move(body), log);
}

FirecrawlTransport transportFor(const LoopbackServer& server,
                                PacerPtr pacer = CountingPacer().pacer, int resultLimit = 5) {
    return FirecrawlTransport("fc-secret", std::make_shared<HttpSession>(), 10, std::move(pacer),
                              resultLimit, *Url::parse(server.url("/v2/search")));
}

std::string replyWithHits(const nlohmann::json& hits) {
    return nlohmann::json{{"success", true}, {"data", {{"web", hits}}}}.dump();
}

TEST(FirecrawlTransport, SendsTheKeyAndAMarkdownSearchWithTheLimit) {
    RequestLog log;
    const auto server = serverAnswering(200, replyWithHits(nlohmann::json::array()), &log);
    const CountingPacer counting;
    transportFor(*server, counting.pacer).fetchResultsHTML("쿼리 \"quoted\"");
    transportFor(*server, counting.pacer, 2).fetchResultsHTML("again");

    const auto requests = log.all();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].method, "POST");
    EXPECT_EQ(requests[0].header("Authorization"), "Bearer fc-secret");
    EXPECT_EQ(requests[0].header("Content-Type"), "application/json");
    const auto body = nlohmann::json::parse(requests[0].body);
    EXPECT_EQ(body.size(), 3u);
    EXPECT_EQ(body.at("query"), "쿼리 \"quoted\"");
    EXPECT_EQ(body.at("limit"), 5);
    EXPECT_EQ(body.at("scrapeOptions"), (nlohmann::json{{"formats", {"markdown"}}}));
    EXPECT_TRUE(body.at("scrapeOptions").at("formats").is_array());
    EXPECT_EQ(nlohmann::json::parse(requests[1].body).at("limit"), 2);
    // Both searches shared one pacer: the second waited for its turn.
    EXPECT_EQ(counting.sleeps->load(), 1);
}

TEST(FirecrawlTransport, StatusesAndBadBodiesMapToTheirErrors) {
    const auto failureFor = [](int status, const std::string& body) {
        const auto server = serverAnswering(status, body);
        return errorOf<FirecrawlTransportError>(
            [&] { transportFor(*server).fetchResultsHTML("q"); });
    };
    const std::string fine = replyWithHits(nlohmann::json::array());
    EXPECT_EQ(failureFor(401, fine), FirecrawlTransportError::unauthorized());
    EXPECT_EQ(failureFor(402, fine), FirecrawlTransportError::creditsExhausted());
    EXPECT_EQ(failureFor(429, fine), FirecrawlTransportError::rateLimited());
    EXPECT_EQ(failureFor(403, fine), FirecrawlTransportError::badHTTPStatus(403));
    EXPECT_EQ(failureFor(500, fine), FirecrawlTransportError::badHTTPStatus(500));
    EXPECT_EQ(failureFor(502, fine), FirecrawlTransportError::badHTTPStatus(502));
    EXPECT_EQ(failureFor(200, "not json"), FirecrawlTransportError::undecodableBody());
    EXPECT_EQ(failureFor(200, R"({"data": [1, 2]})"), FirecrawlTransportError::undecodableBody());
    EXPECT_EQ(failureFor(200, R"({"data": {"web": {"title": "a"}}})"),
              FirecrawlTransportError::undecodableBody());
    EXPECT_EQ(failureFor(200, R"({"data": {"web": [{"title": "a", "url": "u", "markdown": 3}]}})"),
              FirecrawlTransportError::undecodableBody());
    EXPECT_EQ(failureFor(200, fine), std::nullopt);
}

TEST(FirecrawlTransport, AnAbsentDataOrWebListIsEmptyTextNotAnError) {
    for (const std::string body : {R"({})", R"({"success": true, "data": {}})", R"({"data": null})",
                                   R"({"data": {"web": []}})"}) {
        const auto server = serverAnswering(200, body);
        EXPECT_EQ(transportFor(*server).fetchResultsHTML("q"), "") << body;
    }
}

TEST(FirecrawlTransport, OnlyTheFirstTwoHitsWithPageTextCarryAnExcerpt) {
    const auto server = serverAnswering(
        200, replyWithHits({
                 {{"title", ""}, {"url", "https://dropped.example/"}, {"markdown", "Dropped page"}},
                 {{"title", " One "},
                  {"url", "https://one.example/"},
                  {"description", " First. "},
                  {"markdown", "# Heading\nBody of **one** here"}},
                 {{"title", "Only marks"},
                  {"url", "https://marks.example/"},
                  {"description", "Marks."},
                  {"markdown", "--- ***\n![logo](l.png)"}},
                 {{"title", "Two"}, {"url", "https://two.example/"}, {"markdown", "Text of two"}},
                 {{"title", "Three"},
                  {"url", "https://three.example/"},
                  {"description", "Third."},
                  {"markdown", "Text of three"}},
                 {{"title", "Four"}, {"url", "https://four.example/"}},
             }));

    EXPECT_EQ(transportFor(*server).fetchResultsHTML("q"),
              SearXNGTransport::reserialize({
                  {"One", "https://one.example/", "First. — Heading Body of one here"},
                  // Page text that reduces to nothing is no excerpt and takes no place.
                  {"Only marks", "https://marks.example/", "Marks."},
                  // Without a description the excerpt stands alone, with no dash.
                  {"Two", "https://two.example/", "Text of two"},
                  {"Three", "https://three.example/", "Third."},
                  {"Four", "https://four.example/", ""},
              }));
}

TEST(FirecrawlTransport, TheExcerptKeepsOnlyTheWordsOfTheMarkdown) {
    EXPECT_EQ(FirecrawlTransport::plainTextExcerpt(
                  "## Getting started\n\n![diagram](https://x.example/d.png \"Diagram\")\n"
                  "Read the [official guide](https://guide.example/start) for a "
                  "<strong>well-known</strong> step."),
              "Getting started Read the official guide for a well known step.");
    // Quotes, code, tables and rules go; the words of a link inside a list stay.
    EXPECT_EQ(FirecrawlTransport::plainTextExcerpt(
                  "> quoted `code`\n| a | b |\n|---|---|\n* [item](u) _em_\n<br/>end"),
              "quoted code a b item em end");
    EXPECT_EQ(FirecrawlTransport::plainTextExcerpt("a  < b\tc\u3000d"), "a < b c d");
    EXPECT_EQ(FirecrawlTransport::plainTextExcerpt("[![badge](b.svg)](https://ci.example)"), "");
    EXPECT_EQ(FirecrawlTransport::plainTextExcerpt(" \n--\n "), "");

    // At most 800 characters, counted as the reader sees them.
    std::string korean;
    for (int i = 0; i < 900; ++i) korean += "가";
    const std::string cut = FirecrawlTransport::plainTextExcerpt(korean);
    EXPECT_EQ(nuvrel::base::text::count(cut), 800u);
    EXPECT_EQ(cut, nuvrel::base::text::prefix(korean, 800));
    std::string words;
    for (int i = 0; i < 300; ++i) words += "word\n\n";
    EXPECT_EQ(nuvrel::base::text::count(FirecrawlTransport::plainTextExcerpt(words)), 800u);
}

TEST(FirecrawlTransport, CancellingDuringTheRequestEndsInCancelledAtOnce) {
    auto reached = std::make_shared<test::Signal>();
    const auto server = test::postStalling("/v2/search", reached);
    const auto transport = transportFor(*server);
    test::expectPromptCancellation([&] { transport.fetchResultsHTML("slow"); }, reached->future());
}

}  // namespace
}  // namespace wayfen
