#pragma once
// A search transport that notes each query's destination in the network activity log before
// passing it on. The path noted is always "/search" and the query is never noted.
//
// Threading: as the wrapped transport; fetchResultsHTML blocks on the caller's task.

#include <memory>
#include <string>

#include "app/network_activity_log.h"
#include "wayfen/web_search_transport.h"

namespace nuvrel::app {

class LoggingWebSearchTransport : public wayfen::WebSearchTransport {
public:
    LoggingWebSearchTransport(wayfen::WebSearchTransportPtr wrapping, std::string host,
                              NetworkActivityLog::Purpose purpose,
                              std::shared_ptr<NetworkActivityLog> log);

    std::string fetchResultsHTML(const std::string& query) const override;

private:
    wayfen::WebSearchTransportPtr wrapped_;
    std::string host_;
    NetworkActivityLog::Purpose purpose_;
    std::shared_ptr<NetworkActivityLog> log_;
};

}  // namespace nuvrel::app
