#include "panel/model_installation.h"

#include "app/models_command.h"
#include "app/settings_keys.h"
#include "base/cancellation.h"
#include "base/url.h"
#include "llm/model_catalog.h"
#include "llm/model_download_error.h"
#include "llm/model_file_manager.h"

namespace nuvrel::panel {

namespace Downloader = llm::ModelDownloader;

ModelInstallation::ModelInstallation(std::shared_ptr<app::AppState> state, base::MainQueue& queue,
                                     Environment environment)
    : state_(std::move(state)), queue_(queue), environment_(std::move(environment)) {}

ModelInstallation::~ModelInstallation() {
    if (task_) task_->cancel();
}

void ModelInstallation::refreshInstalled() {
    state_->setAvailableModelFileNames(llm::ModelCatalog::selectableModelFileNames(
        environment_.modelsDirectory, llm::liveListContents));
}

bool ModelInstallation::start(const llm::ModelCatalog::CuratedModel& model) {
    if (state_->isInstallingModel()) return false;
    state_->setModelInstallErrorMessage(std::nullopt);
    state_->setInstallingModel(true);
    state_->setInstallingCuratedModelID(model.id);
    state_->setInstallingCuratedModelProgress(0.0);
    const auto defaults = state_->userDefaults();
    const auto source = llm::ModelCatalog::applyingMirror(
        *base::Url::parse(model.sourceURL), defaults->string(app::settingsKey::modelMirror));
    const auto strings = &core::LocalizedStrings::strings(state_->lang());
    // The previous task has ended: isInstallingModel was cleared by its last job.
    task_.reset();
    task_.emplace([this, weak = std::weak_ptr<app::AppState>(state_), source, model, defaults,
                   strings] {
        const auto publish = [queue = &queue_, weak](std::function<void(app::AppState&)> change) {
            queue->post([weak, change = std::move(change)] {
                if (auto state = weak.lock()) change(*state);
            });
        };
        std::optional<std::string> failure;
        try {
            Downloader::install(
                source, environment_.modelsDirectory / model.fileName, llm::liveModelFileManager(),
                [&](const Downloader::Progress& progress) {
                    publish([fraction = progress.fraction()](app::AppState& state) {
                        state.setInstallingCuratedModelProgress(fraction);
                    });
                },
                Downloader::liveDownload(environment_.download),
                [this](std::string_view host, std::string_view path) {
                    if (environment_.networkLog)
                        environment_.networkLog->record(
                            std::string(host), base::percentDecode(path),
                            app::NetworkActivityLog::Purpose::modelDownload);
                },
                model.sha256);
            if (!app::modelFileInUse(*defaults, environment_.modelsDirectory))
                defaults->set(app::settingsKey::modelFile, model.fileName);
        } catch (const llm::ModelDownloadError& error) {
            environment_.diagnostics.event("model install of " + model.id +
                                           " failed: " + error.description());
            failure = error.userMessage(*strings);
        } catch (...) {
            base::rethrowIfCancelled();
            failure = std::string(strings->genericErrorMessage);
        }
        auto names = llm::ModelCatalog::selectableModelFileNames(environment_.modelsDirectory,
                                                                 llm::liveListContents);
        publish([failure, names = std::move(names)](app::AppState& state) {
            state.setInstallingModel(false);
            state.setInstallingCuratedModelID(std::nullopt);
            state.setInstallingCuratedModelProgress(std::nullopt);
            if (failure) state.setModelInstallErrorMessage(failure);
            state.setAvailableModelFileNames(names);
        });
    });
    return true;
}

}  // namespace nuvrel::panel
