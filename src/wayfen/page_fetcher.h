#pragma once
// A bounded, deadline-guarded, best-effort fetch of a few pages. A page that cannot be had is
// simply absent; nothing here throws but cancellation.

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/http.h"
#include "base/sleep.h"
#include "base/url.h"
#include "wayfen/page_transport.h"

namespace wayfen {

struct FetchedPage {
    // The address that was asked for, not the one a redirect ended at.
    nuvrel::base::Url url;
    std::string html;

    friend bool operator==(const FetchedPage&, const FetchedPage&) = default;
};

struct PageFetcher {
    PageTransportPtr transport;
    // The whole deadline of one page, in seconds.
    double timeout = 3.5;
    std::size_t maxBytes = 1'572'864;
    // A cut, not a queue: URLs past it are never requested.
    int concurrencyLimit = 3;
    nuvrel::base::SleepFn sleepFn = nuvrel::base::liveSleep;

    // The SSRF check on what the URL says, with no name resolution.
    static bool isSafeToFetch(const nuvrel::base::Url& url);
    // The check at connect time, on the address a name led to: false for loopback, private,
    // link-local, unique-local, carrier-grade NAT, "this network" and unspecified addresses,
    // also inside an IPv4-mapped or NAT64 IPv6 address, and for anything that is no address.
    static bool isPublicAddress(const nuvrel::base::SocketAddress& address);

    // The pages that could be had, in completion order. Blocks on the caller's task, running
    // the fetches on tasks of their own; throws only base::Cancelled.
    std::vector<FetchedPage> fetchAll(const std::vector<nuvrel::base::Url>& urls) const;

    // One page under the deadline, or nothing: an error, a status outside 2xx, a type other
    // than HTML, more than maxBytes, or bytes that do not decode. Throws only base::Cancelled.
    std::optional<FetchedPage> fetchOne(const nuvrel::base::Url& url) const;
};

}  // namespace wayfen
