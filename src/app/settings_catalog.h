#pragma once
// Every persisted key of the defaults store with its type, its default as a person reads it,
// and what a value must be: what `nuvrel settings` lists and `settings set` checks. A new
// key gets one line in the table.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/settings_storing.h"
#include "base/diagnostics.h"

namespace nuvrel::app {

struct SettingDescription {
    enum class Type {
        text,
        flag,     // the text "1" or "0"
        integer,  // a whole number
        boolean,  // true or false
    };
    std::string_view key;
    Type type = Type::text;
    // The value the program uses when the key is absent, as shown to the user.
    std::string_view defaultValue;
    // A further rule for text values; none takes any text.
    bool (*accepts)(std::string_view value) = nullptr;
};

// In the order `nuvrel settings` lists them.
const std::vector<SettingDescription>& settingsCatalog();
const SettingDescription* findSetting(std::string_view key);

// The text typed by the user as the key's stored value; nothing when it does not fit.
std::optional<SettingValue> parseSettingValue(const SettingDescription& setting,
                                              std::string_view text);
// The stored value as text; nothing when the key is absent or holds another type.
std::optional<std::string> storedSettingText(const SettingsStoring& store,
                                             const SettingDescription& setting);
// The keys that are present with a value of another type: the program reads them as absent.
std::vector<std::string> mistypedSettings(const SettingsStoring& store);
// One diagnostic line naming the mistyped keys, when there are any.
void reportMistypedSettings(const SettingsStoring& store, const base::Diagnostics& diagnostics);

}  // namespace nuvrel::app
