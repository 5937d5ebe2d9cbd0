#pragma once
// The web side of the program, built once at launch: the chain of search providers and the
// page fetcher, each request of both noted in the network activity log. Settings that change
// the chain (the SearXNG endpoint, the Firecrawl key) take effect at the next launch.

#include <memory>
#include <optional>

#include "app/keychain_storing.h"
#include "app/network_activity_log.h"
#include "app/settings_storing.h"
#include "base/http.h"
#include "base/url.h"
#include "wayfen/page_fetcher.h"
#include "wayfen/web_search_transport.h"
#include "wayfen/wikipedia_transport.h"

namespace nuvrel::app {

// Where the web services are. The defaults are the public services; tests point them at
// loopback servers.
struct WebServiceEndpoints {
    base::Url tavily;
    base::Url firecrawl;
    std::optional<wayfen::WikipediaTransport::HostMap> wikipediaHosts;
    std::optional<int> wikipediaPort;
    // The head of the chain under NUVREL_DEBUG_WEB_BAD_HOST: an address nothing answers on.
    base::Url unreachable;

    static WebServiceEndpoints publicServices();
};

struct WebRetrievalSettings {
    std::shared_ptr<base::HttpSession> session;
    std::shared_ptr<NetworkActivityLog> log;
    // Reads "searxngEndpoint".
    std::shared_ptr<SettingsStoring> userDefaults;
    // Holds the Firecrawl key, if the user gave one; may be null.
    std::shared_ptr<KeychainStoring> keychain;
    // An unreachable provider heads the chain, so that its fall-over can be watched.
    bool debugBadHost = false;
    // Nothing: the public services, parsed at the first search, since parsing opens libcurl.
    std::optional<WebServiceEndpoints> endpoints = std::nullopt;
};

struct WebRetrieval {
    // Tried in order: Tavily; Firecrawl with the user's key; the user's SearXNG server;
    // Wikipedia, which never fails, so that an offline query ends with an empty page. Folded
    // at the first search.
    wayfen::WebSearchTransportPtr transport;
    // 3.5 s and 1.5 MiB per page, three pages at most, no unsafe destination.
    wayfen::PageFetcher pageFetcher;

    static WebRetrieval make(const WebRetrievalSettings& settings);
};

// The providers' members in order of trial, each in its own logger, before they are folded.
std::vector<wayfen::WebSearchTransportPtr> webSearchChainMembers(
    const WebRetrievalSettings& settings);

}  // namespace nuvrel::app
