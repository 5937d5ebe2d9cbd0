#include <gtest/gtest.h>

#include "app/logging_page_transport.h"
#include "app/logging_web_search_transport.h"

namespace nuvrel::app {
namespace {

using Purpose = NetworkActivityLog::Purpose;

// Notes what the log held when it was called, so a test sees that recording came first.
class SpyingSearchTransport : public wayfen::WebSearchTransport {
public:
    explicit SpyingSearchTransport(std::shared_ptr<NetworkActivityLog> log)
        : log_(std::move(log)) {}
    std::string fetchResultsHTML(const std::string& query) const override {
        entriesSeen = log_->recentEntries(10).size();
        queries.push_back(query);
        if (query == "fail") throw wayfen::WebSearchTransportError::badHTTPStatus(503);
        return "<html>" + query + "</html>";
    }
    mutable std::size_t entriesSeen = 0;
    mutable std::vector<std::string> queries;

private:
    std::shared_ptr<NetworkActivityLog> log_;
};

class SpyingPageTransport : public wayfen::PageTransport {
public:
    explicit SpyingPageTransport(std::shared_ptr<NetworkActivityLog> log) : log_(std::move(log)) {}
    wayfen::RawPageResponse fetchPage(const base::Url& url) const override {
        entriesSeen = log_->recentEntries(10).size();
        return {200, "text/html", "page of " + url.text()};
    }
    mutable std::size_t entriesSeen = 0;

private:
    std::shared_ptr<NetworkActivityLog> log_;
};

TEST(LoggingWebSearchTransport, RecordsTheFixedPathBeforeSearchingAndNeverTheQuery) {
    auto log = std::make_shared<NetworkActivityLog>();
    auto inner = std::make_shared<SpyingSearchTransport>(log);
    const LoggingWebSearchTransport transport(inner, "api.tavily.com", Purpose::webSearch, log);

    EXPECT_EQ(transport.fetchResultsHTML("my secret question"), "<html>my secret question</html>");
    EXPECT_EQ(inner->entriesSeen, 1u) << "the entry is recorded before the wrapped call";
    EXPECT_EQ(inner->queries, std::vector<std::string>{"my secret question"});

    const auto entries = log->recentEntries(10);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].host, "api.tavily.com");
    EXPECT_EQ(entries[0].path, "/search");
    EXPECT_EQ(entries[0].purpose, Purpose::webSearch);
    EXPECT_EQ(entries[0].bytes, std::nullopt);

    // A failed search was still a request that left the machine; the error passes through.
    EXPECT_THROW(transport.fetchResultsHTML("fail"), wayfen::WebSearchTransportError);
    EXPECT_EQ(log->recentEntries(10).size(), 2u);
}

TEST(LoggingWebSearchTransport, LeavesALocalProviderOutOfTheLog) {
    auto log = std::make_shared<NetworkActivityLog>();
    const LoggingWebSearchTransport transport(std::make_shared<SpyingSearchTransport>(log),
                                              "localhost", Purpose::webSearch, log);
    transport.fetchResultsHTML("q");
    EXPECT_TRUE(log->recentEntries(10).empty());
}

TEST(LoggingPageTransport, RecordsHostAndPathWithoutTheQueryBeforeFetching) {
    auto log = std::make_shared<NetworkActivityLog>();
    auto inner = std::make_shared<SpyingPageTransport>(log);
    const LoggingPageTransport transport(inner, log);

    const auto url = base::Url::parse("https://Example.COM/a/b.html?q=private+words#top").value();
    const auto response = transport.fetchPage(url);
    EXPECT_EQ(response.data, "page of " + url.text()) << "the wrapped result is passed on";
    EXPECT_EQ(response.contentType, "text/html");
    EXPECT_EQ(inner->entriesSeen, 1u);

    const auto file = base::Url::parse("file:///tmp/page.html").value();
    transport.fetchPage(file);
    transport.fetchPage(base::Url::parse("https://ko.wikipedia.org/wiki/서울").value());
    transport.fetchPage(base::Url::parse("https://example.com/%FF%20x").value());

    auto entries = log->recentEntries(10);
    ASSERT_EQ(entries.size(), 4u);
    EXPECT_EQ(entries[1].path, "/wiki/서울") << "paths are kept for people to read";
    EXPECT_EQ(entries[0].path, "/%FF%20x") << "bytes that are no text stay escaped";
    entries.erase(entries.begin(), entries.begin() + 2);
    EXPECT_EQ(entries[1].host, "example.com");
    EXPECT_EQ(entries[1].path, "/a/b.html");
    EXPECT_EQ(entries[1].purpose, Purpose::webSearch);
    EXPECT_EQ(entries[0].host, file.text()) << "a URL without a host is noted by its whole text";
    EXPECT_EQ(entries[0].path, "/tmp/page.html");
}

}  // namespace
}  // namespace nuvrel::app
