#pragma once
// The one contract of every search provider: a query in, a results page out, always in the
// DuckDuckGo Lite shape that DuckDuckGoLiteParser reads, whatever the provider really sent.
//
// Threading: fetchResultsHTML blocks and runs on the caller's task; a stop request of that
// task ends it with base::Cancelled. Implementations hold nothing mutable but their pacer and
// may serve concurrent queries.

#include <exception>
#include <memory>
#include <string>

namespace wayfen {

class WebSearchTransport {
public:
    virtual ~WebSearchTransport() = default;
    virtual std::string fetchResultsHTML(const std::string& query) const = 0;
};

using WebSearchTransportPtr = std::shared_ptr<const WebSearchTransport>;

// The error of the plain HTML transport.
class WebSearchTransportError : public std::exception {
public:
    enum class Kind { badHTTPStatus, invalidURL, undecodableBody };

    static WebSearchTransportError badHTTPStatus(int status) {
        return WebSearchTransportError(Kind::badHTTPStatus, status);
    }
    static WebSearchTransportError invalidURL() {
        return WebSearchTransportError(Kind::invalidURL, 0);
    }
    static WebSearchTransportError undecodableBody() {
        return WebSearchTransportError(Kind::undecodableBody, 0);
    }

    Kind kind() const { return kind_; }
    // Meaningful for badHTTPStatus only.
    int status() const { return status_; }
    std::string description() const;
    const char* what() const noexcept override;

    friend bool operator==(const WebSearchTransportError& a, const WebSearchTransportError& b) {
        return a.kind_ == b.kind_ && a.status_ == b.status_;
    }

private:
    WebSearchTransportError(Kind kind, int status);
    Kind kind_;
    int status_;
    std::string description_;
};

}  // namespace wayfen
