#include "wayfen/searxng_transport.h"

namespace wayfen {

namespace {

const char* kindName(SearXNGTransportError::Kind kind) {
    using Kind = SearXNGTransportError::Kind;
    switch (kind) {
        case Kind::badHTTPStatus:
            return "badHTTPStatus";
        case Kind::invalidURL:
            return "invalidURL";
        case Kind::undecodableBody:
            return "undecodableBody";
        case Kind::emptyResults:
            return "emptyResults";
        case Kind::noInstancesConfigured:
            return "noInstancesConfigured";
        case Kind::allInstancesFailed:
            return "allInstancesFailed";
    }
    return "unknown";
}

}  // namespace

SearXNGTransportError::SearXNGTransportError(Kind kind, int status)
    : kind_(kind), status_(kind == Kind::badHTTPStatus ? status : 0), description_(kindName(kind)) {
    if (kind_ == Kind::badHTTPStatus) description_ += "(" + std::to_string(status_) + ")";
}

std::string SearXNGTransportError::description() const {
    return description_;
}

const char* SearXNGTransportError::what() const noexcept {
    return description_.c_str();
}

}  // namespace wayfen
