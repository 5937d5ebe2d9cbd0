#include "app/logging_web_search_transport.h"

#include <utility>

namespace nuvrel::app {

LoggingWebSearchTransport::LoggingWebSearchTransport(wayfen::WebSearchTransportPtr wrapping,
                                                     std::string host,
                                                     NetworkActivityLog::Purpose purpose,
                                                     std::shared_ptr<NetworkActivityLog> log)
    : wrapped_(std::move(wrapping)),
      host_(std::move(host)),
      purpose_(purpose),
      log_(std::move(log)) {}

std::string LoggingWebSearchTransport::fetchResultsHTML(const std::string& query) const {
    // A fixed path, whatever the provider's own: the query must never reach the log.
    log_->record(host_, "/search", purpose_);
    return wrapped_->fetchResultsHTML(query);
}

}  // namespace nuvrel::app
