#include "wayfen/wikipedia_transport.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "base/http.h"
#include "search_transport_test_support.h"
#include "support/tls_loopback_server.h"
#include "wayfen/searxng_transport.h"

namespace wayfen {
namespace {

using namespace std::chrono_literals;
using nuvrel::test::TlsLoopbackServer;
using test::CountingPacer;
using test::RequestLog;
using Handler = std::function<void(const httplib::Request&, httplib::Response&)>;

constexpr std::string_view summaryPrefix = "/api/rest_v1/page/summary/";

// A stand-in for both editions: "en" is reached as 127.0.0.1 and "ko" as localhost, so the
// Host header tells them apart.
struct FakeWikipedia {
    FakeWikipedia(Handler openSearch, Handler summary)
        : server([&](httplib::Server& routes) {
              routes.Get("/w/api.php", [this, openSearch](const auto& request, auto& response) {
                  log.add(request);
                  openSearch(request, response);
              });
              routes.Get(R"(/api/rest_v1/page/summary/.*)",
                         [this, summary](const auto& request, auto& response) {
                             log.add(request);
                             summary(request, response);
                         });
          }) {}

    WikipediaTransport transport(int maxTitles, PacerPtr pacer = CountingPacer().pacer) const {
        return WikipediaTransport(
            test::sessionTrusting(server), 8, std::move(pacer), maxTitles,
            WikipediaTransport::HostMap{{"en", "127.0.0.1"}, {"ko", "localhost"}}, server.port());
    }

    RequestLog log;
    TlsLoopbackServer server;
};

Handler answering(int status, std::string body) {
    return [=](const httplib::Request&, httplib::Response& response) {
        response.status = status;
        response.set_content(body, "application/json");
    };
}

Handler titles(const std::vector<std::string>& list) {
    return answering(200, nlohmann::json::array(
                              {"query", list, nlohmann::json::array(), nlohmann::json::array()})
                              .dump());
}

// The title as the server reads it from the path, decoded once.
std::string requestedTitle(const httplib::Request& request) {
    return request.path.substr(summaryPrefix.size());
}

TEST(WikipediaTransport, ChoosesTheEditionByHangulSyllables) {
    const std::optional<WikipediaTransport::HostMap> none;
    EXPECT_EQ(WikipediaTransport::host("서울 날씨", none), "ko.wikipedia.org");
    EXPECT_EQ(WikipediaTransport::host("iPhone 16 가격", none), "ko.wikipedia.org");
    EXPECT_EQ(WikipediaTransport::host("힣", none), "ko.wikipedia.org");
    EXPECT_EQ(WikipediaTransport::host("Eiffel Tower", none), "en.wikipedia.org");
    EXPECT_EQ(WikipediaTransport::host("東京タワー", none), "en.wikipedia.org");
    EXPECT_EQ(WikipediaTransport::host("北京", none), "en.wikipedia.org");
    // Compatibility jamo are no syllables.
    EXPECT_EQ(WikipediaTransport::host("ㅋㅋ ㅎ", none), "en.wikipedia.org");
    EXPECT_EQ(WikipediaTransport::host("", none), "en.wikipedia.org");

    const WikipediaTransport::HostMap koreanOnly{{"ko", "ko.mirror.test"}};
    EXPECT_EQ(WikipediaTransport::host("서울", koreanOnly), "ko.mirror.test");
    EXPECT_EQ(WikipediaTransport::host("Seoul", koreanOnly), "en.wikipedia.org");
}

TEST(WikipediaTransport, SummarisesTheFirstTitlesInOrderOneTurnPerRequest) {
    FakeWikipedia wikipedia(
        titles({"Alpha", "Beta", "Gamma", "Delta", "Epsilon"}),
        [](const httplib::Request& request, httplib::Response& response) {
            const std::string title = requestedTitle(request);
            nlohmann::json reply{{"extract", "Text of " + title + ".\n "}};
            if (title == "Alpha") {
                reply["title"] = "Alpha (letter)";
                reply["content_urls"] = {
                    {"desktop", {{"page", "https://en.example/wiki/Alpha_(letter)"}}},
                    {"mobile", {{"page", "https://m.example/wiki/Alpha"}}}};
            }
            response.set_content(reply.dump(), "application/json");
        });
    const CountingPacer counting;
    const std::string html =
        wikipedia.transport(2, counting.pacer).fetchResultsHTML("greek letters");

    // Without content_urls the address is built from the host, with no port.
    EXPECT_EQ(html,
              SearXNGTransport::reserialize({
                  {"Alpha (letter)", "https://en.example/wiki/Alpha_(letter)", "Text of Alpha."},
                  {"Beta", "https://127.0.0.1/wiki/Beta", "Text of Beta."},
              }));
    const auto requests = wikipedia.log.all();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_EQ(requests[0].target,
              "/w/api.php?action=opensearch&search=greek%20letters&limit=5&format=json");
    EXPECT_EQ(requests[1].target, "/api/rest_v1/page/summary/Alpha");
    EXPECT_EQ(requests[2].target, "/api/rest_v1/page/summary/Beta");
    for (const auto& request : requests) {
        EXPECT_EQ(request.method, "GET");
        EXPECT_EQ(request.header("User-Agent"), "Nuvrel/1.0 (macOS Spotlight-replacement app)");
        EXPECT_EQ(request.header("Host"), "127.0.0.1:" + std::to_string(wikipedia.server.port()));
    }
    EXPECT_EQ(counting.sleeps->load(), 2);

    // A Korean query goes to the Korean edition, for the titles and the summaries.
    wikipedia.transport(1).fetchResultsHTML("그리스 문자");
    const auto korean = wikipedia.log.all();
    ASSERT_EQ(korean.size(), 5u);
    EXPECT_EQ(korean[3].param("search"), "그리스 문자");
    EXPECT_EQ(korean[3].header("Host"), "localhost:" + std::to_string(wikipedia.server.port()));
    EXPECT_EQ(korean[4].header("Host"), "localhost:" + std::to_string(wikipedia.server.port()));
}

TEST(WikipediaTransport, DropsSummariesWithoutAUsableExtractAndKeepsTheRest) {
    FakeWikipedia wikipedia(titles({"Blank", "Missing", "Broken", "Typed", "Gone", "Kept"}),
                            [](const httplib::Request& request, httplib::Response& response) {
                                const std::string title = requestedTitle(request);
                                std::string body;
                                if (title == "Blank")
                                    body = R"({"title": "Blank", "extract": " \n\t "})";
                                if (title == "Missing")
                                    body = R"({"title": "Missing", "description": "d"})";
                                if (title == "Broken") body = "<html>oops</html>";
                                if (title == "Typed") body = R"({"extract": ["not", "text"]})";
                                if (title == "Gone")
                                    response.status = 404, body = R"({"extract": "Gone."})";
                                if (title == "Kept")
                                    body =
                                        R"({"extract": "Kept.", "content_urls": {"mobile": {}}})";
                                response.set_content(body, "application/json");
                            });
    EXPECT_EQ(wikipedia.transport(6).fetchResultsHTML("q"),
              SearXNGTransport::reserialize({{"Kept", "https://127.0.0.1/wiki/Kept", "Kept."}}));
    EXPECT_EQ(wikipedia.log.size(), 7u);
}

TEST(WikipediaTransport, GivesEmptyTextAndNoErrorWhenThereAreNoTitles) {
    const std::vector<std::pair<int, std::string>> replies = {
        {429, R"(["q", ["Alpha"], [], []])"},
        {500, R"(["q", ["Alpha"], [], []])"},
        {200, R"(["q", [], [], []])"},
        {200, "garbage"},
        {200, R"({"query": "q", "titles": ["Alpha"]})"},
        {200, R"(["q"])"},
        {200, R"(["q", "Alpha"])"},
        {200, R"(["q", ["Alpha", 5]])"},
    };
    for (const auto& [status, body] : replies) {
        FakeWikipedia wikipedia(answering(status, body), answering(200, R"({"extract": "x"})"));
        EXPECT_EQ(wikipedia.transport(2).fetchResultsHTML("q"), "") << status << " " << body;
        // Nothing was asked beyond the titles.
        EXPECT_EQ(wikipedia.log.size(), 1u) << body;
    }

    // Two elements are enough: the rest of the reply is not needed.
    FakeWikipedia minimal(answering(200, R"(["q", ["Alpha"]])"),
                          answering(200, R"({"extract": "x"})"));
    EXPECT_NE(minimal.transport(2).fetchResultsHTML("q"), "");
}

TEST(WikipediaTransport, GivesEmptyTextAndNoErrorWhenTheNetworkFails) {
    int closedPort = 0;
    {
        FakeWikipedia gone(titles({"Alpha"}), answering(200, R"({"extract": "x"})"));
        closedPort = gone.server.port();
    }
    const WikipediaTransport unreachable(
        std::make_shared<nuvrel::base::HttpSession>(), 8, CountingPacer().pacer, 2,
        WikipediaTransport::HostMap{{"en", "127.0.0.1"}}, closedPort);
    EXPECT_EQ(unreachable.fetchResultsHTML("q"), "");

    // A peer that cannot be trusted is a failure like any other.
    FakeWikipedia wikipedia(titles({"Alpha"}), answering(200, R"({"extract": "x"})"));
    const WikipediaTransport untrusting(
        std::make_shared<nuvrel::base::HttpSession>(), 8, CountingPacer().pacer, 2,
        WikipediaTransport::HostMap{{"en", "127.0.0.1"}}, wikipedia.server.port());
    EXPECT_EQ(untrusting.fetchResultsHTML("q"), "");
    EXPECT_EQ(wikipedia.log.size(), 0u);
}

TEST(WikipediaTransport, AsksForATitleInItsDoublyEncodedForm) {
    FakeWikipedia wikipedia(titles({"Seoul Tower", "서울", "AC/DC", "Python (language)", "100%"}),
                            answering(200, R"({"extract": "Found."})"));
    const std::string html = wikipedia.transport(5).fetchResultsHTML("q");

    const auto requests = wikipedia.log.all();
    ASSERT_EQ(requests.size(), 6u);
    EXPECT_EQ(requests[1].target, "/api/rest_v1/page/summary/Seoul%2520Tower");
    EXPECT_EQ(requests[2].target, "/api/rest_v1/page/summary/%25EC%2584%259C%25EC%259A%25B8");
    EXPECT_EQ(requests[3].target, "/api/rest_v1/page/summary/AC/DC");
    EXPECT_EQ(requests[4].target, "/api/rest_v1/page/summary/Python%2520(language)");
    EXPECT_EQ(requests[5].target, "/api/rest_v1/page/summary/100%2525");

    // The address built for the reader is encoded once.
    EXPECT_EQ(html,
              SearXNGTransport::reserialize({
                  {"Seoul Tower", "https://127.0.0.1/wiki/Seoul%20Tower", "Found."},
                  {"서울", "https://127.0.0.1/wiki/%EC%84%9C%EC%9A%B8", "Found."},
                  {"AC/DC", "https://127.0.0.1/wiki/AC/DC", "Found."},
                  {"Python (language)", "https://127.0.0.1/wiki/Python%20(language)", "Found."},
                  {"100%", "https://127.0.0.1/wiki/100%25", "Found."},
              }));
}

// Signals `reached`, then holds the request until the server stops.
Handler stalling(TlsLoopbackServer* const& server, std::shared_ptr<test::Signal> reached,
                 std::string body) {
    return [&server, reached, body](const httplib::Request&, httplib::Response& response) {
        reached->fire();
        server->pause(20s);
        response.set_content(body, "application/json");
    };
}

TEST(WikipediaTransport, CancellationDuringARequestOrAWaitEndsInCancelled) {
    const std::string someTitles = R"(["q", ["Alpha", "Beta"]])";
    const std::string someSummary = R"({"extract": "x"})";

    // While the titles are on their way: no summary is asked for.
    auto titlesReached = std::make_shared<test::Signal>();
    TlsLoopbackServer* titlesServer = nullptr;
    FakeWikipedia slowTitles(stalling(titlesServer, titlesReached, someTitles),
                             answering(200, someSummary));
    titlesServer = &slowTitles.server;
    const auto titlesTransport = slowTitles.transport(2);
    test::expectPromptCancellation([&] { titlesTransport.fetchResultsHTML("q"); },
                                   titlesReached->future());
    EXPECT_EQ(slowTitles.log.size(), 1u);

    // While a summary is on its way: the walk ends, the second title is never asked for.
    auto summaryReached = std::make_shared<test::Signal>();
    TlsLoopbackServer* summaryServer = nullptr;
    FakeWikipedia slowSummary(answering(200, someTitles),
                              stalling(summaryServer, summaryReached, someSummary));
    summaryServer = &slowSummary.server;
    const auto summaryTransport = slowSummary.transport(2);
    test::expectPromptCancellation([&] { summaryTransport.fetchResultsHTML("q"); },
                                   summaryReached->future());
    EXPECT_EQ(slowSummary.log.size(), 2u);

    // While a summary waits for its pacer turn.
    auto waiting = std::make_shared<test::Signal>();
    FakeWikipedia paced(answering(200, someTitles), answering(200, someSummary));
    const auto pacedTransport = paced.transport(2, test::hourPacer(waiting));
    test::expectPromptCancellation([&] { pacedTransport.fetchResultsHTML("q"); },
                                   waiting->future());
    EXPECT_EQ(paced.log.size(), 1u);
}

}  // namespace
}  // namespace wayfen
