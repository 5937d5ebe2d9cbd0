#include "app/web_retrieval.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>

#include "app/app_test_support.h"
#include "app/settings_keys.h"
#include "support/loopback_server.h"
#include "support/temporary_home.h"
#include "wayfen/duckduckgo_lite_parser.h"

namespace nuvrel::app {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class MemoryKeychain : public KeychainStoring {
public:
    std::optional<std::string> secret(std::string_view key) const override {
        const auto found = secrets.find(std::string(key));
        return found == secrets.end() ? std::nullopt : std::optional<std::string>(found->second);
    }
    void setSecret(std::string_view key, std::optional<std::string> value) override {
        if (value) secrets[std::string(key)] = *value;
    }
    std::map<std::string, std::string> secrets;
};

// Stand-ins for the providers on one loopback server. Each answers with the status and body
// set for it and counts its requests, in the order they came.
struct Providers {
    struct Reply {
        int status = 500;
        std::string body;
    };
    std::mutex mutex;
    std::map<std::string, Reply> replies;
    std::vector<std::string> asked;
    std::string firecrawlAuthorization;

    void answer(const std::string& name, const httplib::Request& request,
                httplib::Response& response) {
        std::lock_guard lock(mutex);
        asked.push_back(name);
        if (name == "firecrawl") firecrawlAuthorization = request.get_header_value("Authorization");
        const Reply reply = replies.count(name) ? replies[name] : Reply{};
        response.status = reply.status;
        response.set_content(reply.body, "application/json");
    }
    std::vector<std::string> requests() {
        std::lock_guard lock(mutex);
        return asked;
    }
};

std::string resultsJSON(const char* listKey, const char* snippetKey, const std::string& title,
                        const std::string& url) {
    nlohmann::json entry = {
        {"title", title}, {"url", url}, {snippetKey, "A snippet about " + title}};
    return nlohmann::json{{listKey, nlohmann::json::array({entry})}}.dump();
}

class WebRetrievalTest : public ::testing::Test {
protected:
    WebRetrievalTest()
        : server([this](httplib::Server& http) {
              http.Post("/tavily",
                        [this](const auto& q, auto& r) { providers.answer("tavily", q, r); });
              http.Post("/firecrawl",
                        [this](const auto& q, auto& r) { providers.answer("firecrawl", q, r); });
              http.Get("/searx/search",
                       [this](const auto& q, auto& r) { providers.answer("searxng", q, r); });
              http.Post("/dead",
                        [this](const auto& q, auto& r) { providers.answer("unreachable", q, r); });
          }) {
        settings.session = std::make_shared<base::HttpSession>();
        settings.log = log;
        settings.userDefaults = defaults;
        settings.keychain = keychain;
        // Wikipedia is pointed at a loopback port where nothing listens: it finds nothing.
        settings.endpoints = WebServiceEndpoints{
            .tavily = *base::Url::parse(server.url("/tavily")),
            .firecrawl = *base::Url::parse(server.url("/firecrawl")),
            .wikipediaHosts =
                wayfen::WikipediaTransport::HostMap{{"en", "127.0.0.1"}, {"ko", "127.0.0.1"}},
            .wikipediaPort = 1,
            .unreachable = *base::Url::parse(server.url("/dead"))};
    }

    std::vector<std::string> titlesFound(const std::string& query) {
        const auto chain = WebRetrieval::make(settings).transport;
        std::vector<std::string> titles;
        for (const auto& result :
             wayfen::DuckDuckGoLiteParser::parse(chain->fetchResultsHTML(query), 8)) {
            titles.push_back(result.title);
        }
        return titles;
    }

    nuvrel::test::TemporaryHome home;
    Providers providers;
    nuvrel::test::LoopbackServer server;
    std::shared_ptr<NetworkActivityLog> log = std::make_shared<NetworkActivityLog>();
    std::shared_ptr<test::InMemorySettingsStore> defaults =
        std::make_shared<test::InMemorySettingsStore>();
    std::shared_ptr<MemoryKeychain> keychain = std::make_shared<MemoryKeychain>();
    WebRetrievalSettings settings;
};

TEST_F(WebRetrievalTest, OptionalProvidersJoinOnlyWhenConfigured) {
    EXPECT_EQ(webSearchChainMembers(settings).size(), 2u);  // Tavily and Wikipedia

    keychain->secrets[std::string(firecrawlAPIKeyName)] = "";
    defaults->set(settingsKey::searxngEndpoint, std::string(" \n "));
    EXPECT_EQ(webSearchChainMembers(settings).size(), 2u);
    defaults->set(settingsKey::searxngEndpoint, std::string("not a url"));
    EXPECT_EQ(webSearchChainMembers(settings).size(), 2u);

    keychain->secrets[std::string(firecrawlAPIKeyName)] = "fc-key";
    defaults->set(settingsKey::searxngEndpoint, std::string("  " + server.url("/searx") + "\n"));
    EXPECT_EQ(webSearchChainMembers(settings).size(), 4u);

    settings.keychain = nullptr;
    settings.debugBadHost = true;
    EXPECT_EQ(webSearchChainMembers(settings).size(), 4u);
}

TEST_F(WebRetrievalTest, ProvidersAreTriedInOrderUntilOneHasResults) {
    keychain->secrets[std::string(firecrawlAPIKeyName)] = "fc-key";
    defaults->set(settingsKey::searxngEndpoint, std::string(" " + server.url("/searx")));
    providers.replies["tavily"] = {429, "{}"};
    providers.replies["firecrawl"] = {200, R"({"success":true,"data":{"web":[]}})"};
    providers.replies["searxng"] = {
        200, resultsJSON("results", "content", "From SearXNG", "https://s.example/a")};

    EXPECT_EQ(titlesFound("cup final"), std::vector<std::string>{"From SearXNG"});
    EXPECT_EQ(providers.requests(), (std::vector<std::string>{"tavily", "firecrawl", "searxng"}));
    EXPECT_EQ(providers.firecrawlAuthorization, "Bearer fc-key");
}

TEST_F(WebRetrievalTest, WithoutResultsAnywhereTheChainEndsInAnEmptyPageNotAnError) {
    providers.replies["tavily"] = {503, ""};
    std::string page = "unset";
    EXPECT_NO_THROW(page = WebRetrieval::make(settings).transport->fetchResultsHTML("anything"));
    EXPECT_EQ(page, "");
    EXPECT_EQ(providers.requests(), std::vector<std::string>{"tavily"});
    // Wikipedia's attempt is noted under its domain, with the fixed path and no query.
    const auto entries = log->recentEntries(10);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].host, "wikipedia.org");
    EXPECT_EQ(entries[0].path, "/search");
    EXPECT_EQ(entries[0].purpose, NetworkActivityLog::Purpose::webSearch);
}

TEST_F(WebRetrievalTest, DebugBadHostHeadsTheChainAndFallsOverToTavily) {
    settings.debugBadHost = true;
    providers.replies["tavily"] = {
        200, resultsJSON("results", "content", "From Tavily", "https://t.example/")};
    EXPECT_EQ(titlesFound("cup"), std::vector<std::string>{"From Tavily"});
    EXPECT_EQ(providers.requests(), (std::vector<std::string>{"unreachable", "tavily"}));
}

TEST_F(WebRetrievalTest, PageFetcherNotesEachPageAndNeverReachesLocalHosts) {
    const wayfen::PageFetcher fetcher = WebRetrieval::make(settings).pageFetcher;
    // The loopback server is a local destination: refused before any connection.
    const auto pages =
        fetcher.fetchAll({*base::Url::parse(server.url("/page")),
                          *base::Url::parse("http://printer.local/status?secret=1")});
    EXPECT_THAT(pages, IsEmpty());
    EXPECT_THAT(providers.requests(), IsEmpty());
    const auto entries = log->recentEntries(10);
    ASSERT_EQ(entries.size(), 1u);  // loopback hosts are never noted
    EXPECT_EQ(entries[0].host, "printer.local");
    EXPECT_EQ(entries[0].path, "/status");
}

}  // namespace
}  // namespace nuvrel::app
