#include "llm/summary_model.h"

#include <utility>

namespace nuvrel::llm {

namespace SummaryModelPlanner {

std::vector<std::filesystem::path> summaryModelCandidatePaths(
    const std::filesystem::path& directory, const std::filesystem::path& interimDirectory) {
    return {directory / "LFM2.5-2.6B-Q4_K_M.gguf", directory / "Qwen3-1.7B-Q4_K_M.gguf",
            interimDirectory / "qwen2.5-1.5b-instruct-q4_k_m.gguf"};
}

SummaryModelDecision decide(std::string_view routerModelFileName,
                            const std::vector<std::filesystem::path>& candidates,
                            const std::function<bool(const std::filesystem::path&)>& fileExists) {
    if (routerModelFileName.starts_with("kestrune-mini-router-"))
        return {SummaryModelDecision::ReuseRouterSameFile{}};
    for (const auto& candidate : candidates) {
        if (!fileExists(candidate)) continue;
        // Loading one file twice gains nothing.
        if (candidate.filename() == routerModelFileName)
            return {SummaryModelDecision::ReuseRouterSameFile{}};
        return {SummaryModelDecision::Dedicated{candidate}};
    }
    return {SummaryModelDecision::ReuseRouterNoDedicatedModel{}};
}

}  // namespace SummaryModelPlanner

SummaryModelBackend::SummaryModelBackend(std::shared_ptr<SummaryServerManaging> manager,
                                         std::shared_ptr<LLMBackend> backend,
                                         std::optional<double> idleStopInterval,
                                         std::optional<std::string> modelFileName,
                                         base::SleepFn sleepFn)
    : backend_(std::move(backend)),
      modelFileName_(std::move(modelFileName)),
      idle_(std::move(manager), idleStopInterval, std::move(sleepFn)) {}

std::string SummaryModelBackend::complete(std::string_view system, std::string_view user,
                                          std::string_view jsonSchema) {
    return idle_.withServer([&] { return backend_->complete(system, user, jsonSchema); });
}

std::string SummaryModelBackend::complete(std::string_view system, std::string_view user,
                                          std::string_view jsonSchema,
                                          std::optional<std::string_view> assistantPrefix) {
    return idle_.withServer(
        [&] { return backend_->complete(system, user, jsonSchema, assistantPrefix); });
}

}  // namespace nuvrel::llm
