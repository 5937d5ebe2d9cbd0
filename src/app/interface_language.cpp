#include "app/interface_language.h"

#include "app/settings_keys.h"

namespace nuvrel::app {

core::AppLanguage interfaceLanguage(std::optional<core::AppLanguage> choice,
                                    const SettingsStoring& settings,
                                    const std::vector<std::string>& preferredLanguages) {
    if (choice) return *choice;
    if (const auto stored = settings.string(settingsKey::lang)) {
        if (const auto language = core::appLanguageFromRawValue(*stored)) return *language;
    }
    return core::detectFromSystemLocale(preferredLanguages);
}

}  // namespace nuvrel::app
