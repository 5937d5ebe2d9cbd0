#pragma once
// Wikipedia as the last search transport: the query's titles from the opensearch API, then
// one summary per title, written out in the common wire shape. Needs no key and never fails:
// whatever goes wrong costs items, at worst all of them. The Korean edition serves queries
// with Hangul syllables, the English one all others.

#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/http.h"
#include "base/url.h"
#include "wayfen/duckduckgo_request_pacer.h"
#include "wayfen/searxng_transport.h"
#include "wayfen/web_search_transport.h"

namespace wayfen {

// The failures of a Wikipedia request, by name. The transport itself raises neither: what
// fails there costs items instead.
class WikipediaTransportError : public std::exception {
public:
    enum class Kind { badHTTPStatus, undecodableBody };

    static WikipediaTransportError badHTTPStatus(int status) {
        return WikipediaTransportError(Kind::badHTTPStatus, status);
    }
    static WikipediaTransportError undecodableBody() {
        return WikipediaTransportError(Kind::undecodableBody, 0);
    }

    Kind kind() const { return kind_; }
    // badHTTPStatus only.
    int status() const { return status_; }
    std::string description() const { return description_; }
    const char* what() const noexcept override { return description_.c_str(); }

    friend bool operator==(const WikipediaTransportError& a, const WikipediaTransportError& b) {
        return a.kind_ == b.kind_ && a.status_ == b.status_;
    }

private:
    WikipediaTransportError(Kind kind, int status);
    Kind kind_;
    int status_;
    std::string description_;
};

class WikipediaTransport final : public WebSearchTransport {
public:
    // Language code ("ko", "en") to host.
    using HostMap = std::map<std::string, std::string, std::less<>>;

    static constexpr std::string_view domain = "wikipedia.org";
    // The one transport without a browser identity.
    static constexpr std::string_view userAgent = "Nuvrel/1.0 (macOS Spotlight-replacement app)";

    // Without overrides every request goes to https://<language>.wikipedia.org; an override
    // names the host of a language, and a port override applies to all requests.
    WikipediaTransport(std::shared_ptr<nuvrel::base::HttpSession> session, double timeoutInterval,
                       PacerPtr pacer, int maxTitles,
                       std::optional<HostMap> hostOverride = std::nullopt,
                       std::optional<int> portOverride = std::nullopt);

    // At most maxTitles summaries; "" when nothing could be had. Throws nothing but
    // base::Cancelled.
    std::string fetchResultsHTML(const std::string& query) const override;

    // "ko" for a query with a precomposed Hangul syllable, else "en"; then that language's
    // override, or the language as a subdomain of the encyclopedia's domain.
    static std::string host(std::string_view query, const std::optional<HostMap>& override);

    // The titles of the opensearch reply, at most five, in order. No titles for any failure;
    // throws nothing but base::Cancelled.
    std::vector<std::string> openSearchTitles(const std::string& query,
                                              const std::string& host) const;

    // The summary of one article as a result; nothing when the service has no usable
    // summary. Throws what the pacer or the session throws.
    std::optional<SearXNGResultItem> summaryItem(const std::string& title,
                                                 const std::string& host) const;

    // The titles of an opensearch reply body, in order; none when the body is not of that
    // shape. Never throws.
    static std::vector<std::string> decodeOpenSearchTitles(std::string_view body);

    // The result of a summary reply body for `title` asked of `host`; nothing when the body
    // is undecodable or has no extract. Never throws.
    static std::optional<SearXNGResultItem> decodeSummaryItem(std::string_view body,
                                                              const std::string& title,
                                                              const std::string& host);

    // One GET with the transport's time-out and User-Agent; the response whatever its status.
    nuvrel::base::HttpResponse performRequest(const nuvrel::base::Url& url) const;

    double timeoutInterval() const { return timeoutInterval_; }
    int maxTitles() const { return maxTitles_; }
    const std::optional<HostMap>& hostOverride() const { return hostOverride_; }
    std::optional<int> portOverride() const { return portOverride_; }

private:
    // "https://" and the host, with the port override behind it.
    std::string origin(const std::string& host) const;

    std::shared_ptr<nuvrel::base::HttpSession> session_;
    double timeoutInterval_;
    PacerPtr pacer_;
    int maxTitles_;
    std::optional<HostMap> hostOverride_;
    std::optional<int> portOverride_;
};

}  // namespace wayfen
