#pragma once
// DuckDuckGo's Lite results page as a search transport. Its page is already the wire shape,
// so it is returned as it came. A challenge page or a failure is tried once more after a
// back-off; the second answer stands.

#include <cstdint>
#include <memory>
#include <string>

#include "base/http.h"
#include "base/sleep.h"
#include "base/url.h"
#include "wayfen/duckduckgo_request_pacer.h"
#include "wayfen/web_search_transport.h"

namespace wayfen {

class DuckDuckGoLiteTransport final : public WebSearchTransport {
public:
    static const nuvrel::base::Url& defaultBaseURL();  // https://lite.duckduckgo.com/lite/

    DuckDuckGoLiteTransport(std::shared_ptr<nuvrel::base::HttpSession> session,
                            double timeoutInterval, nuvrel::base::Url baseURL = defaultBaseURL(),
                            std::uint64_t retryBackoffNanoseconds = 2'000'000'000,
                            PacerPtr pacer = DuckDuckGoRequestPacer::shared(),
                            nuvrel::base::SleepFn sleepFn = nuvrel::base::liveSleep);

    // Throws WebSearchTransportError, what the session throws, or base::Cancelled.
    std::string fetchResultsHTML(const std::string& query) const override;

private:
    std::string fetchWithRetry(const std::string& query, int attempt) const;
    std::string performFetch(const std::string& query) const;
    void backOff() const;

    std::shared_ptr<nuvrel::base::HttpSession> session_;
    double timeoutInterval_;
    nuvrel::base::Url baseURL_;
    std::uint64_t retryBackoffNanoseconds_;
    PacerPtr pacer_;
    nuvrel::base::SleepFn sleepFn_;
};

}  // namespace wayfen
