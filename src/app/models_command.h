#pragma once
// `nuvrel models`: lists the catalog and the installed model files, installs one (a catalog
// model, an offered update, or any GGUF file from an address with its SHA-256), adds a file
// from disk, switches the model in use with a rollback, removes one, and checks for updates.
// Blocking: runs on the calling thread; downloads run on a task that Ctrl-C cancels.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "app/models_options.h"
#include "app/network_activity_log.h"
#include "app/settings_storing.h"
#include "base/diagnostics.h"
#include "base/http.h"
#include "core/app_language.h"
#include "llm/model_downloader.h"

namespace nuvrel::app {

struct ModelsCommandEnvironment {
    std::shared_ptr<SettingsStoring> userDefaults;
    std::shared_ptr<NetworkActivityLog> networkLog;
    std::shared_ptr<base::HttpSession> session;
    core::AppLanguage language = core::AppLanguage::en;
    std::filesystem::path modelsDirectory;
    std::optional<std::uint64_t> physicalMemory;
    std::string appVersion;
    // Progress goes to the error stream: a bar when it is a terminal, plain lines otherwise.
    bool progressOnTerminal = false;
    // The download's transport; its session is `session` when left empty.
    llm::ModelDownloader::DownloadSettings download{};
    // Brings the router up on an installed file and keeps it, or throws after restoring the
    // previous model (performModelSwitch).
    std::function<void(const std::string& fileName)> switchModel;
    // Runs a download so that Ctrl-C cancels it (runUntilInterrupted); plain call by default.
    std::function<void(const std::function<void()>&)> interruptible =
        [](const std::function<void()>& body) { body(); };
    std::function<std::chrono::system_clock::time_point()> now = std::chrono::system_clock::now;
    base::Diagnostics diagnostics{};
};

// The file the router uses now: the selected one when installed, else the default router
// file, else the interim file; nothing when none of them is installed.
std::optional<std::string> modelFileInUse(const SettingsStoring& userDefaults,
                                          const std::filesystem::path& modelsDirectory);

// Returns the exit status; results go to `out`, progress and errors to `err`.
int runModelsCommand(const ModelsOptions& options, const ModelsCommandEnvironment& environment,
                     std::ostream& out, std::ostream& err);

}  // namespace nuvrel::app

namespace nuvrel::app {

// The command with the live environment: the XDG files, the network, the router's server on
// `routerPort`, Ctrl-C. `environment` is a null-terminated "NAME=value" list such as environ.
int runLiveModelsCommand(const ModelsOptions& options, const char* const* environment,
                         const std::string& appVersion, int routerPort, std::ostream& out,
                         std::ostream& err);

}  // namespace nuvrel::app
