#pragma once
// `nuvrel settings` (every persisted key with its value and default), `settings set KEY VALUE`
// (checked as the settings screen checks it; a refused value leaves the stored one) and
// `settings unset KEY`; `nuvrel key set|remove firecrawl`, the key store's one secret.

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

#include "app/keychain_storing.h"
#include "app/settings_storing.h"
#include "core/localized_strings.h"

namespace nuvrel::app {

struct SettingsOptions {
    enum class Action { list, set, unset };
    Action action = Action::list;
    std::string key;
    std::string value;
    bool json = false;
};

// `args` from the verb on; a message for bad usage.
std::variant<SettingsOptions, std::string> parseSettingsArguments(
    const std::vector<std::string>& args);

// Exit status 0, or 1 for an unknown key or a refused value (one line on `err`).
int runSettingsCommand(const SettingsOptions& options, SettingsStoring& store,
                       const core::LocalizedStrings& strings, std::ostream& out, std::ostream& err);

struct KeyOptions {
    enum class Action { set, remove };
    Action action = Action::set;
};

// `args` from the verb on ("key", "set", "firecrawl"); a message for bad usage.
std::variant<KeyOptions, std::string> parseKeyArguments(const std::vector<std::string>& args);

// `readSecret` gives the key as typed, without echo on a terminal; nothing at end of input.
// Blanks around it are dropped, and an empty key deletes the entry, as leaving the settings
// field empty does. Exit status 0, or 1 when the key store does not answer.
int runKeyCommand(const KeyOptions& options, KeychainStoring& keychain,
                  const std::function<std::optional<std::string>()>& readSecret,
                  const core::LocalizedStrings& strings, std::ostream& out, std::ostream& err);

}  // namespace nuvrel::app
