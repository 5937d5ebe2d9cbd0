#pragma once
// The one error that reaches a card. A capability may throw it directly; the pipeline turns
// every other error into one.

#include <exception>
#include <optional>
#include <string>

namespace nuvrel::core {

class UserFacingError : public std::exception {
public:
    explicit UserFacingError(std::string message,
                             std::optional<std::string> recoverySuggestion = std::nullopt,
                             bool retryable = false)
        : message(std::move(message)),
          recoverySuggestion(std::move(recoverySuggestion)),
          retryable(retryable) {}

    const char* what() const noexcept override { return message.c_str(); }
    const std::string& description() const { return message; }

    bool operator==(const UserFacingError& other) const {
        return message == other.message && recoverySuggestion == other.recoverySuggestion &&
               retryable == other.retryable;
    }

    std::string message;
    std::optional<std::string> recoverySuggestion;
    // The error card offers a retry button.
    bool retryable;
};

}  // namespace nuvrel::core
