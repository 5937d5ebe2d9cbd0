#pragma once
// The key store: secrets by key, kept apart from the defaults store so that they never land
// in a plain settings file. Implementations are safe to call from any thread.

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace nuvrel::app {

// The one secret the program keeps: the user's Firecrawl API key.
inline constexpr std::string_view firecrawlAPIKeyName = "firecrawlAPIKey";

// A key store that did not answer a change (none on the session bus, or locked).
class KeychainError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class KeychainStoring {
public:
    virtual ~KeychainStoring() = default;

    // The secret, or nothing when there is none or it cannot be read.
    virtual std::optional<std::string> secret(std::string_view key) const = 0;
    // Stores the secret, replacing an earlier one; nothing deletes the entry. May throw
    // KeychainError.
    virtual void setSecret(std::string_view key, std::optional<std::string> value) = 0;
};

}  // namespace nuvrel::app
