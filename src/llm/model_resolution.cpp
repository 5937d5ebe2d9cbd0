#include "llm/model_resolution.h"

#include "base/diagnostics.h"
#include "base/files.h"
#include "base/paths.h"

namespace nuvrel::llm {

namespace {

void logSelectedModelMissing(const std::filesystem::path& path,
                             const base::Diagnostics& diagnostics) {
    diagnostics.event(
        "selected model not found at " + path.string() +
        " — falling back to default priority (nuvrel-nano → interim, always against the REAL "
        "modelsDirectory() regardless of the `modelsDirectory:` argument above — see this "
        "function's own doc comment)");
}

void logFallingBackToInterim(const std::filesystem::path& defaultPath,
                             const std::filesystem::path& interimPath,
                             const base::Diagnostics& diagnostics) {
    diagnostics.event("fine-tuned router model not found at " + defaultPath.string() +
                      " — falling back to interim model at " + interimPath.string());
}

}  // namespace

std::filesystem::path modelsDirectory() {
    return base::createdOnDemand(base::XdgPaths::fromEnvironment().modelsDirectory());
}

std::filesystem::path defaultModelPath() {
    return modelsDirectory() / defaultModelFileName;
}

std::filesystem::path interimModelPath() {
    return modelsDirectory() / interimModelFileName;
}

bool isCanonicalPromptRouter(std::string_view fileName) {
    return fileName == defaultModelFileName || fileName.starts_with("nuvrel-nano-router-") ||
           fileName.starts_with("kestrune-mini-router-");
}

bool isInterimModel(std::string_view fileName) {
    return !isCanonicalPromptRouter(fileName);
}

ResolvedModelPath resolveModelPath(const FileExistsFn& fileExists,
                                   const base::Diagnostics& diagnostics) {
    const std::filesystem::path directory = modelsDirectory();
    const std::filesystem::path defaultPath = directory / defaultModelFileName;
    if (fileExists(defaultPath)) return {defaultPath, false};
    // The interim path is returned even when it is missing: the manager's start reports
    // modelNotFound, which is where the user learns of it.
    const std::filesystem::path interimPath = directory / interimModelFileName;
    logFallingBackToInterim(defaultPath, interimPath, diagnostics);
    return {interimPath, true};
}

ResolvedModelPath resolveModelPath(const std::optional<std::string>& selectedFileName,
                                   const std::filesystem::path& modelsDirectory,
                                   const FileExistsFn& fileExists,
                                   const base::Diagnostics& diagnostics) {
    if (selectedFileName && !selectedFileName->empty()) {
        const std::filesystem::path selected = modelsDirectory / *selectedFileName;
        if (fileExists(selected)) return {selected, isInterimModel(*selectedFileName)};
        logSelectedModelMissing(selected, diagnostics);
    }
    return resolveModelPath(fileExists, diagnostics);
}

bool liveFileExists(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

}  // namespace nuvrel::llm
