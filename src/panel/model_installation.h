#pragma once
// A curated model installed from the settings window: the download runs on a task of its own
// and publishes to AppState on the main queue (installing flags, progress from 0 to 1, the
// refreshed list of files, or the failure's message). The file in use changes only when no
// model was installed before, as `nuvrel models install` does.
//
// Threading: start and refreshInstalled on the main thread. Destroying the value cancels a
// download in flight (its staging file stays for a resume) and waits for it.

#include <filesystem>
#include <memory>
#include <optional>

#include "app/app_state.h"
#include "app/network_activity_log.h"
#include "base/diagnostics.h"
#include "base/main_queue.h"
#include "base/task.h"
#include "llm/curated_models.h"
#include "llm/model_downloader.h"

namespace nuvrel::panel {

class ModelInstallation {
public:
    struct Environment {
        std::filesystem::path modelsDirectory;
        std::shared_ptr<app::NetworkActivityLog> networkLog;  // may be null
        llm::ModelDownloader::DownloadSettings download;
        base::Diagnostics diagnostics{};
    };

    ModelInstallation(std::shared_ptr<app::AppState> state, base::MainQueue& queue,
                      Environment environment);
    ~ModelInstallation();
    ModelInstallation(const ModelInstallation&) = delete;
    ModelInstallation& operator=(const ModelInstallation&) = delete;

    // False, and nothing started, while another install runs.
    bool start(const llm::ModelCatalog::CuratedModel& model);
    // The selectable files of the models folder, into AppState.
    void refreshInstalled();

private:
    std::shared_ptr<app::AppState> state_;
    base::MainQueue& queue_;
    const Environment environment_;
    std::optional<base::Task<void>> task_;
};

}  // namespace nuvrel::panel
