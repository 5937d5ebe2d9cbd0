#include "app/web_retrieval.h"

#include <mutex>
#include <string>
#include <utility>

#include "app/logging_page_transport.h"
#include "app/logging_web_search_transport.h"
#include "app/settings_keys.h"
#include "base/text.h"
#include "wayfen/duckduckgo_request_pacer.h"
#include "wayfen/fallback_web_search_transport.h"
#include "wayfen/firecrawl_transport.h"
#include "wayfen/searxng_transport.h"
#include "wayfen/tavily_transport.h"
#include "wayfen/url_session_page_transport.h"

namespace nuvrel::app {
namespace {

using Purpose = NetworkActivityLog::Purpose;

WebServiceEndpoints endpointsOf(const WebRetrievalSettings& settings) {
    return settings.endpoints ? *settings.endpoints : WebServiceEndpoints::publicServices();
}

constexpr double tavilyTimeout = 10;
constexpr int tavilyResultLimit = 8;
constexpr double firecrawlTimeout = 10;
constexpr int firecrawlResultLimit = 5;
constexpr double searxngTimeout = 8;
constexpr double wikipediaTimeout = 8;
constexpr int wikipediaMaxTitles = 2;
constexpr double pageTimeout = 3.5;
constexpr std::size_t pageMaxBytes = 1'572'864;
constexpr int pageConcurrencyLimit = 3;

// The .invalid top-level domain is reserved never to resolve.
constexpr std::string_view unreachableEndpoint = "https://nuvrel-debug-bad-host.invalid/search";

wayfen::WebSearchTransportPtr logged(wayfen::WebSearchTransportPtr transport, std::string host,
                                     const WebRetrievalSettings& settings) {
    return std::make_shared<LoggingWebSearchTransport>(std::move(transport), std::move(host),
                                                       Purpose::webSearch, settings.log);
}

std::string logHost(const base::Url& url) {
    return url.host().empty() ? url.text() : url.host();
}

wayfen::WebSearchTransportPtr tavily(const base::Url& endpoint,
                                     const WebRetrievalSettings& settings) {
    auto transport = std::make_shared<wayfen::TavilyTransport>(
        settings.session, tavilyTimeout, wayfen::DuckDuckGoRequestPacer::tavilyShared(),
        tavilyResultLimit, wayfen::TavilyTransport::SearchDepth::basic, endpoint);
    return logged(std::move(transport), logHost(endpoint), settings);
}

// Only with a non-empty key in the key store.
wayfen::WebSearchTransportPtr firecrawl(const WebRetrievalSettings& settings) {
    if (!settings.keychain) return nullptr;
    std::optional<std::string> key = settings.keychain->secret(firecrawlAPIKeyName);
    if (!key || key->empty()) return nullptr;
    const base::Url endpoint = endpointsOf(settings).firecrawl;
    auto transport = std::make_shared<wayfen::FirecrawlTransport>(
        std::move(*key), settings.session, firecrawlTimeout,
        wayfen::DuckDuckGoRequestPacer::firecrawlShared(), firecrawlResultLimit, endpoint);
    return logged(std::move(transport), logHost(endpoint), settings);
}

// Only with the user's own server: the setting, trimmed, must parse as a URL.
wayfen::WebSearchTransportPtr searxng(const WebRetrievalSettings& settings) {
    if (!settings.userDefaults) return nullptr;
    const std::string raw =
        settings.userDefaults->string(settingsKey::searxngEndpoint).value_or("");
    const std::string trimmed = base::text::trim(raw);
    if (trimmed.empty()) return nullptr;
    std::optional<base::Url> endpoint = base::Url::parse(trimmed);
    if (!endpoint) return nullptr;
    auto transport = std::make_shared<wayfen::SearXNGTransport>(
        wayfen::SearXNGTransport::curatedInstances(), *endpoint, settings.session, searxngTimeout,
        wayfen::DuckDuckGoRequestPacer::searxngShared(), true);
    return logged(std::move(transport), logHost(*endpoint), settings);
}

wayfen::WebSearchTransportPtr wikipedia(const WebRetrievalSettings& settings) {
    auto transport = std::make_shared<wayfen::WikipediaTransport>(
        settings.session, wikipediaTimeout, wayfen::DuckDuckGoRequestPacer::wikipediaShared(),
        wikipediaMaxTitles, endpointsOf(settings).wikipediaHosts,
        endpointsOf(settings).wikipediaPort);
    return logged(std::move(transport), std::string(wayfen::WikipediaTransport::domain), settings);
}

// The chain, folded at the first search: the key store is asked for the Firecrawl key only
// when a sentence searches the web, so that no other sentence waits on it.
class ChainOnFirstSearch : public wayfen::WebSearchTransport {
public:
    explicit ChainOnFirstSearch(WebRetrievalSettings settings) : settings_(std::move(settings)) {}

    std::string fetchResultsHTML(const std::string& query) const override {
        std::call_once(folded_, [this] {
            chain_ = wayfen::foldIntoFallbackChain(webSearchChainMembers(settings_));
        });
        return chain_->fetchResultsHTML(query);
    }

private:
    WebRetrievalSettings settings_;
    mutable std::once_flag folded_;
    mutable wayfen::WebSearchTransportPtr chain_;
};

}  // namespace

WebServiceEndpoints WebServiceEndpoints::publicServices() {
    return WebServiceEndpoints{.tavily = wayfen::TavilyTransport::defaultEndpoint(),
                               .firecrawl = wayfen::FirecrawlTransport::defaultEndpoint(),
                               .wikipediaHosts = std::nullopt,
                               .wikipediaPort = std::nullopt,
                               .unreachable = *base::Url::parse(unreachableEndpoint)};
}

std::vector<wayfen::WebSearchTransportPtr> webSearchChainMembers(
    const WebRetrievalSettings& settings) {
    std::vector<wayfen::WebSearchTransportPtr> members;
    const WebServiceEndpoints endpoints = endpointsOf(settings);
    if (settings.debugBadHost) members.push_back(tavily(endpoints.unreachable, settings));
    members.push_back(tavily(endpoints.tavily, settings));
    for (auto member : {firecrawl(settings), searxng(settings), wikipedia(settings)}) {
        if (member) members.push_back(std::move(member));
    }
    return members;
}

WebRetrieval WebRetrieval::make(const WebRetrievalSettings& settings) {
    // No session given: the page transport makes its own, which guards every redirect.
    auto pages = std::make_shared<wayfen::URLSessionPageTransport>(
        nullptr, pageTimeout, wayfen::URLSessionPageTransport::defaultUserAgent, pageMaxBytes);
    return WebRetrieval{
        .transport = std::make_shared<ChainOnFirstSearch>(settings),
        .pageFetcher = wayfen::PageFetcher{
            .transport = std::make_shared<LoggingPageTransport>(std::move(pages), settings.log),
            .timeout = pageTimeout,
            .maxBytes = pageMaxBytes,
            .concurrencyLimit = pageConcurrencyLimit,
            .sleepFn = base::liveSleep}};
}

}  // namespace nuvrel::app
