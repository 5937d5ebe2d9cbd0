#pragma once
// One page's raw bytes from the network. Threading: fetchPage blocks on the caller's task and
// throws base::Cancelled when that task is asked to stop.

#include <exception>
#include <memory>
#include <optional>
#include <string>

#include "base/url.h"

namespace wayfen {

struct RawPageResponse {
    int statusCode = 0;
    // The raw Content-Type header.
    std::optional<std::string> contentType;
    // At most the transport's cap plus one byte: the extra byte marks a page as too large.
    std::string data;
};

class PageFetchError : public std::exception {
public:
    enum class Kind {
        badStatus,
        unsupportedContentType,
        timedOut,
        tooLarge,
        undecodableBody,
        unsafeDestination
    };

    static PageFetchError badStatus(int status) {
        return PageFetchError(Kind::badStatus, status, {});
    }
    static PageFetchError unsupportedContentType(std::optional<std::string> type) {
        return PageFetchError(Kind::unsupportedContentType, 0, std::move(type));
    }
    static PageFetchError timedOut() { return PageFetchError(Kind::timedOut, 0, {}); }
    static PageFetchError tooLarge() { return PageFetchError(Kind::tooLarge, 0, {}); }
    static PageFetchError undecodableBody() { return PageFetchError(Kind::undecodableBody, 0, {}); }
    static PageFetchError unsafeDestination() {
        return PageFetchError(Kind::unsafeDestination, 0, {});
    }

    Kind kind() const { return kind_; }
    // badStatus only.
    int status() const { return status_; }
    // unsupportedContentType only.
    const std::optional<std::string>& contentType() const { return contentType_; }
    std::string description() const;
    const char* what() const noexcept override;

    friend bool operator==(const PageFetchError& a, const PageFetchError& b) {
        return a.kind_ == b.kind_ && a.status_ == b.status_ && a.contentType_ == b.contentType_;
    }

private:
    PageFetchError(Kind kind, int status, std::optional<std::string> contentType);
    Kind kind_;
    int status_;
    std::optional<std::string> contentType_;
    std::string description_;
};

class PageTransport {
public:
    virtual ~PageTransport() = default;
    virtual RawPageResponse fetchPage(const nuvrel::base::Url& url) const = 0;
};

using PageTransportPtr = std::shared_ptr<const PageTransport>;

}  // namespace wayfen
