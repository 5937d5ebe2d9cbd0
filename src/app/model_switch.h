#pragma once
// Switching the router to another model file as one transaction: the running server stops,
// the new one must come up healthy, and if it does not the previous model is started again
// and the first error passes on, so the caller keeps the previous name.
//
// Blocking: runs on the caller's task, for as long as the servers take to stop and start.

#include <filesystem>
#include <functional>
#include <string>

#include "app/launch.h"
#include "base/diagnostics.h"

namespace nuvrel::app {

struct ModelSwitchEnvironment {
    std::filesystem::path modelsDirectory;
    std::function<bool(const std::filesystem::path&)> fileExists;
    // A runtime for a model file, its server not yet started.
    std::function<LLMRuntime(const std::filesystem::path& modelPath)> makeRuntime;
    base::Diagnostics diagnostics{};
};

// Replaces `runtime` with one for `fileName` whose server answers. Throws LLMError
// (modelNotFound when the file has gone, leaving the running server alone) or the new
// server's failure after the rollback.
void performModelSwitch(const std::string& fileName, LLMRuntime& runtime,
                        const ModelSwitchEnvironment& environment);

}  // namespace nuvrel::app
