#include "llm/model_catalog_errors.h"

namespace nuvrel::llm {

namespace {

const char* kindName(ModelInstallError::Kind kind) {
    switch (kind) {
        case ModelInstallError::Kind::notAGGUF:
            return "notAGGUF";
        case ModelInstallError::Kind::duplicateFileName:
            return "duplicateFileName";
        case ModelInstallError::Kind::copyFailed:
            return "copyFailed";
    }
    return "unknown";
}

const char* kindName(ModelRemoveError::Kind kind) {
    switch (kind) {
        case ModelRemoveError::Kind::isCurrentlySelected:
            return "isCurrentlySelected";
        case ModelRemoveError::Kind::deleteFailed:
            return "deleteFailed";
    }
    return "unknown";
}

}  // namespace

ModelInstallError::ModelInstallError(Kind kind, std::string detail)
    : kind_(kind),
      detail_(std::move(detail)),
      description_(std::string(kindName(kind_)) + "(" + detail_ + ")") {}

const std::string& ModelInstallError::userMessage(const core::LocalizedStrings& strings) const {
    switch (kind_) {
        case Kind::notAGGUF:
            return strings.modelInstallNotGGUFMessage;
        case Kind::duplicateFileName:
            return strings.modelInstallDuplicateMessage;
        case Kind::copyFailed:
            break;
    }
    return strings.modelInstallFailedMessage;
}

ModelRemoveError::ModelRemoveError(Kind kind, std::string detail)
    : kind_(kind),
      detail_(std::move(detail)),
      description_(std::string(kindName(kind_)) + "(" + detail_ + ")") {}

const std::string& ModelRemoveError::userMessage(const core::LocalizedStrings& strings) const {
    if (kind_ == Kind::isCurrentlySelected) return strings.modelRemoveCurrentlySelectedMessage;
    return strings.modelRemoveFailedMessage;
}

}  // namespace nuvrel::llm
