#pragma once
// A SearXNG instance as a search transport (JSON first, its HTML page when the JSON API is
// refused), and the serialisation of any provider's results into the one wire shape.

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/http.h"
#include "base/url.h"
#include "wayfen/duckduckgo_request_pacer.h"
#include "wayfen/web_search_transport.h"

namespace wayfen {

// The interchange record of all JSON transports.
struct SearXNGResultItem {
    std::string title;
    std::string url;
    std::string snippet;
    friend bool operator==(const SearXNGResultItem&, const SearXNGResultItem&) = default;
};

class SearXNGTransportError : public std::exception {
public:
    enum class Kind {
        badHTTPStatus,
        invalidURL,
        undecodableBody,
        emptyResults,
        noInstancesConfigured,
        allInstancesFailed
    };

    explicit SearXNGTransportError(Kind kind, int status = 0);
    Kind kind() const { return kind_; }
    // Meaningful for badHTTPStatus only.
    int status() const { return status_; }
    std::string description() const;
    const char* what() const noexcept override;

    friend bool operator==(const SearXNGTransportError& a, const SearXNGTransportError& b) {
        return a.kind_ == b.kind_ && a.status_ == b.status_;
    }

private:
    Kind kind_;
    int status_;
    std::string description_;
};

class SearXNGTransport final : public WebSearchTransport {
public:
    // With an override endpoint, that one URL is the only instance; otherwise `instances`,
    // shuffled once here when asked. The session must outlive the transport.
    SearXNGTransport(std::vector<nuvrel::base::Url> instances,
                     std::optional<nuvrel::base::Url> overrideEndpoint,
                     std::shared_ptr<nuvrel::base::HttpSession> session, double timeoutInterval,
                     PacerPtr pacer, bool shuffleInstances);

    std::string fetchResultsHTML(const std::string& query) const override;

    const std::vector<nuvrel::base::Url>& effectiveInstances() const { return effectiveInstances_; }

    // Six public instances (https, root path).
    static const std::vector<nuvrel::base::Url>& curatedInstances();

    // One wire-shape block per item, joined by a line feed; no items give "".
    static std::string reserialize(const std::vector<SearXNGResultItem>& items);

    // The results of a SearXNG HTML results page.
    static std::vector<SearXNGResultItem> parseSearXNGHTML(std::string_view html);

private:
    std::vector<nuvrel::base::Url> effectiveInstances_;
    std::shared_ptr<nuvrel::base::HttpSession> session_;
    double timeoutInterval_;
    PacerPtr pacer_;
};

}  // namespace wayfen
