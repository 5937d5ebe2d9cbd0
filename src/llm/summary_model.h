#pragma once
// The summary model: whether a second server is worth running at all, and the backend of a
// dedicated one, which starts on the first call and stops again after its idle time.

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "llm/idle_stop_timer.h"
#include "llm/llama_server_manager.h"
#include "llm/llm_backend.h"

namespace nuvrel::llm {

// LlamaServerManager as ServerManaging.
class ManagerHandle : public ServerManaging {
public:
    explicit ManagerHandle(std::shared_ptr<LlamaServerManager> manager)
        : manager_(std::move(manager)) {}
    void ensureRunning() override { manager_->ensureRunning(); }
    void stop() override { manager_->stop(); }

private:
    std::shared_ptr<LlamaServerManager> manager_;
};

struct SummaryModelDecision {
    struct Dedicated {
        std::filesystem::path path;
        bool operator==(const Dedicated&) const = default;
    };
    struct ReuseRouterNoDedicatedModel {
        bool operator==(const ReuseRouterNoDedicatedModel&) const = default;
    };
    struct ReuseRouterSameFile {
        bool operator==(const ReuseRouterSameFile&) const = default;
    };
    std::variant<Dedicated, ReuseRouterNoDedicatedModel, ReuseRouterSameFile> value;
    bool operator==(const SummaryModelDecision&) const = default;
};

namespace SummaryModelPlanner {

inline constexpr int dedicatedContextSize = 4096;

// In priority order: "LFM2.5-2.6B-Q4_K_M.gguf" and "Qwen3-1.7B-Q4_K_M.gguf" in `directory`,
// then the interim "qwen2.5-1.5b-instruct-q4_k_m.gguf" in `interimDirectory`.
std::vector<std::filesystem::path> summaryModelCandidatePaths(
    const std::filesystem::path& directory, const std::filesystem::path& interimDirectory);

// A mini router serves as the summary model too; otherwise the first candidate on disk,
// unless it is the router's own file; none on disk reuses the router. Pure.
SummaryModelDecision decide(std::string_view routerModelFileName,
                            const std::vector<std::filesystem::path>& candidates,
                            const std::function<bool(const std::filesystem::path&)>& fileExists);

}  // namespace SummaryModelPlanner

// A backend on a dedicated server that runs only between a call and the end of its idle time.
// Threading: calls may overlap; the server's one slot serialises them.
class SummaryModelBackend : public LLMBackend {
public:
    SummaryModelBackend(std::shared_ptr<SummaryServerManaging> manager,
                        std::shared_ptr<LLMBackend> backend, std::optional<double> idleStopInterval,
                        std::optional<std::string> modelFileName,
                        base::SleepFn sleepFn = base::liveSleep);

    using LLMBackend::complete;
    std::string complete(std::string_view system, std::string_view user,
                         std::string_view jsonSchema) override;
    std::string complete(std::string_view system, std::string_view user,
                         std::string_view jsonSchema,
                         std::optional<std::string_view> assistantPrefix) override;
    std::optional<std::string> modelFileName() const override { return modelFileName_; }

private:
    std::shared_ptr<LLMBackend> backend_;
    std::optional<std::string> modelFileName_;
    IdleStopTimer idle_;
};

}  // namespace nuvrel::llm
