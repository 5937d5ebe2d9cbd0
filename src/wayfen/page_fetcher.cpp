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

bool PageFetcher::isPublicAddress(const base::SocketAddress& address) {
    const std::vector<std::uint8_t>& b = address.bytes;
    const auto publicIPv4 = [](const std::uint8_t* v4) {
        return !(v4[0] == 0 || v4[0] == 10 || v4[0] == 127 ||  // this network, private, loopback
                 (v4[0] == 100 && (v4[1] & 0xC0) == 64) ||     // carrier-grade NAT 100.64/10
                 (v4[0] == 169 && v4[1] == 254) ||             // link-local
                 (v4[0] == 172 && (v4[1] & 0xF0) == 16) ||     // private 172.16/12
                 (v4[0] == 192 && v4[1] == 168));              // private
    };
    if (b.size() == 4) return publicIPv4(b.data());
    if (b.size() != 16) return false;
    const bool zeroHead = std::all_of(b.begin(), b.begin() + 10, [](auto x) { return x == 0; });
    if (zeroHead && b[10] == 0xFF && b[11] == 0xFF)
        return publicIPv4(b.data() + 12);                                // ::ffff:a.b.c.d
    static constexpr std::uint8_t nat64[12] = {0x00, 0x64, 0xFF, 0x9B};  // 64:ff9b::/96
    if (std::equal(b.begin(), b.begin() + 12, nat64)) return publicIPv4(b.data() + 12);
    if (zeroHead && std::all_of(b.begin() + 10, b.end() - 1, [](auto x) { return x == 0; }) &&
        b[15] <= 1) {
        return false;  // :: and ::1
    }
    if ((b[0] & 0xFE) == 0xFC) return false;                  // unique-local fc00::/7
    if (b[0] == 0xFE && (b[1] & 0xC0) == 0x80) return false;  // link-local fe80::/10
    return true;
}

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
