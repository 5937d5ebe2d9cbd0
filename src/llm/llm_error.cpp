#include "llm/llm_error.h"

namespace nuvrel::llm {

namespace {

const char* kindName(LLMError::Kind kind) {
    switch (kind) {
        case LLMError::Kind::portOccupiedUnhealthy:
            return "portOccupiedUnhealthy";
        case LLMError::Kind::http:
            return "http";
        case LLMError::Kind::invalidRequest:
            return "invalidRequest";
        case LLMError::Kind::invalidResponse:
            return "invalidResponse";
        case LLMError::Kind::binaryNotFound:
            return "binaryNotFound";
        case LLMError::Kind::modelNotFound:
            return "modelNotFound";
        case LLMError::Kind::serverStartTimeout:
            return "serverStartTimeout";
        case LLMError::Kind::inputTooLong:
            return "inputTooLong";
        case LLMError::Kind::emptyResponse:
            return "emptyResponse";
        case LLMError::Kind::retired:
            return "retired";
    }
    return "unknown";
}

}  // namespace

LLMError::LLMError(Kind kind, int code, std::string text)
    : kind_(kind), code_(code), text_(std::move(text)) {
    description_ = kindName(kind_);
    switch (kind_) {
        case Kind::portOccupiedUnhealthy:
        case Kind::http:
            description_ += "(" + std::to_string(code_) + ")";
            break;
        case Kind::invalidRequest:
        case Kind::invalidResponse:
            description_ += "(" + text_ + ")";
            break;
        default:
            break;
    }
}

std::string LLMError::description() const {
    return description_;
}

}  // namespace nuvrel::llm
