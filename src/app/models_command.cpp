#include "app/models_command.h"

#include <algorithm>
#include <initializer_list>
#include <nlohmann/json.hpp>

#include "app/download_progress_display.h"
#include "app/models_command_support.h"
#include "app/settings_keys.h"
#include "app/terminal_session.h"
#include "base/cancellation.h"
#include "base/diagnostics.h"
#include "base/text.h"
#include "base/url.h"
#include "llm/curated_models.h"
#include "llm/gguf_header.h"
#include "llm/model_catalog.h"
#include "llm/model_resolution.h"
#include "llm/model_update_checker.h"

namespace nuvrel::app {

namespace {

namespace Downloader = llm::ModelDownloader;
using Json = nlohmann::ordered_json;

// Where a model comes from and where it goes.
struct InstallPlan {
    base::Url source;
    std::string fileName;
    std::optional<std::string> sha256;
    bool userAddress = false;
};

std::optional<InstallPlan> planInstall(const ModelsOptions& options,
                                       const ModelsCommandEnvironment& environment,
                                       const core::LocalizedStrings& strings, std::ostream& err) {
    const auto mirror = environment.userDefaults->string(settingsKey::modelMirror);
    if (options.target.starts_with("http://") || options.target.starts_with("https://")) {
        const auto url = base::Url::parse(options.target);
        const std::string name =
            url ? base::percentDecode(std::filesystem::path(url->path()).filename().string()) : "";
        if (!url || (!options.asFileName && name.empty())) {
            err << "nuvrel: " << fill(strings.modelUnknownNameTemplate, {options.target}) << '\n';
            return std::nullopt;
        }
        return InstallPlan{*url, options.asFileName.value_or(name), options.sha256, true};
    }
    std::string target = options.target;
    if (target.empty()) {
        target = Downloader::recommendedModel(environment.physicalMemory.value_or(0)).fileName;
    }
    if (const auto* model = llm::ModelCatalog::curatedModel(target)) {
        return InstallPlan{
            llm::ModelCatalog::applyingMirror(*base::Url::parse(model->sourceURL), mirror),
            model->fileName, model->sha256, false};
    }
    if (const auto offer = storedOffer(*environment.userDefaults);
        offer && offer->fileName == target) {
        return InstallPlan{llm::ModelCatalog::applyingMirror(*base::Url::parse(offer->url), mirror),
                           offer->fileName, offer->sha256, false};
    }
    err << "nuvrel: " << fill(strings.modelUnknownNameTemplate, {target}) << '\n';
    return std::nullopt;
}

// The first model on a machine becomes the one in use; a fetched update clears its offer.
void afterInstall(const std::string& fileName, const ModelsCommandEnvironment& environment) {
    auto& defaults = *environment.userDefaults;
    const auto inUse = modelFileInUse(defaults, environment.modelsDirectory);
    if (!inUse || *inUse == fileName) defaults.set(settingsKey::modelFile, fileName);
    if (const auto offer = storedOffer(defaults); offer && offer->fileName == fileName)
        defaults.remove(settingsKey::modelUpdateOffer);
}

int reportInstalled(const ModelsOptions& options, const std::string& fileName,
                    const std::filesystem::path& path, const core::LocalizedStrings& strings,
                    std::ostream& out) {
    if (options.json)
        out << Json{{"installed", true}, {"fileName", fileName}, {"path", path.string()}}.dump()
            << '\n';
    else
        out << fill(strings.modelInstalledTemplate, {fileName}) << '\n';
    return exitResult;
}

int reportFailure(const ModelsOptions& options, const std::string& kind, const std::string& message,
                  const std::string& description, std::ostream& out, std::ostream& err) {
    if (options.json)
        out << Json{{"installed", false},
                    {"error", {{"kind", kind}, {"message", message}, {"description", description}}}}
                   .dump()
            << '\n';
    else
        err << "nuvrel: " << message << '\n';
    return kind == "cancelled" ? exitCancelled : exitError;
}

int install(const ModelsOptions& options, const ModelsCommandEnvironment& environment,
            const core::LocalizedStrings& strings, std::ostream& out, std::ostream& err) {
    const auto plan = planInstall(options, environment, strings, err);
    if (!plan) return exitUsage;
    const auto destination = environment.modelsDirectory / plan->fileName;
    if (!base::text::lower(plan->fileName).ends_with(".gguf")) {
        return reportFailure(options, "notAGGUF", strings.modelInstallNotGGUFMessage,
                             plan->fileName, out, err);
    }
    if (plan->userAddress && llm::liveFileExists(destination)) {
        return reportFailure(options, "duplicateFileName", strings.modelInstallDuplicateMessage,
                             plan->fileName, out, err);
    }
    auto settings = environment.download;
    if (!settings.session) settings.session = environment.session;
    DownloadProgressDisplay display(err, environment.progressOnTerminal);
    bool toldResume = false;
    const auto onProgress = [&](const Downloader::Progress& progress) {
        if (options.json) return;
        if (!toldResume && progress.resumedFromBytes > 0) {
            toldResume = true;
            err << fill(strings.modelResumingTemplate,
                        {llm::formatByteCount(progress.resumedFromBytes)})
                << '\n';
        }
        display.update(progress);
    };
    const auto log = [&](std::string_view host, std::string_view path) {
        environment.networkLog->record(std::string(host), base::percentDecode(path),
                                       NetworkActivityLog::Purpose::modelDownload);
    };
    try {
        environment.interruptible([&] {
            Downloader::install(plan->source, destination, llm::liveModelFileManager(), onProgress,
                                Downloader::liveDownload(settings), log, plan->sha256);
        });
    } catch (const base::Cancelled&) {
        if (!options.json) display.finish();
        return reportFailure(options, "cancelled", strings.modelInstallStoppedMessage, "cancelled",
                             out, err);
    } catch (const llm::ModelDownloadError& error) {
        if (!options.json) display.finish();
        std::string message = error.userMessage(strings);
        if (error.kind() == llm::ModelDownloadError::Kind::transferFailed)
            message += " (" + error.expected() + ")";
        return reportFailure(options, "download", message, error.description(), out, err);
    }
    if (!options.json) display.finish();
    afterInstall(plan->fileName, environment);
    return reportInstalled(options, plan->fileName, destination, strings, out);
}

int add(const ModelsOptions& options, const ModelsCommandEnvironment& environment,
        const core::LocalizedStrings& strings, std::ostream& out, std::ostream& err) {
    const std::filesystem::path source = options.target;
    try {
        if (const auto problem = llm::ggufFileProblem(source))
            throw llm::ModelInstallError::notAGGUF(source.filename().string() + ": " + *problem);
        const auto installed = llm::ModelCatalog::install(source, environment.modelsDirectory,
                                                          llm::liveModelFileManager());
        afterInstall(installed.filename().string(), environment);
        return reportInstalled(options, installed.filename().string(), installed, strings, out);
    } catch (const llm::ModelInstallError& error) {
        return reportFailure(options, "install", error.userMessage(strings), error.description(),
                             out, err);
    }
}

// A catalog id, a catalog file name or an installed file's name, as an installed file name.
std::optional<std::string> installedFileNamed(const std::string& name,
                                              const ModelsCommandEnvironment& environment) {
    std::string fileName = name;
    if (const auto* model = llm::ModelCatalog::curatedModel(name)) fileName = model->fileName;
    const auto installed = installedFileNames(environment);
    if (std::find(installed.begin(), installed.end(), fileName) == installed.end())
        return std::nullopt;
    return fileName;
}

int use(const ModelsOptions& options, const ModelsCommandEnvironment& environment,
        const core::LocalizedStrings& strings, std::ostream& out, std::ostream& err) {
    const auto fileName = installedFileNamed(options.target, environment);
    if (!fileName) {
        err << "nuvrel: " << fill(strings.modelFileNotInstalledTemplate, {options.target}) << '\n';
        return exitError;
    }
    const auto previous = modelFileInUse(*environment.userDefaults, environment.modelsDirectory);
    try {
        environment.interruptible([&] { environment.switchModel(*fileName); });
    } catch (const base::Cancelled&) {
        return exitCancelled;
    } catch (const std::exception& error) {
        environment.diagnostics.event("model switch failed: " + std::string(error.what()));
        err << "nuvrel: " << strings.modelSwitchFailedMessage << '\n';
        if (previous) err << fill(strings.modelStillUsingTemplate, {*previous}) << '\n';
        return exitError;
    }
    environment.userDefaults->set(settingsKey::modelFile, *fileName);
    out << fill(strings.modelNowUsingTemplate, {*fileName}) << '\n';
    return exitResult;
}

int remove(const ModelsOptions& options, const ModelsCommandEnvironment& environment,
           const core::LocalizedStrings& strings, std::ostream& out, std::ostream& err) {
    const auto fileName = installedFileNamed(options.target, environment);
    if (!fileName) {
        err << "nuvrel: " << fill(strings.modelFileNotInstalledTemplate, {options.target}) << '\n';
        return exitError;
    }
    auto& defaults = *environment.userDefaults;
    const auto inUse = modelFileInUse(defaults, environment.modelsDirectory);
    try {
        llm::ModelCatalog::remove(*fileName, options.force ? std::nullopt : inUse,
                                  environment.modelsDirectory, llm::liveModelFileManager());
    } catch (const llm::ModelRemoveError& error) {
        err << "nuvrel: " << error.userMessage(strings) << '\n';
        if (error.kind() == llm::ModelRemoveError::Kind::isCurrentlySelected)
            err << strings.modelRemoveForceHint << '\n';
        return exitError;
    }
    if (defaults.string(settingsKey::modelFile) == *fileName)
        defaults.remove(settingsKey::modelFile);
    out << fill(strings.modelRemovedTemplate, {*fileName}) << '\n';
    return exitResult;
}

}  // namespace

std::optional<std::string> modelFileInUse(const SettingsStoring& userDefaults,
                                          const std::filesystem::path& modelsDirectory) {
    std::vector<std::string> candidates;
    if (auto selected = userDefaults.string(settingsKey::modelFile); selected && !selected->empty())
        candidates.push_back(*selected);
    candidates.emplace_back(llm::defaultModelFileName);
    candidates.emplace_back(llm::interimModelFileName);
    for (const auto& name : candidates) {
        if (llm::liveFileExists(modelsDirectory / name)) return name;
    }
    return std::nullopt;
}

int runModelsCommand(const ModelsOptions& options, const ModelsCommandEnvironment& environment,
                     std::ostream& out, std::ostream& err) {
    const auto& strings = core::LocalizedStrings::strings(environment.language);
    switch (options.action) {
        case ModelsOptions::Action::help:
            out << modelsUsageText(options.helpFor);
            return exitResult;
        case ModelsOptions::Action::list:
            return listModels(options, environment, strings, out);
        case ModelsOptions::Action::install:
            return install(options, environment, strings, out, err);
        case ModelsOptions::Action::add:
            return add(options, environment, strings, out, err);
        case ModelsOptions::Action::use:
            return use(options, environment, strings, out, err);
        case ModelsOptions::Action::remove:
            return remove(options, environment, strings, out, err);
        case ModelsOptions::Action::checkUpdates:
            return checkForUpdates(options, environment, strings, out, err);
    }
    return exitUsage;
}

}  // namespace nuvrel::app
