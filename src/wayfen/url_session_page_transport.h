#pragma once
// The live PageTransport on an HttpSession: one GET with a browser's User-Agent and
// "Accept: text/html", a whole-call time-out and a byte cap. Every destination is checked
// before a connection is opened, and, in a session made here, again on each redirect hop and
// on the address each connection goes to, so that neither a result URL, nor a redirect, nor a
// name that resolves inside reaches the user's own machine or local network.
//
// Threading: fetchPage blocks on the caller's task; a stop request aborts the transfer and
// the call throws base::Cancelled. One transport may serve several tasks at once.

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "base/http.h"
#include "base/url.h"
#include "wayfen/page_fetcher.h"
#include "wayfen/page_transport.h"

namespace wayfen {

// Whether a connection to this URL may be opened.
using DestinationCheck = std::function<bool(const nuvrel::base::Url&)>;

// The session's redirect policy: a hop is followed, unchanged, only to a destination the
// check admits; otherwise the 3xx response itself is the answer.
struct SSRFGuardingRedirectDelegate {
    DestinationCheck isSafeDestination = PageFetcher::isSafeToFetch;

    bool operator()(const nuvrel::base::Url& from, const nuvrel::base::Url& to, int status) const;
};

class URLSessionPageTransport : public PageTransport {
public:
    static constexpr const char* defaultUserAgent =
        "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 (KHTML, like "
        "Gecko) Version/17.4 Safari/605.1.15";

    // Without a session, makes one of its own that keeps nothing between calls and guards
    // each redirect with `isSafeDestination`. A given session keeps its own redirect policy.
    //
    // `isSafeDestination` and `isSafeAddress` exist for tests only: every test server listens
    // on loopback, which the real checks refuse, so a test admits exactly its first server and
    // still proves every point of protection against a second one. Production code leaves the
    // defaults.
    explicit URLSessionPageTransport(
        std::shared_ptr<nuvrel::base::HttpSession> session = nullptr, double timeoutInterval = 3.5,
        std::string userAgent = defaultUserAgent, std::size_t maxStreamedBytes = 1'572'864,
        DestinationCheck isSafeDestination = PageFetcher::isSafeToFetch,
        nuvrel::base::ConnectPolicy isSafeAddress = PageFetcher::isPublicAddress);

    // Throws PageFetchError::unsafeDestination, without a connection, for a refused URL or a
    // refused address;
    // base::HttpError when no response could be had. The body holds at most
    // maxStreamedBytes + 1 bytes.
    RawPageResponse fetchPage(const nuvrel::base::Url& url) const override;

    const std::shared_ptr<nuvrel::base::HttpSession>& session() const { return session_; }
    double timeoutInterval() const { return timeoutInterval_; }
    const std::string& userAgent() const { return userAgent_; }
    std::size_t maxStreamedBytes() const { return maxStreamedBytes_; }

private:
    std::shared_ptr<nuvrel::base::HttpSession> session_;
    double timeoutInterval_;
    std::string userAgent_;
    std::size_t maxStreamedBytes_;
    DestinationCheck isSafeDestination_;
};

}  // namespace wayfen
