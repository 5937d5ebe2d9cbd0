#include "wayfen/page_transport.h"

#include <utility>

namespace wayfen {

namespace {

const char* kindName(PageFetchError::Kind kind) {
    switch (kind) {
        case PageFetchError::Kind::badStatus:
            return "badStatus";
        case PageFetchError::Kind::unsupportedContentType:
            return "unsupportedContentType";
        case PageFetchError::Kind::timedOut:
            return "timedOut";
        case PageFetchError::Kind::tooLarge:
            return "tooLarge";
        case PageFetchError::Kind::undecodableBody:
            return "undecodableBody";
        case PageFetchError::Kind::unsafeDestination:
            return "unsafeDestination";
    }
    return "unknown";
}

}  // namespace

PageFetchError::PageFetchError(Kind kind, int status, std::optional<std::string> contentType)
    : kind_(kind), status_(status), contentType_(std::move(contentType)) {
    description_ = kindName(kind_);
    if (kind_ == Kind::badStatus) {
        description_ += "(" + std::to_string(status_) + ")";
    } else if (kind_ == Kind::unsupportedContentType) {
        description_ += "(" + contentType_.value_or("none") + ")";
    }
}

std::string PageFetchError::description() const {
    return description_;
}

const char* PageFetchError::what() const noexcept {
    return description_.c_str();
}

}  // namespace wayfen
