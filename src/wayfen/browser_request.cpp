#include "wayfen/browser_request.h"

#include <chrono>
#include <string>

namespace wayfen {

nuvrel::base::HttpRequest browserRequest(const nuvrel::base::Url& url, double timeoutInterval) {
    nuvrel::base::HttpRequest request;
    request.url = url;
    request.headers = {{"User-Agent", std::string(browserUserAgent)}};
    request.timeout = std::chrono::milliseconds(
        static_cast<std::chrono::milliseconds::rep>(timeoutInterval * 1000.0));
    return request;
}

bool isHTTPURL(const nuvrel::base::Url& url) {
    return url.scheme() == "http" || url.scheme() == "https";
}

}  // namespace wayfen
