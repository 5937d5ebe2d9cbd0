#pragma once
// The GET request of the transports that scrape or query public search pages: they present
// themselves as a desktop browser, since some instances refuse obvious robots.

#include <string_view>

#include "base/http.h"
#include "base/url.h"

namespace wayfen {

inline constexpr std::string_view browserUserAgent =
    "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 (KHTML, like Gecko) "
    "Version/17.4 Safari/605.1.15";

// A GET of `url` with the browser User-Agent, limited to `timeoutInterval` seconds in all.
nuvrel::base::HttpRequest browserRequest(const nuvrel::base::Url& url, double timeoutInterval);

// Whether the session can speak HTTP to this URL at all; other schemes get no HTTP reply.
bool isHTTPURL(const nuvrel::base::Url& url);

}  // namespace wayfen
