#pragma once
// Firecrawl's search API with the user's own key, as a search transport: the optional second
// tier of the chain. The first two hits with page text get a plain excerpt of it behind their
// description. Results are written out in the common wire shape.

#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/http.h"
#include "base/url.h"
#include "wayfen/duckduckgo_request_pacer.h"
#include "wayfen/searxng_transport.h"
#include "wayfen/web_search_transport.h"

namespace wayfen {

class FirecrawlTransportError : public std::exception {
public:
    enum class Kind { badHTTPStatus, unauthorized, creditsExhausted, rateLimited, undecodableBody };

    static FirecrawlTransportError badHTTPStatus(int status) {
        return FirecrawlTransportError(Kind::badHTTPStatus, status);
    }
    static FirecrawlTransportError unauthorized() {
        return FirecrawlTransportError(Kind::unauthorized, 0);
    }
    static FirecrawlTransportError creditsExhausted() {
        return FirecrawlTransportError(Kind::creditsExhausted, 0);
    }
    static FirecrawlTransportError rateLimited() {
        return FirecrawlTransportError(Kind::rateLimited, 0);
    }
    static FirecrawlTransportError undecodableBody() {
        return FirecrawlTransportError(Kind::undecodableBody, 0);
    }

    Kind kind() const { return kind_; }
    // badHTTPStatus only; -1 for a reply that was not HTTP.
    int status() const { return status_; }
    // "badHTTPStatus(403)", "creditsExhausted", ...
    std::string description() const { return description_; }
    const char* what() const noexcept override { return description_.c_str(); }

    friend bool operator==(const FirecrawlTransportError& a, const FirecrawlTransportError& b) {
        return a.kind_ == b.kind_ && a.status_ == b.status_;
    }

private:
    FirecrawlTransportError(Kind kind, int status);
    Kind kind_;
    int status_;
    std::string description_;
};

class FirecrawlTransport final : public WebSearchTransport {
public:
    // The service's search operation on its public host.
    static const nuvrel::base::Url& defaultEndpoint();

    // `apiKey` is the user's secret, stored under "firecrawlAPIKey".
    FirecrawlTransport(std::string apiKey, std::shared_ptr<nuvrel::base::HttpSession> session,
                       double timeoutInterval, PacerPtr pacer, int resultLimit,
                       nuvrel::base::Url endpoint = defaultEndpoint());

    // One POST after a turn of the pacer. Throws FirecrawlTransportError, the session's
    // HttpError, or base::Cancelled. A well-formed empty list is "", not an error.
    std::string fetchResultsHTML(const std::string& query) const override;

    // Page Markdown reduced to its words: images, tags and Markdown marks (every hyphen with
    // them) gone, links kept as their text, white space collapsed, at most 800 characters.
    static std::string plainTextExcerpt(std::string_view markdown);

    // The usable results of a reply body, in order, the first ones enriched with an excerpt
    // of their page. Throws undecodableBody for a body that is no JSON object.
    static std::vector<SearXNGResultItem> decodeResults(std::string_view body);

    const nuvrel::base::Url& endpoint() const { return endpoint_; }
    double timeoutInterval() const { return timeoutInterval_; }
    int resultLimit() const { return resultLimit_; }

private:
    std::string apiKey_;
    std::shared_ptr<nuvrel::base::HttpSession> session_;
    nuvrel::base::Url endpoint_;
    double timeoutInterval_;
    PacerPtr pacer_;
    int resultLimit_;
};

}  // namespace wayfen
