#pragma once
// The key store on the freedesktop Secret Service (GNOME Keyring, KWallet), through libsecret.
// Items are found by the attributes service "com.nuvrel.spotlight" and account <key>. Reading
// never prompts: a locked or absent key store reads as no secret, after one diagnostic line.
// Blocking, on the caller's thread; each call talks to the session bus.

#include <optional>
#include <string>
#include <string_view>

#include "app/keychain_storing.h"
#include "base/diagnostics.h"

namespace nuvrel::platform {

class SecretServiceKeychain final : public app::KeychainStoring {
public:
    explicit SecretServiceKeychain(base::Diagnostics diagnostics = {})
        : diagnostics_(std::move(diagnostics)) {}

    std::optional<std::string> secret(std::string_view key) const override;
    // Stores in the default collection, replacing the item of the same key; nothing clears it.
    // Throws app::KeychainError when the key store does not take the change.
    void setSecret(std::string_view key, std::optional<std::string> value) override;

    static constexpr std::string_view serviceName = "com.nuvrel.spotlight";

private:
    base::Diagnostics diagnostics_;
};

}  // namespace nuvrel::platform
