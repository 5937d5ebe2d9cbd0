#pragma once
// Tavily's search API in its keyless mode, as a search transport: the head of the chain.
// Its JSON results are written out in the common wire shape.

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

class TavilyTransportError : public std::exception {
public:
    enum class Kind { badHTTPStatus, rateLimited, undecodableBody };

    static TavilyTransportError badHTTPStatus(int status) {
        return TavilyTransportError(Kind::badHTTPStatus, status);
    }
    static TavilyTransportError rateLimited() { return TavilyTransportError(Kind::rateLimited, 0); }
    static TavilyTransportError undecodableBody() {
        return TavilyTransportError(Kind::undecodableBody, 0);
    }

    Kind kind() const { return kind_; }
    // badHTTPStatus only; -1 for a reply that was not HTTP.
    int status() const { return status_; }
    // "badHTTPStatus(503)", "rateLimited", ...
    std::string description() const { return description_; }
    const char* what() const noexcept override { return description_.c_str(); }

    friend bool operator==(const TavilyTransportError& a, const TavilyTransportError& b) {
        return a.kind_ == b.kind_ && a.status_ == b.status_;
    }

private:
    TavilyTransportError(Kind kind, int status);
    Kind kind_;
    int status_;
    std::string description_;
};

class TavilyTransport final : public WebSearchTransport {
public:
    enum class SearchDepth { basic, advanced };

    // The service's search operation on its public host.
    static const nuvrel::base::Url& defaultEndpoint();

    TavilyTransport(std::shared_ptr<nuvrel::base::HttpSession> session, double timeoutInterval,
                    PacerPtr pacer, int resultLimit, SearchDepth searchDepth,
                    nuvrel::base::Url endpoint = defaultEndpoint());

    // One POST after a turn of the pacer. Throws TavilyTransportError, the session's
    // HttpError, or base::Cancelled. A well-formed empty list is "", not an error.
    std::string fetchResultsHTML(const std::string& query) const override;

    // The usable results of a reply body, in order. Throws undecodableBody for a body that is
    // no JSON object.
    static std::vector<SearXNGResultItem> decodeResults(std::string_view body);

    const nuvrel::base::Url& endpoint() const { return endpoint_; }
    double timeoutInterval() const { return timeoutInterval_; }
    int resultLimit() const { return resultLimit_; }
    SearchDepth searchDepth() const { return searchDepth_; }

private:
    std::shared_ptr<nuvrel::base::HttpSession> session_;
    nuvrel::base::Url endpoint_;
    double timeoutInterval_;
    PacerPtr pacer_;
    int resultLimit_;
    SearchDepth searchDepth_;
};

// "basic" or "advanced", as sent.
const char* searchDepthName(TavilyTransport::SearchDepth depth);

}  // namespace wayfen
