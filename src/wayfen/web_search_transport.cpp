#include "wayfen/web_search_transport.h"

namespace wayfen {

WebSearchTransportError::WebSearchTransportError(Kind kind, int status)
    : kind_(kind), status_(status) {
    switch (kind_) {
        case Kind::badHTTPStatus:
            description_ = "badHTTPStatus(" + std::to_string(status_) + ")";
            break;
        case Kind::invalidURL:
            description_ = "invalidURL";
            break;
        case Kind::undecodableBody:
            description_ = "undecodableBody";
            break;
    }
}

std::string WebSearchTransportError::description() const {
    return description_;
}

const char* WebSearchTransportError::what() const noexcept {
    return description_.c_str();
}

}  // namespace wayfen
