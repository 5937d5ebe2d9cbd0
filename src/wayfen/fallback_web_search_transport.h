#pragma once
// Two transports as one: the secondary is asked when the primary fails, is challenged or finds
// nothing usable. Cancellation is final and never falls over. Holds nothing mutable.

#include <optional>
#include <string>
#include <vector>

#include "wayfen/web_search_transport.h"

namespace wayfen {

class FallbackWebSearchTransport final : public WebSearchTransport {
public:
    FallbackWebSearchTransport(WebSearchTransportPtr primary, WebSearchTransportPtr secondary);

    // The primary's page when it holds a usable result; else the secondary's text. When the
    // secondary throws: the primary's error if it threw, else its page.
    std::string fetchResultsHTML(const std::string& query) const override;

    const WebSearchTransportPtr& primary() const { return primary_; }
    const WebSearchTransportPtr& secondary() const { return secondary_; }

private:
    // The secondary's text, whatever it holds; nothing when it threw. Throws only Cancelled.
    std::optional<std::string> secondaryOrNil(const std::string& query) const;

    WebSearchTransportPtr primary_;
    WebSearchTransportPtr secondary_;
};

// The members as one chain, tried in list order: null for none, the member itself for one.
WebSearchTransportPtr foldIntoFallbackChain(const std::vector<WebSearchTransportPtr>& members);

}  // namespace wayfen
