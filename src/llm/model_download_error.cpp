#include "llm/model_download_error.h"

#include <cstdio>

namespace nuvrel::llm {

namespace {

std::string fill(std::string text, std::string_view placeholder, std::string_view value) {
    if (const auto at = text.find(placeholder); at != std::string::npos) {
        text.replace(at, placeholder.size(), value);
    }
    return text;
}

}  // namespace

ModelDownloadError::ModelDownloadError(Kind kind, std::string first, std::string second,
                                       std::string description)
    : kind_(kind),
      first_(std::move(first)),
      second_(std::move(second)),
      description_(std::move(description)) {}

ModelDownloadError ModelDownloadError::transferFailed(std::string description) {
    std::string text = "transferFailed(" + description + ")";
    return {Kind::transferFailed, std::move(description), {}, std::move(text)};
}

ModelDownloadError ModelDownloadError::checksumMismatch(std::string expected, std::string actual) {
    std::string text = "checksumMismatch(expected: " + expected + ", actual: " + actual + ")";
    return {Kind::checksumMismatch, std::move(expected), std::move(actual), std::move(text)};
}

ModelDownloadError ModelDownloadError::notEnoughSpace(std::uint64_t needed,
                                                      std::uint64_t available) {
    ModelDownloadError error(Kind::notEnoughSpace, {}, {},
                             "notEnoughSpace(needed: " + std::to_string(needed) +
                                 " bytes, available: " + std::to_string(available) + " bytes)");
    error.needed_ = needed;
    error.available_ = available;
    return error;
}

ModelDownloadError ModelDownloadError::notAGGUF(std::string fileName, std::string reason) {
    std::string text = "notAGGUF(" + fileName + ": " + reason + ")";
    return {Kind::notAGGUF, std::move(fileName), std::move(reason), std::move(text)};
}

std::string ModelDownloadError::userMessage(const core::LocalizedStrings& strings) const {
    switch (kind_) {
        case Kind::transferFailed:
            return strings.modelDownloadFailedMessage;
        case Kind::checksumMismatch:
            return fill(fill(strings.modelChecksumMismatchTemplate, "%1$@", first_), "%2$@",
                        second_);
        case Kind::notEnoughSpace:
            return fill(fill(strings.modelNotEnoughSpaceTemplate, "%1$@", formatByteCount(needed_)),
                        "%2$@", formatByteCount(available_));
        case Kind::notAGGUF:
            return strings.modelInstallNotGGUFMessage;
    }
    return strings.modelDownloadFailedMessage;
}

std::string formatByteCount(std::uint64_t bytes) {
    static constexpr const char* units[] = {"B", "KB", "MB", "GB", "TB"};
    double value = static_cast<double>(bytes);
    int unit = 0;
    while (value >= 1000.0 && unit < 4) {
        value /= 1000.0;
        ++unit;
    }
    char text[32];
    if (unit == 0)
        std::snprintf(text, sizeof text, "%llu B", static_cast<unsigned long long>(bytes));
    else
        std::snprintf(text, sizeof text, value < 10.0 ? "%.1f %s" : "%.0f %s", value, units[unit]);
    return text;
}

}  // namespace nuvrel::llm
