#include "app/logging_page_transport.h"

#include <utility>

namespace nuvrel::app {

LoggingPageTransport::LoggingPageTransport(wayfen::PageTransportPtr wrapping,
                                           std::shared_ptr<NetworkActivityLog> log)
    : wrapped_(std::move(wrapping)), log_(std::move(log)) {}

wayfen::RawPageResponse LoggingPageTransport::fetchPage(const base::Url& url) const {
    // The path without its query string: a page's query can carry what the user typed.
    const std::string& host = url.host().empty() ? url.text() : url.host();
    log_->record(host, NetworkActivityLog::readablePath(url),
                 NetworkActivityLog::Purpose::webSearch);
    return wrapped_->fetchPage(url);
}

}  // namespace nuvrel::app
