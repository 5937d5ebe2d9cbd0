#pragma once
// The parts of `nuvrel models` shared between its verbs (models_command.cpp) and its reports,
// the list and the update check (models_report.cpp).

#include <initializer_list>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "app/models_command.h"
#include "core/localized_strings.h"
#include "llm/model_update_checker.h"

namespace nuvrel::app {

// "%@", or "%1$@" and "%2$@", replaced by the values in turn.
std::string fill(std::string_view templ, std::initializer_list<std::string_view> values);

// The update offered by the last check, until the user installs it or a check withdraws it.
std::optional<llm::ModelUpdateManifest::Entry> storedOffer(const SettingsStoring& userDefaults);

std::vector<std::string> installedFileNames(const ModelsCommandEnvironment& environment);

int listModels(const ModelsOptions& options, const ModelsCommandEnvironment& environment,
               const core::LocalizedStrings& strings, std::ostream& out);
int checkForUpdates(const ModelsOptions& options, const ModelsCommandEnvironment& environment,
                    const core::LocalizedStrings& strings, std::ostream& out, std::ostream& err);

}  // namespace nuvrel::app
