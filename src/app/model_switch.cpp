#include "app/model_switch.h"

#include "base/cancellation.h"
#include "base/diagnostics.h"
#include "llm/llm_error.h"

namespace nuvrel::app {

void performModelSwitch(const std::string& fileName, LLMRuntime& runtime,
                        const ModelSwitchEnvironment& environment) {
    const auto path = environment.modelsDirectory / fileName;
    if (!environment.fileExists(path)) {
        environment.diagnostics.event("model switch to " + fileName +
                                      " aborted: file no longer found on disk");
        throw llm::LLMError::modelNotFound();
    }
    const auto previousPath = runtime.manager->modelPath();
    runtime.manager->stopAndWait();
    try {
        LLMRuntime candidate = environment.makeRuntime(path);
        candidate.manager->ensureRunning();
        runtime = std::move(candidate);
    } catch (const base::Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        const std::string previous = previousPath.filename().string();
        environment.diagnostics.event("model switch to " + fileName + " failed (" + error.what() +
                                      ") — restoring previous model " + previous);
        try {
            LLMRuntime restored = environment.makeRuntime(previousPath);
            restored.manager->ensureRunning();
            runtime = std::move(restored);
        } catch (const base::Cancelled&) {
            throw;
        } catch (const std::exception& restoreError) {
            environment.diagnostics.event("failed to restore previous model " + previous +
                                          " too: " + restoreError.what());
        }
        throw;
    }
}

}  // namespace nuvrel::app
