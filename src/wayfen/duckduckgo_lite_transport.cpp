#include "wayfen/duckduckgo_lite_transport.h"

#include <chrono>
#include <utility>

#include "base/cancellation.h"
#include "base/text.h"
#include "wayfen/browser_request.h"
#include "wayfen/duckduckgo_lite_parser.h"

namespace wayfen {

const nuvrel::base::Url& DuckDuckGoLiteTransport::defaultBaseURL() {
    static const nuvrel::base::Url url =
        *nuvrel::base::Url::parse("https://lite.duckduckgo.com/lite/");
    return url;
}

DuckDuckGoLiteTransport::DuckDuckGoLiteTransport(std::shared_ptr<nuvrel::base::HttpSession> session,
                                                 double timeoutInterval, nuvrel::base::Url baseURL,
                                                 std::uint64_t retryBackoffNanoseconds,
                                                 PacerPtr pacer, nuvrel::base::SleepFn sleepFn)
    : session_(std::move(session)),
      timeoutInterval_(timeoutInterval),
      baseURL_(std::move(baseURL)),
      retryBackoffNanoseconds_(retryBackoffNanoseconds),
      pacer_(std::move(pacer)),
      sleepFn_(std::move(sleepFn)) {}

std::string DuckDuckGoLiteTransport::fetchResultsHTML(const std::string& query) const {
    return fetchWithRetry(query, 0);
}

// At most two tries and one back-off: a challenge rarely clears by waiting longer.
std::string DuckDuckGoLiteTransport::fetchWithRetry(const std::string& query, int attempt) const {
    std::string html;
    try {
        html = performFetch(query);
    } catch (...) {
        nuvrel::base::rethrowIfCancelled();
        if (attempt > 0) throw;
        backOff();
        return fetchWithRetry(query, attempt + 1);
    }
    if (attempt == 0 && DuckDuckGoLiteParser::isBotChallenge(html)) {
        backOff();
        return fetchWithRetry(query, attempt + 1);
    }
    return html;
}

std::string DuckDuckGoLiteTransport::performFetch(const std::string& query) const {
    if (baseURL_.empty()) throw WebSearchTransportError::invalidURL();
    const auto request = browserRequest(baseURL_.withQueryItems({{"q", query}}), timeoutInterval_);
    if (pacer_) pacer_->waitForTurn();
    if (!isHTTPURL(request.url)) throw WebSearchTransportError::badHTTPStatus(-1);
    auto response = session_->send(request);
    if (response.status < 200 || response.status > 299) {
        throw WebSearchTransportError::badHTTPStatus(response.status);
    }
    if (!nuvrel::base::text::isValidUtf8(response.body)) {
        throw WebSearchTransportError::undecodableBody();
    }
    return std::move(response.body);
}

void DuckDuckGoLiteTransport::backOff() const {
    sleepFn_(std::chrono::nanoseconds(
        static_cast<std::chrono::nanoseconds::rep>(retryBackoffNanoseconds_)));
}

}  // namespace wayfen
