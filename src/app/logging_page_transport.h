#pragma once
// A page transport that notes each page's host and path in the network activity log (purpose
// webSearch) before fetching it. The query part of the URL is never noted.
//
// Threading: as the wrapped transport; fetchPage blocks on the caller's task.

#include <memory>

#include "app/network_activity_log.h"
#include "wayfen/page_transport.h"

namespace nuvrel::app {

class LoggingPageTransport : public wayfen::PageTransport {
public:
    LoggingPageTransport(wayfen::PageTransportPtr wrapping,
                         std::shared_ptr<NetworkActivityLog> log);

    wayfen::RawPageResponse fetchPage(const base::Url& url) const override;

private:
    wayfen::PageTransportPtr wrapped_;
    std::shared_ptr<NetworkActivityLog> log_;
};

}  // namespace nuvrel::app
