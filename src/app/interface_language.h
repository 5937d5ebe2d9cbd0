#pragma once
// The interface language of a command that runs without AppState: a choice for this run,
// else the saved setting, else the system's preferred languages, as the panel decides it.

#include <optional>
#include <string>
#include <vector>

#include "app/settings_storing.h"
#include "core/app_language.h"

namespace nuvrel::app {

core::AppLanguage interfaceLanguage(std::optional<core::AppLanguage> choice,
                                    const SettingsStoring& settings,
                                    const std::vector<std::string>& preferredLanguages);

}  // namespace nuvrel::app
