#include "wayfen/page_fetcher.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "base/cancellation.h"
#include "base/task.h"
#include "base/text.h"
#include "wayfen/html_decoding.h"
#include "wayfen/with_deadline.h"

namespace wayfen {

namespace base = nuvrel::base;
namespace text = nuvrel::base::text;

namespace {

constexpr std::size_t metaScanByteLimit = 1024;

std::optional<int> octet(std::string_view part) {
    unsigned value = 0;
    const char* last = part.data() + part.size();
    const auto [end, error] = std::from_chars(part.data(), last, value);
    if (part.empty() || error != std::errc() || end != last || value > 255) return std::nullopt;
    return static_cast<int>(value);
}

// A host name is no literal, so anything but four decimal octets is not covered.
bool isPrivateOrLoopbackOrLinkLocalIPv4Literal(std::string_view host) {
    int octets[4] = {};
    std::size_t count = 0;
    for (std::size_t start = 0;;) {
        const auto dot = host.find('.', start);
        const auto value =
            octet(host.substr(start, dot == std::string_view::npos ? dot : dot - start));
        if (!value || count == 4) return false;
        octets[count++] = *value;
        if (dot == std::string_view::npos) break;
        start = dot + 1;
    }
    if (count != 4) return false;
    const int a = octets[0];
    const int b = octets[1];
    return a == 0 || a == 10 || a == 127 || (a == 169 && b == 254) ||
           (a == 172 && b >= 16 && b <= 31) || (a == 192 && b == 168);
}

// Textual, on the host without brackets: unique-local fc00::/7 and link-local fe80::/10. Only
// an IPv6 literal holds a ":", so names such as "fda.gov" or "fc2.com" are no such address.
bool isPrivateOrLoopbackOrLinkLocalIPv6Literal(std::string_view host) {
    if (host.find(':') == std::string_view::npos) return false;
    const std::string lowered = text::lower(host);
    if (lowered == "::1") return true;
    for (const std::string_view prefix : {"fc", "fd", "fe8", "fe9", "fea", "feb"}) {
        if (lowered.starts_with(prefix)) return true;
    }
    return false;
}

bool isHTML(const std::optional<std::string>& contentType) {
    return contentType && text::contains(text::lower(*contentType), "text/html");
}

}  // namespace

bool PageFetcher::isSafeToFetch(const base::Url& url) {
    const std::string scheme = text::lower(url.scheme());
    if (scheme != "http" && scheme != "https") return false;
    const std::string host = text::lower(url.host());
    if (host.empty() || host == "localhost" || host.ends_with(".local")) return false;
    return !isPrivateOrLoopbackOrLinkLocalIPv4Literal(host) &&
           !isPrivateOrLoopbackOrLinkLocalIPv6Literal(host);
}

std::vector<FetchedPage> PageFetcher::fetchAll(const std::vector<base::Url>& urls) const {
    const auto limit = static_cast<std::size_t>(std::max(concurrencyLimit, 0));
    const std::size_t count = std::min(urls.size(), limit);
    std::vector<FetchedPage> pages;
    {
        base::TaskGroup<std::optional<FetchedPage>> group;
        for (std::size_t i = 0; i < count; ++i) {
            group.add([this, &url = urls[i]] { return fetchOne(url); });
        }
        // A child fails only by cancellation, which ends the whole fetch.
        while (auto finished = group.next()) {
            if (finished->second) pages.push_back(std::move(*finished->second));
        }
    }
    base::checkCancellation();
    return pages;
}

std::optional<FetchedPage> PageFetcher::fetchOne(const base::Url& url) const {
    if (!transport) return std::nullopt;
    const base::SleepFn& sleep = sleepFn ? sleepFn : base::SleepFn(base::liveSleep);
    RawPageResponse response;
    try {
        response = withDeadline(timeout, sleep, [&] { return transport->fetchPage(url); });
    } catch (...) {
        nuvrel::base::rethrowIfCancelled();
        return std::nullopt;
    }
    if (response.statusCode < 200 || response.statusCode > 299) return std::nullopt;
    if (!isHTML(response.contentType)) return std::nullopt;
    // The transport keeps one byte past its cap, so an over-long page is dropped, never cut.
    if (response.data.size() > maxBytes) return std::nullopt;
    auto html = decodeHTML(response.data, response.contentType, metaScanByteLimit);
    if (!html) return std::nullopt;
    return FetchedPage{url, std::move(*html)};
}

}  // namespace wayfen
