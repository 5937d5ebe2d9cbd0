#include "app/logging_page_transport.h"

#include <utility>

#include "base/url.h"
#include "base/utf8.h"

namespace nuvrel::app {

LoggingPageTransport::LoggingPageTransport(wayfen::PageTransportPtr wrapping,
                                           std::shared_ptr<NetworkActivityLog> log)
    : wrapped_(std::move(wrapping)), log_(std::move(log)) {}

wayfen::RawPageResponse LoggingPageTransport::fetchPage(const base::Url& url) const {
    // The path without its query string: a page's query can carry what the user typed.
    const std::string& host = url.host().empty() ? url.text() : url.host();
    // Decoded, for people to read ("/wiki/서울"); bytes that decode to no text stay escaped.
    std::string path = base::percentDecode(url.path());
    if (!base::text::isValidUtf8(path)) path = url.path();
    log_->record(host, std::move(path), NetworkActivityLog::Purpose::webSearch);
    return wrapped_->fetchPage(url);
}

}  // namespace nuvrel::app
