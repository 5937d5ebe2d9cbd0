#include "wayfen/url_session_page_transport.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace wayfen {

namespace base = nuvrel::base;

namespace {

std::shared_ptr<base::HttpSession> guardedSession(const DestinationCheck& isSafeDestination,
                                                  base::ConnectPolicy isSafeAddress) {
    base::HttpSessionOptions options;
    options.redirectPolicy = SSRFGuardingRedirectDelegate{isSafeDestination};
    // The URL's words can hide where it leads (a name mapped to 127.0.0.1, DNS rebinding):
    // every connection of every hop is checked once the name is resolved.
    options.connectPolicy = std::move(isSafeAddress);
    return std::make_shared<base::HttpSession>(std::move(options));
}

std::chrono::milliseconds wholeCallTimeout(double seconds) {
    // At least a millisecond: zero would mean no limit at all.
    const double milliseconds = std::ceil(seconds * 1000.0);
    if (!(milliseconds >= 1.0)) return std::chrono::milliseconds(1);
    if (milliseconds >= static_cast<double>(std::numeric_limits<std::int64_t>::max())) {
        return std::chrono::milliseconds(0);
    }
    return std::chrono::milliseconds(static_cast<std::int64_t>(milliseconds));
}

}  // namespace

bool SSRFGuardingRedirectDelegate::operator()(const base::Url&, const base::Url& to, int) const {
    return isSafeDestination && isSafeDestination(to);
}

URLSessionPageTransport::URLSessionPageTransport(std::shared_ptr<base::HttpSession> session,
                                                 double timeoutInterval, std::string userAgent,
                                                 std::size_t maxStreamedBytes,
                                                 DestinationCheck isSafeDestination,
                                                 base::ConnectPolicy isSafeAddress)
    : session_(session ? std::move(session)
                       : guardedSession(isSafeDestination, std::move(isSafeAddress))),
      timeoutInterval_(timeoutInterval),
      userAgent_(std::move(userAgent)),
      maxStreamedBytes_(maxStreamedBytes),
      isSafeDestination_(std::move(isSafeDestination)) {}

RawPageResponse URLSessionPageTransport::fetchPage(const base::Url& url) const {
    if (!isSafeDestination_ || !isSafeDestination_(url)) throw PageFetchError::unsafeDestination();

    base::HttpRequest request;
    request.url = url;
    request.headers = {{"User-Agent", userAgent_}, {"Accept", "text/html"}};
    request.timeout = wholeCallTimeout(timeoutInterval_);
    // As a browser does; the cap then counts decoded bytes, which is what a page costs.
    request.decompress = true;
    // One byte past the cap is kept, so that the fetcher can tell a page that was too large.
    if (maxStreamedBytes_ < std::numeric_limits<std::size_t>::max()) {
        request.maxBodyBytes = maxStreamedBytes_ + 1;
    }
    base::HttpResponse response;
    try {
        response = session_->send(request);
    } catch (const base::HttpError& error) {
        if (error.kind() == base::HttpError::Kind::refusedAddress)
            throw PageFetchError::unsafeDestination();
        throw;
    }
    if (response.status <= 0) throw PageFetchError::badStatus(-1);
    return RawPageResponse{response.status, response.header("Content-Type"),
                           std::move(response.body)};
}

}  // namespace wayfen
