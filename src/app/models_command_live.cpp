#include <unistd.h>

#include <cstring>

#include "app/interface_language.h"
#include "app/interruptible.h"
#include "app/json_settings_store.h"
#include "app/launch.h"
#include "app/model_switch.h"
#include "app/models_command.h"
#include "base/paths.h"
#include "llm/model_resolution.h"
#include "platform/model_storage.h"

namespace nuvrel::app {

namespace {

std::optional<std::string> variable(const char* const* environment, std::string_view name) {
    for (auto entry = environment; entry && *entry; ++entry) {
        const std::string_view text(*entry);
        if (text.size() > name.size() && text.starts_with(name) && text[name.size()] == '=')
            return std::string(text.substr(name.size() + 1));
    }
    return std::nullopt;
}

}  // namespace

int runLiveModelsCommand(const ModelsOptions& options, const char* const* environment,
                         const std::string& appVersion, int routerPort, std::ostream& out,
                         std::ostream& err) {
    const auto paths = base::XdgPaths::fromEnvironment(
        [environment](const char* name) { return variable(environment, name); });
    const base::Diagnostics diagnostics(base::standardErrorSink());
    auto defaults = std::make_shared<JsonSettingsStore>(paths.settingsFile(), diagnostics);
    auto choice = options.language;
    if (const auto debugLanguage = variable(environment, "NUVREL_DEBUG_LANG");
        !choice && debugLanguage)
        choice = core::appLanguageFromRawValue(*debugLanguage);

    ModelsCommandEnvironment live;
    live.userDefaults = defaults;
    live.networkLog = std::make_shared<NetworkActivityLog>(std::chrono::system_clock::now,
                                                           paths.networkActivityFile());
    live.session = std::make_shared<base::HttpSession>();
    live.language =
        interfaceLanguage(choice, *defaults, preferredLanguagesFromEnvironment(environment));
    live.modelsDirectory = paths.modelsDirectory();
    live.physicalMemory = platform::livePhysicalMemory();
    live.appVersion = appVersion;
    live.progressOnTerminal = ::isatty(STDERR_FILENO) == 1;
    live.interruptible = runUntilInterrupted;
    live.diagnostics = diagnostics;
    live.download.openStaging = platform::liveOpenStaging;
    live.download.availableSpace = platform::liveAvailableSpace;

    // Made on the first switch only: a runtime names the model it would start.
    std::shared_ptr<LLMRuntime> runtime;
    live.switchModel = [&](const std::string& fileName) {
        if (!runtime)
            runtime = std::make_shared<LLMRuntime>(
                LLMRuntime::make(*defaults, live.session, diagnostics, routerPort));
        performModelSwitch(fileName, *runtime,
                           {paths.modelsDirectory(), llm::liveFileExists,
                            [&](const std::filesystem::path& path) {
                                return LLMRuntime::forModel(
                                    *defaults, path, llm::isInterimModel(path.filename().string()),
                                    live.session, diagnostics, routerPort);
                            },
                            diagnostics});
    };
    const int status = runModelsCommand(options, live, out, err);
    // This command's servers only prove that a model loads: none outlives it.
    if (runtime) runtime->stopServers();
    return status;
}

}  // namespace nuvrel::app
