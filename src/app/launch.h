#pragma once
// Assembles what the program needs to answer a sentence: the HTTP session, the local model
// backends and the function that makes a pipeline for each run from the current settings.

#include <memory>
#include <string>
#include <vector>

#include "app/app_state.h"
#include "app/settings_storing.h"
#include "base/http.h"

namespace nuvrel::app {

struct LaunchSettings {
    std::shared_ptr<SettingsStoring> userDefaults;
    std::shared_ptr<base::HttpSession> session;
    // --no-network: off for this process whatever the saved setting says.
    bool networkForbidden = false;
};

// A pipeline per run, so that a changed setting needs no restart. The router speaks to the
// local model server on 127.0.0.1:8765; the summary role shares that server.
AppState::MakePipeline makePipelineFactory(const LaunchSettings& settings);

}  // namespace nuvrel::app

namespace nuvrel::app {

// The user's preferred languages as language tags ("ko-KR"), from LANGUAGE, LC_ALL,
// LC_MESSAGES and LANG, most preferred first. "C" and "POSIX" say nothing.
std::vector<std::string> preferredLanguagesFromEnvironment(const char* const* environment);

}  // namespace nuvrel::app
