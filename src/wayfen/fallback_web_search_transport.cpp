#include "wayfen/fallback_web_search_transport.h"

#include <exception>
#include <utility>

#include "base/cancellation.h"
#include "wayfen/duckduckgo_lite_parser.h"

namespace wayfen {

namespace {

// Enough to tell whether the page holds anything usable.
constexpr int usableResultProbeLimit = 3;

}  // namespace

FallbackWebSearchTransport::FallbackWebSearchTransport(WebSearchTransportPtr primary,
                                                       WebSearchTransportPtr secondary)
    : primary_(std::move(primary)), secondary_(std::move(secondary)) {}

std::string FallbackWebSearchTransport::fetchResultsHTML(const std::string& query) const {
    std::string html;
    try {
        html = primary_->fetchResultsHTML(query);
    } catch (...) {
        nuvrel::base::rethrowIfCancelled();
        // The user hears of the first provider's failure, not of the last one's.
        const std::exception_ptr primaryError = std::current_exception();
        if (auto text = secondaryOrNil(query)) return std::move(*text);
        std::rethrow_exception(primaryError);
    }
    if (!DuckDuckGoLiteParser::isBotChallenge(html) &&
        !DuckDuckGoLiteParser::parse(html, usableResultProbeLimit).empty()) {
        return html;
    }
    // A challenge page or one with nothing usable: kept only when the secondary fails too.
    if (auto text = secondaryOrNil(query)) return std::move(*text);
    return html;
}

std::optional<std::string> FallbackWebSearchTransport::secondaryOrNil(
    const std::string& query) const {
    try {
        // Returned even when empty or a challenge: the secondary's own chain judged it already.
        return secondary_->fetchResultsHTML(query);
    } catch (...) {
        nuvrel::base::rethrowIfCancelled();
        return std::nullopt;
    }
}

WebSearchTransportPtr foldIntoFallbackChain(const std::vector<WebSearchTransportPtr>& members) {
    WebSearchTransportPtr chain;
    for (auto member = members.rbegin(); member != members.rend(); ++member) {
        chain = chain ? std::make_shared<FallbackWebSearchTransport>(*member, chain) : *member;
    }
    return chain;
}

}  // namespace wayfen
