#include "wayfen/wikipedia_transport.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/cancellation.h"
#include "base/text.h"
#include "wayfen/json_reply.h"
#include "wayfen/request_timeout.h"

namespace wayfen {

namespace {

using nuvrel::base::HttpResponse;
using nuvrel::base::Url;

bool isSuccess(int status) {
    return status >= 200 && status <= 299;
}

// The characters a URL path may hold as they are: ASCII letters and digits and
// "!$&'()*+,-./:=@_~". Everything else, "%" included, is percent-encoded byte by byte.
std::string pathEncoded(std::string_view text) {
    static constexpr char hexDigits[] = "0123456789ABCDEF";
    static constexpr std::string_view marks = "!$&'()*+,-./:=@_~";
    std::string out;
    for (const char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        const bool alphanumeric =
            (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
        if (alphanumeric || (c != 0 && marks.find(ch) != std::string_view::npos)) {
            out += ch;
        } else {
            out += '%';
            out += hexDigits[c >> 4];
            out += hexDigits[c & 0xF];
        }
    }
    return out;
}

}  // namespace

// The reply is a positional array: [query, [titles...], [descriptions...], [urls...]].
std::vector<std::string> WikipediaTransport::decodeOpenSearchTitles(std::string_view body) {
    const nlohmann::json reply = nlohmann::json::parse(body, nullptr, false);
    if (reply.is_discarded() || !reply.is_array() || reply.size() < 2 || !reply[1].is_array()) {
        return {};
    }
    std::vector<std::string> titles;
    for (const auto& title : reply[1]) {
        if (!title.is_string()) return {};
        titles.push_back(title.get<std::string>());
    }
    return titles;
}

namespace {

struct Summary {
    std::optional<std::string> title;
    std::optional<std::string> extract;
    std::optional<std::string> pageURL;
};

Summary decodeSummary(std::string_view body) {
    const nlohmann::json reply = JsonReply::parseObject(body);
    Summary summary{JsonReply::text(reply, "title"), JsonReply::text(reply, "extract"), {}};
    if (const auto* urls = JsonReply::object(reply, "content_urls")) {
        if (const auto* desktop = JsonReply::object(*urls, "desktop")) {
            summary.pageURL = JsonReply::text(*desktop, "page");
        }
    }
    return summary;
}

const char* kindName(WikipediaTransportError::Kind kind) {
    return kind == WikipediaTransportError::Kind::badHTTPStatus ? "badHTTPStatus"
                                                                : "undecodableBody";
}

}  // namespace

WikipediaTransportError::WikipediaTransportError(Kind kind, int status)
    : kind_(kind), status_(status), description_(kindName(kind)) {
    if (kind_ == Kind::badHTTPStatus) description_ += "(" + std::to_string(status_) + ")";
}

WikipediaTransport::WikipediaTransport(std::shared_ptr<nuvrel::base::HttpSession> session,
                                       double timeoutInterval, PacerPtr pacer, int maxTitles,
                                       std::optional<HostMap> hostOverride,
                                       std::optional<int> portOverride)
    : session_(std::move(session)),
      timeoutInterval_(timeoutInterval),
      pacer_(std::move(pacer)),
      maxTitles_(maxTitles),
      hostOverride_(std::move(hostOverride)),
      portOverride_(portOverride) {}

std::string WikipediaTransport::host(std::string_view query,
                                     const std::optional<HostMap>& override) {
    bool hasHangul = false;
    for (std::size_t pos = 0; pos < query.size() && !hasHangul;) {
        const char32_t c = nuvrel::base::text::nextCodePoint(query, pos);
        hasHangul = c >= U'가' && c <= U'힣';
    }
    const std::string language = hasHangul ? "ko" : "en";
    if (override) {
        if (const auto found = override->find(language); found != override->end()) {
            return found->second;
        }
    }
    return language + "." + std::string(domain);
}

std::string WikipediaTransport::fetchResultsHTML(const std::string& query) const {
    const std::string chosenHost = host(query, hostOverride_);
    std::vector<std::string> titles = openSearchTitles(query, chosenHost);
    const auto kept = static_cast<std::size_t>(std::max(maxTitles_, 0));
    if (titles.size() > kept) titles.resize(kept);
    std::vector<SearXNGResultItem> items;
    for (const auto& title : titles) {
        try {
            if (auto item = summaryItem(title, chosenHost)) items.push_back(std::move(*item));
        } catch (...) {
            nuvrel::base::rethrowIfCancelled();
            // A summary that cannot be had costs its item, nothing more.
        }
    }
    return SearXNGTransport::reserialize(items);
}

std::vector<std::string> WikipediaTransport::openSearchTitles(const std::string& query,
                                                              const std::string& host) const {
    try {
        const auto base = Url::parse(origin(host) + "/w/api.php");
        if (!base) return {};
        const Url url = base->withQueryItems(
            {{"action", "opensearch"}, {"search", query}, {"limit", "5"}, {"format", "json"}});
        pacer_->waitForTurn();
        const HttpResponse response = performRequest(url);
        if (!isSuccess(response.status)) return {};
        return decodeOpenSearchTitles(response.body);
    } catch (...) {
        nuvrel::base::rethrowIfCancelled();
        return {};
    }
}

std::optional<SearXNGResultItem> WikipediaTransport::summaryItem(const std::string& title,
                                                                 const std::string& host) const {
    const std::string encodedTitle = pathEncoded(title);
    // The path is encoded once more on its way into the URL, as a plain path property does:
    // a title with a blank or non-ASCII letters is asked for in its doubly encoded form, which
    // the service does not know. Kept so on purpose.
    const auto url =
        Url::parse(origin(host) + "/api/rest_v1/page/summary/" + pathEncoded(encodedTitle));
    if (!url) return std::nullopt;

    pacer_->waitForTurn();
    const HttpResponse response = performRequest(*url);
    if (!isSuccess(response.status)) return std::nullopt;
    return decodeSummaryItem(response.body, title, host);
}

std::optional<SearXNGResultItem> WikipediaTransport::decodeSummaryItem(std::string_view body,
                                                                       const std::string& title,
                                                                       const std::string& host) {
    Summary summary;
    try {
        summary = decodeSummary(body);
    } catch (const JsonReply::Undecodable&) {
        return std::nullopt;
    }
    if (!summary.extract) return std::nullopt;
    std::string extract = nuvrel::base::text::trim(*summary.extract);
    if (extract.empty()) return std::nullopt;
    std::string pageURL =
        summary.pageURL.value_or("https://" + host + "/wiki/" + pathEncoded(title));
    return SearXNGResultItem{summary.title.value_or(title), std::move(pageURL), std::move(extract)};
}

HttpResponse WikipediaTransport::performRequest(const Url& url) const {
    nuvrel::base::HttpRequest request;
    request.url = url;
    request.timeout = requestTimeout(timeoutInterval_);
    request.headers = {{"User-Agent", std::string(userAgent)}};
    return session_->send(request);
}

std::string WikipediaTransport::origin(const std::string& host) const {
    std::string out = "https://" + host;
    if (portOverride_) out += ":" + std::to_string(*portOverride_);
    return out;
}

}  // namespace wayfen
