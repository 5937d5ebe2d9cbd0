#include "app/settings_command.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "app/models_command_support.h"
#include "app/settings_catalog.h"
#include "base/text.h"

namespace nuvrel::app {

namespace {

int listSettings(const SettingsOptions& options, const SettingsStoring& store, std::ostream& out) {
    if (options.json) {
        auto list = nlohmann::ordered_json::array();
        for (const auto& setting : settingsCatalog()) {
            const auto value = storedSettingText(store, setting);
            list.push_back({{"key", setting.key},
                            {"value", value ? nlohmann::ordered_json(*value) : nullptr},
                            {"default", setting.defaultValue}});
        }
        out << list.dump() << '\n';
        return 0;
    }
    std::size_t width = 0;
    for (const auto& setting : settingsCatalog()) width = std::max(width, setting.key.size());
    for (const auto& setting : settingsCatalog()) {
        const auto value = storedSettingText(store, setting);
        out << setting.key << std::string(width + 2 - setting.key.size(), ' ')
            << (value ? nlohmann::json(*value).dump() : std::string("-"))
            << "   (default: " << nlohmann::json(std::string(setting.defaultValue)).dump() << ")\n";
    }
    return 0;
}

}  // namespace

std::variant<SettingsOptions, std::string> parseSettingsArguments(
    const std::vector<std::string>& args) {
    SettingsOptions options;
    std::vector<std::string> words;
    for (std::size_t i = 1; i < args.size(); ++i) {
        if (args[i] == "--json") {
            options.json = true;
        } else {
            words.push_back(args[i]);
        }
    }
    if (words.empty()) return options;
    if (words[0] == "set" && words.size() == 3) {
        options.action = SettingsOptions::Action::set;
        options.key = words[1];
        options.value = words[2];
        return options;
    }
    if (words[0] == "unset" && words.size() == 2) {
        options.action = SettingsOptions::Action::unset;
        options.key = words[1];
        return options;
    }
    return std::string("settings takes nothing, set KEY VALUE or unset KEY");
}

std::variant<KeyOptions, std::string> parseKeyArguments(const std::vector<std::string>& args) {
    if (args.size() == 3 && args[2] == "firecrawl") {
        if (args[1] == "set") return KeyOptions{KeyOptions::Action::set};
        if (args[1] == "remove") return KeyOptions{KeyOptions::Action::remove};
    }
    return std::string("key takes set firecrawl or remove firecrawl");
}

int runSettingsCommand(const SettingsOptions& options, SettingsStoring& store,
                       const core::LocalizedStrings& strings, std::ostream& out,
                       std::ostream& err) {
    if (options.action == SettingsOptions::Action::list) return listSettings(options, store, out);
    const SettingDescription* setting = findSetting(options.key);
    if (!setting) {
        err << "nuvrel: " << fill(strings.settingsUnknownKeyTemplate, {options.key}) << '\n';
        return 1;
    }
    if (options.action == SettingsOptions::Action::unset) {
        store.remove(setting->key);
        return 0;
    }
    const auto value = parseSettingValue(*setting, options.value);
    if (!value) {
        // The SearXNG address has the settings screen's own message.
        err << "nuvrel: "
            << (setting->key == "searxngEndpoint"
                    ? std::string(strings.searchTabEndpointInvalidMessage)
                    : fill(strings.settingsInvalidValueTemplate, {options.value, options.key}))
            << '\n';
        return 1;
    }
    store.set(setting->key, *value);
    return 0;
}

int runKeyCommand(const KeyOptions& options, KeychainStoring& keychain,
                  const std::function<std::optional<std::string>()>& readSecret,
                  const core::LocalizedStrings& strings, std::ostream& out, std::ostream& err) {
    std::optional<std::string> value;
    if (options.action == KeyOptions::Action::set) {
        const auto typed = readSecret();
        if (typed) value = base::text::trim(*typed);
        if (value && value->empty()) value.reset();
    }
    try {
        keychain.setSecret(firecrawlAPIKeyName, value);
    } catch (const KeychainError&) {
        err << "nuvrel: " << std::string(strings.keyStoreUnavailableMessage) << '\n';
        return 1;
    }
    if (value) out << std::string(strings.searchTabFirecrawlPlaceholderSaved) << '\n';
    return 0;
}

}  // namespace nuvrel::app
