#include "wayfen/tavily_transport.h"

#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "wayfen/json_reply.h"
#include "wayfen/request_timeout.h"
#include "wayfen/searxng_transport.h"

namespace wayfen {

namespace {

const char* kindName(TavilyTransportError::Kind kind) {
    switch (kind) {
        case TavilyTransportError::Kind::badHTTPStatus:
            return "badHTTPStatus";
        case TavilyTransportError::Kind::rateLimited:
            return "rateLimited";
        case TavilyTransportError::Kind::undecodableBody:
            return "undecodableBody";
    }
    return "unknown";
}

void checkStatus(int status) {
    if (status < 100) throw TavilyTransportError::badHTTPStatus(-1);
    if (status == 429) throw TavilyTransportError::rateLimited();
    if (status < 200 || status > 299) throw TavilyTransportError::badHTTPStatus(status);
}

}  // namespace

TavilyTransportError::TavilyTransportError(Kind kind, int status)
    : kind_(kind), status_(status), description_(kindName(kind)) {
    if (kind_ == Kind::badHTTPStatus) description_ += "(" + std::to_string(status_) + ")";
}

std::vector<SearXNGResultItem> TavilyTransport::decodeResults(std::string_view body) {
    std::vector<SearXNGResultItem> items;
    try {
        const nlohmann::json reply = JsonReply::parseObject(body);
        for (const auto& entry : JsonReply::list(reply, "results")) {
            auto item = JsonReply::resultItem(JsonReply::text(entry, "title"),
                                              JsonReply::text(entry, "url"),
                                              JsonReply::text(entry, "content"));
            if (item) items.push_back(std::move(*item));
        }
    } catch (const JsonReply::Undecodable&) {
        throw TavilyTransportError::undecodableBody();
    }
    return items;
}

const char* searchDepthName(TavilyTransport::SearchDepth depth) {
    return depth == TavilyTransport::SearchDepth::advanced ? "advanced" : "basic";
}

const nuvrel::base::Url& TavilyTransport::defaultEndpoint() {
    static const nuvrel::base::Url url = *nuvrel::base::Url::parse("https://api.tavily.com/search");
    return url;
}

TavilyTransport::TavilyTransport(std::shared_ptr<nuvrel::base::HttpSession> session,
                                 double timeoutInterval, PacerPtr pacer, int resultLimit,
                                 SearchDepth searchDepth, nuvrel::base::Url endpoint)
    : session_(std::move(session)),
      endpoint_(std::move(endpoint)),
      timeoutInterval_(timeoutInterval),
      pacer_(std::move(pacer)),
      resultLimit_(resultLimit),
      searchDepth_(searchDepth) {}

std::string TavilyTransport::fetchResultsHTML(const std::string& query) const {
    nuvrel::base::HttpRequest request;
    request.method = "POST";
    request.url = endpoint_;
    request.timeout = requestTimeout(timeoutInterval_);
    request.headers = {{"X-Tavily-Access-Mode", "keyless"}, {"Content-Type", "application/json"}};
    nlohmann::json body = nlohmann::json::object();
    body["query"] = query;
    body["max_results"] = resultLimit_;
    body["search_depth"] = searchDepthName(searchDepth_);
    request.body = body.dump();

    pacer_->waitForTurn();
    const nuvrel::base::HttpResponse response = session_->send(request);
    checkStatus(response.status);
    return SearXNGTransport::reserialize(decodeResults(response.body));
}

}  // namespace wayfen
