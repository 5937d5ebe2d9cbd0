#include "wayfen/searxng_transport.h"

#include <algorithm>
#include <exception>
#include <nlohmann/json.hpp>
#include <random>
#include <utility>

#include "base/cancellation.h"
#include "base/text.h"
#include "wayfen/browser_request.h"

namespace wayfen {

namespace {

using nuvrel::base::HttpRequest;
using nuvrel::base::HttpResponse;
using nuvrel::base::Url;
using Kind = SearXNGTransportError::Kind;

struct Instance {
    const Url& base;
    nuvrel::base::HttpSession& session;
    double timeoutInterval;
    const PacerPtr& pacer;
};

Url searchURL(const Instance& instance,
              const std::vector<std::pair<std::string, std::string>>& items) {
    if (instance.base.empty()) throw SearXNGTransportError(Kind::invalidURL);
    return instance.base.appendingPath("search").withQueryItems(items);
}

// One pacer turn per request, so falling back to the HTML page waits again.
HttpResponse send(const Instance& instance, const HttpRequest& request) {
    if (instance.pacer) instance.pacer->waitForTurn();
    if (!isHTTPURL(request.url)) throw SearXNGTransportError(Kind::badHTTPStatus, -1);
    HttpResponse response = instance.session.send(request);
    if (response.status < 200 || response.status > 299) {
        throw SearXNGTransportError(Kind::badHTTPStatus, response.status);
    }
    return response;
}

const std::string& requiredText(const nlohmann::json& item, const char* key) {
    const auto field = item.find(key);
    if (field == item.end() || !field->is_string())
        throw SearXNGTransportError(Kind::undecodableBody);
    return field->get_ref<const std::string&>();
}

std::string optionalText(const nlohmann::json& item, const char* key) {
    const auto field = item.find(key);
    if (field == item.end() || field->is_null()) return {};
    if (!field->is_string()) throw SearXNGTransportError(Kind::undecodableBody);
    return field->get<std::string>();
}

// Any item or reply that lacks a required field fails the whole reply.
std::vector<SearXNGResultItem> decodedItems(const std::string& body) {
    const auto reply = nlohmann::json::parse(body, nullptr, false);
    if (!reply.is_object() || !reply.contains("results") || !reply["results"].is_array()) {
        throw SearXNGTransportError(Kind::undecodableBody);
    }
    std::vector<SearXNGResultItem> items;
    for (const auto& item : reply["results"]) {
        if (!item.is_object()) throw SearXNGTransportError(Kind::undecodableBody);
        const std::string& url = requiredText(item, "url");
        std::string title = nuvrel::base::text::trim(requiredText(item, "title"));
        std::string snippet = nuvrel::base::text::trim(optionalText(item, "content"));
        if (title.empty() || url.empty()) continue;
        items.push_back({std::move(title), url, std::move(snippet)});
    }
    return items;
}

std::vector<SearXNGResultItem> fetchJSON(const Instance& instance, const std::string& query) {
    HttpRequest request = browserRequest(searchURL(instance, {{"q", query}, {"format", "json"}}),
                                         instance.timeoutInterval);
    request.headers.emplace_back("Accept", "application/json");
    return decodedItems(send(instance, request).body);
}

std::vector<SearXNGResultItem> fetchHTML(const Instance& instance, const std::string& query) {
    const HttpRequest request =
        browserRequest(searchURL(instance, {{"q", query}}), instance.timeoutInterval);
    const HttpResponse response = send(instance, request);
    if (!nuvrel::base::text::isValidUtf8(response.body)) {
        throw SearXNGTransportError(Kind::undecodableBody);
    }
    return SearXNGTransport::parseSearXNGHTML(response.body);
}

// Instances that refuse their JSON API often still serve their HTML page.
bool refusesJSON(const SearXNGTransportError& error) {
    return error.kind() == Kind::badHTTPStatus && (error.status() == 403 || error.status() == 400);
}

std::vector<SearXNGResultItem> fetchItems(const Instance& instance, const std::string& query) {
    try {
        return fetchJSON(instance, query);
    } catch (const SearXNGTransportError& error) {
        if (!refusesJSON(error)) throw;
    }
    return fetchHTML(instance, query);
}

}  // namespace

SearXNGTransport::SearXNGTransport(std::vector<Url> instances, std::optional<Url> overrideEndpoint,
                                   std::shared_ptr<nuvrel::base::HttpSession> session,
                                   double timeoutInterval, PacerPtr pacer, bool shuffleInstances)
    : session_(std::move(session)), timeoutInterval_(timeoutInterval), pacer_(std::move(pacer)) {
    if (overrideEndpoint) {
        effectiveInstances_ = {std::move(*overrideEndpoint)};
        return;
    }
    effectiveInstances_ = std::move(instances);
    if (shuffleInstances) {
        std::mt19937 generator(std::random_device{}());
        std::shuffle(effectiveInstances_.begin(), effectiveInstances_.end(), generator);
    }
}

std::string SearXNGTransport::fetchResultsHTML(const std::string& query) const {
    if (effectiveInstances_.empty()) throw SearXNGTransportError(Kind::noInstancesConfigured);
    std::exception_ptr lastError =
        std::make_exception_ptr(SearXNGTransportError(Kind::allInstancesFailed));
    for (const auto& base : effectiveInstances_) {
        try {
            const auto items = fetchItems({base, *session_, timeoutInterval_, pacer_}, query);
            if (!items.empty()) return reserialize(items);
            lastError = std::make_exception_ptr(SearXNGTransportError(Kind::emptyResults));
        } catch (...) {
            nuvrel::base::rethrowIfCancelled();
            lastError = std::current_exception();
        }
    }
    std::rethrow_exception(lastError);
}

const std::vector<Url>& SearXNGTransport::curatedInstances() {
    static const std::vector<Url> instances = [] {
        std::vector<Url> urls;
        for (const char* text :
             {"https://searx.be/", "https://search.inetol.net/", "https://priv.au/",
              "https://searx.tiekoetter.com/", "https://baresearch.org/", "https://paulgo.io/"}) {
            urls.push_back(*Url::parse(text));
        }
        return urls;
    }();
    return instances;
}

}  // namespace wayfen
