#include "wayfen/firecrawl_transport.h"

#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "base/regex.h"
#include "base/text.h"
#include "wayfen/json_reply.h"
#include "wayfen/request_timeout.h"
#include "wayfen/searxng_transport.h"

namespace wayfen {

namespace {

using nuvrel::base::Regex;

// Only the first hits with page text carry an excerpt: enough for an answer, short enough
// for the small model that reads them.
constexpr int maxEnrichedItems = 2;
constexpr std::size_t excerptLength = 800;

const char* kindName(FirecrawlTransportError::Kind kind) {
    using Kind = FirecrawlTransportError::Kind;
    switch (kind) {
        case Kind::badHTTPStatus:
            return "badHTTPStatus";
        case Kind::unauthorized:
            return "unauthorized";
        case Kind::creditsExhausted:
            return "creditsExhausted";
        case Kind::rateLimited:
            return "rateLimited";
        case Kind::undecodableBody:
            return "undecodableBody";
    }
    return "unknown";
}

void checkStatus(int status) {
    if (status < 100) throw FirecrawlTransportError::badHTTPStatus(-1);
    if (status == 401) throw FirecrawlTransportError::unauthorized();
    if (status == 402) throw FirecrawlTransportError::creditsExhausted();
    if (status == 429) throw FirecrawlTransportError::rateLimited();
    if (status < 200 || status > 299) throw FirecrawlTransportError::badHTTPStatus(status);
}

std::string withExcerpt(const std::string& snippet, const std::string& excerpt) {
    return snippet.empty() ? excerpt : snippet + " — " + excerpt;
}

}  // namespace

FirecrawlTransportError::FirecrawlTransportError(Kind kind, int status)
    : kind_(kind), status_(status), description_(kindName(kind)) {
    if (kind_ == Kind::badHTTPStatus) description_ += "(" + std::to_string(status_) + ")";
}

const nuvrel::base::Url& FirecrawlTransport::defaultEndpoint() {
    static const nuvrel::base::Url url =
        *nuvrel::base::Url::parse("https://api.firecrawl.dev/v2/search");
    return url;
}

FirecrawlTransport::FirecrawlTransport(std::string apiKey,
                                       std::shared_ptr<nuvrel::base::HttpSession> session,
                                       double timeoutInterval, PacerPtr pacer, int resultLimit,
                                       nuvrel::base::Url endpoint)
    : apiKey_(std::move(apiKey)),
      session_(std::move(session)),
      endpoint_(std::move(endpoint)),
      timeoutInterval_(timeoutInterval),
      pacer_(std::move(pacer)),
      resultLimit_(resultLimit) {}

std::string FirecrawlTransport::fetchResultsHTML(const std::string& query) const {
    nuvrel::base::HttpRequest request;
    request.method = "POST";
    request.url = endpoint_;
    request.timeout = requestTimeout(timeoutInterval_);
    request.headers = {{"Authorization", "Bearer " + apiKey_},
                       {"Content-Type", "application/json"}};
    nlohmann::json body = nlohmann::json::object();
    body["query"] = query;
    body["limit"] = resultLimit_;
    body["scrapeOptions"]["formats"] = nlohmann::json::array({"markdown"});
    request.body = body.dump();

    pacer_->waitForTurn();
    const nuvrel::base::HttpResponse response = session_->send(request);
    checkStatus(response.status);
    return SearXNGTransport::reserialize(decodeResults(response.body));
}

std::vector<SearXNGResultItem> FirecrawlTransport::decodeResults(std::string_view body) {
    std::vector<SearXNGResultItem> items;
    int enriched = 0;
    try {
        const nlohmann::json reply = JsonReply::parseObject(body);
        const nlohmann::json* data = JsonReply::object(reply, "data");
        if (data == nullptr) return items;
        for (const auto& entry : JsonReply::list(*data, "web")) {
            auto item = JsonReply::resultItem(JsonReply::text(entry, "title"),
                                              JsonReply::text(entry, "url"),
                                              JsonReply::text(entry, "description"));
            const auto markdown = JsonReply::text(entry, "markdown");
            if (!item) continue;
            if (enriched < maxEnrichedItems && markdown) {
                const std::string excerpt = FirecrawlTransport::plainTextExcerpt(*markdown);
                if (!excerpt.empty()) {
                    item->snippet = withExcerpt(item->snippet, excerpt);
                    ++enriched;
                }
            }
            items.push_back(std::move(*item));
        }
    } catch (const JsonReply::Undecodable&) {
        throw FirecrawlTransportError::undecodableBody();
    }
    return items;
}

std::string FirecrawlTransport::plainTextExcerpt(std::string_view markdown) {
    static const Regex image(R"(!\[[^\]]*\]\([^)]*\))");
    static const Regex link(R"(\[([^\]]*)\]\([^)]*\))");
    static const Regex tag("<[^>]+>");
    static const Regex marks("[#>*_`|-]{1,}");
    std::string text = image.replaceAll(markdown, " ");
    text = link.replaceAll(text, "$1");
    text = tag.replaceAll(text, " ");
    text = marks.replaceAll(text, " ");
    std::string joined;
    for (const auto& word : nuvrel::base::text::splitBlanks(text)) {
        if (!joined.empty()) joined += ' ';
        joined += word;
    }
    return nuvrel::base::text::prefix(joined, excerptLength);
}

}  // namespace wayfen
