#include "app/settings_catalog.h"

#include <charconv>

#include "answers/information_services.h"
#include "app/searxng_endpoint_validation.h"
#include "app/settings_keys.h"
#include "core/app_language.h"

namespace nuvrel::app {

namespace {

using Type = SettingDescription::Type;
using Services = answers::InformationServices;

bool isLanguage(std::string_view value) {
    return core::appLanguageFromRawValue(std::string(value)).has_value();
}
bool isAppearance(std::string_view value) {
    return value == "dark" || value == "light";
}
bool isServiceAddress(std::string_view value) {
    return !value.empty() && SearXNGEndpointValidation::validate(value);
}

}  // namespace

const std::vector<SettingDescription>& settingsCatalog() {
    namespace key = settingsKey;
    static const std::vector<SettingDescription> catalog = {
        {key::lang, Type::text, "the system's language", isLanguage},
        {key::appearance, Type::text, "light", isAppearance},
        {key::modelFile, Type::text, "the installed router model", nullptr},
        {key::hotkeyKeyCode, Type::integer, "49", nullptr},
        {key::hotkeyModifiers, Type::integer, "2048", nullptr},
        {key::searxngEndpoint, Type::text, "", SearXNGEndpointValidation::validate},
        {key::openMeteoGeocodingEndpoint, Type::text, Services::publicGeocodingBase,
         isServiceAddress},
        {key::openMeteoForecastEndpoint, Type::text, Services::publicForecastBase,
         isServiceAddress},
        {key::frankfurterEndpoint, Type::text, Services::publicFrankfurterBase, isServiceAddress},
        {key::networkFeaturesEnabled, Type::flag, "1", nullptr},
        {key::memorySavingModeEnabled, Type::flag, "0", nullptr},
        {key::modelUpdateCheckEnabled, Type::flag, "1", nullptr},
        {key::calendarFolders, Type::text, "$XDG_DATA_HOME/nuvrel/calendars/*", nullptr},
        {key::newEventCalendarFolder, Type::text, "$XDG_DATA_HOME/nuvrel/calendars/personal",
         nullptr},
        {key::reminderFolder, Type::text, "$XDG_DATA_HOME/nuvrel/reminders/personal", nullptr},
        {key::modelMirror, Type::text, "", nullptr},
        {key::onboardingCompleted, Type::boolean, "false", nullptr},
        {key::hasCompletedFirstQuery, Type::text, "", nullptr},
        {key::modelDownloadedOnFirstRun, Type::text, "", nullptr},
        {key::modelUpdateLastCheck, Type::text, "", nullptr},
        {key::modelUpdateOffer, Type::text, "", nullptr},
        {key::onDevice, Type::boolean, "true", nullptr},
    };
    return catalog;
}

const SettingDescription* findSetting(std::string_view key) {
    for (const auto& setting : settingsCatalog()) {
        if (setting.key == key) return &setting;
    }
    return nullptr;
}

std::optional<SettingValue> parseSettingValue(const SettingDescription& setting,
                                              std::string_view text) {
    switch (setting.type) {
        case Type::flag:
            if (text == "1" || text == "true") return std::string("1");
            if (text == "0" || text == "false") return std::string("0");
            return std::nullopt;
        case Type::boolean:
            if (text == "1" || text == "true") return true;
            if (text == "0" || text == "false") return false;
            return std::nullopt;
        case Type::integer: {
            std::int64_t number = 0;
            const char* end = text.data() + text.size();
            const auto [stop, error] = std::from_chars(text.data(), end, number);
            if (text.empty() || error != std::errc() || stop != end) return std::nullopt;
            return number;
        }
        case Type::text:
            if (setting.accepts && !setting.accepts(text)) return std::nullopt;
            return std::string(text);
    }
    return std::nullopt;
}

std::optional<std::string> storedSettingText(const SettingsStoring& store,
                                             const SettingDescription& setting) {
    switch (setting.type) {
        case Type::text:
        case Type::flag:
            return store.string(setting.key);
        case Type::integer:
            if (auto number = store.integer(setting.key)) return std::to_string(*number);
            return std::nullopt;
        case Type::boolean:
            if (auto flag = store.boolean(setting.key)) return *flag ? "true" : "false";
            return std::nullopt;
    }
    return std::nullopt;
}

std::vector<std::string> mistypedSettings(const SettingsStoring& store) {
    std::vector<std::string> keys;
    for (const auto& setting : settingsCatalog()) {
        // Values of these keys are written by the program in whatever form it chooses.
        if (setting.key == settingsKey::modelDownloadedOnFirstRun ||
            setting.key == settingsKey::modelUpdateLastCheck)
            continue;
        if (store.contains(setting.key) && !storedSettingText(store, setting))
            keys.emplace_back(setting.key);
    }
    return keys;
}

void reportMistypedSettings(const SettingsStoring& store, const base::Diagnostics& diagnostics) {
    const auto keys = mistypedSettings(store);
    if (keys.empty()) return;
    std::string names;
    for (const auto& key : keys) names += (names.empty() ? "" : ", ") + key;
    diagnostics.event("settings of the wrong type read as absent, their defaults apply: " + names);
}

}  // namespace nuvrel::app
