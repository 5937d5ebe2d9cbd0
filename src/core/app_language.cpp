#include "core/app_language.h"

#include "core/raw_value.h"

namespace nuvrel::core {

std::string_view rawValue(AppLanguage language) {
    switch (language) {
        case AppLanguage::en:
            return "en";
        case AppLanguage::ko:
            return "ko";
        case AppLanguage::zh:
            return "zh";
        case AppLanguage::ja:
            return "ja";
    }
    return {};
}

std::optional<AppLanguage> appLanguageFromRawValue(std::string_view raw) {
    return caseWithRawValue(allAppLanguages, raw);
}

AppLanguage detectFromSystemLocale(const std::vector<std::string>& preferredLanguages) {
    // Later entries are ignored on purpose: German first and Korean second gives English.
    if (preferredLanguages.empty()) return AppLanguage::en;
    const std::string_view first = preferredLanguages.front();
    for (AppLanguage language : {AppLanguage::ko, AppLanguage::zh, AppLanguage::ja}) {
        if (first.starts_with(rawValue(language))) return language;
    }
    return AppLanguage::en;
}

}  // namespace nuvrel::core
