#include "app/model_backends.h"

#include <string>
#include <variant>

#include "base/diagnostics.h"
#include "llm/llama_server_backend.h"
#include "llm/managed_llama_backend.h"
#include "llm/model_resolution.h"
#include "llm/summary_model.h"
#include "platform/live_llm.h"

namespace nuvrel::app {

SummaryBackendChoice resolveSummaryBackend(std::shared_ptr<llm::LlamaServerManager> routerManager,
                                           const base::Url& routerURL,
                                           const std::filesystem::path& modelsDirectory,
                                           std::optional<double> idleStopInterval,
                                           std::shared_ptr<base::HttpSession> session,
                                           const base::Diagnostics& diagnostics) {
    namespace planner = llm::SummaryModelPlanner;
    const std::string routerFile = routerManager->modelPath().filename().string();
    const auto candidates =
        planner::summaryModelCandidatePaths(modelsDirectory, llm::modelsDirectory());
    const llm::SummaryModelDecision decision =
        planner::decide(routerFile, candidates, llm::liveFileExists);

    if (const auto* dedicated =
            std::get_if<llm::SummaryModelDecision::Dedicated>(&decision.value)) {
        auto manager = std::make_shared<llm::LlamaServerManager>(
            dedicated->path, llm::summaryServerPort, session, llm::LlamaServerMode::chat,
            planner::dedicatedContextSize, platform::liveLlamaServerEnvironment(diagnostics));
        auto backend = std::make_shared<llm::LlamaServerBackend>(
            llm::LlamaServerBackend::summaryDedicated(session));
        return {std::make_shared<llm::SummaryModelBackend>(
                    std::make_shared<llm::ManagerHandle>(manager), std::move(backend),
                    idleStopInterval, dedicated->path.filename().string()),
                manager};
    }
    if (std::holds_alternative<llm::SummaryModelDecision::ReuseRouterSameFile>(decision.value)) {
        diagnostics.event("summary reuses the router's own backend instead of a second spawn — " +
                          routerFile +
                          " (겸직 라우터이거나 전용 요약 파일과 동일, 이중 로드 방지)");
    } else {
        std::string checked;
        for (const auto& candidate : candidates)
            checked += (checked.empty() ? "" : ", ") + candidate.string();
        diagnostics.event(
            "no dedicated summary model file installed (checked, in priority "
            "order: " +
            checked +
            ") — web.search summarization reuses the router's own backend "
            "(pre-B2 behavior)");
    }
    auto shared = llm::LlamaServerBackend::summarySharingRouter(session);
    shared.baseURL = routerURL;
    return {std::make_shared<llm::ManagedLlamaBackend>(std::move(routerManager), std::move(shared),
                                                       "summary", diagnostics),
            nullptr};
}

EmbeddingBackendChoice makeEmbeddingBackend(const std::filesystem::path& modelsDirectory,
                                            std::shared_ptr<base::HttpSession> session,
                                            const base::Diagnostics& diagnostics) {
    namespace planner = llm::EmbeddingModelPlanner;
    const std::filesystem::path path = planner::embeddingModelPath(modelsDirectory);
    if (!llm::liveFileExists(path)) {
        diagnostics.event("no embedding model file installed at " + path.string() +
                          " — ChunkSelector uses the lexical scorer only (pre-Task-12 "
                          "behavior)");
        return {};
    }
    auto manager = std::make_shared<llm::LlamaServerManager>(
        path, planner::dedicatedPort, session, llm::LlamaServerMode::embedding,
        planner::contextSize, platform::liveLlamaServerEnvironment(diagnostics));
    auto client = std::make_shared<llm::LlamaEmbeddingBackend>(
        *base::Url::parse("http://127.0.0.1:" + std::to_string(planner::dedicatedPort)), session);
    return {std::make_shared<llm::EmbeddingModelBackend>(
                std::make_shared<llm::ManagerHandle>(manager), std::move(client)),
            manager};
}

}  // namespace nuvrel::app
