#pragma once
// The summary and embedding models beside the router: a dedicated summary server when a
// summary model file of its own is installed (else the router's server serves), and an
// embedding server when the embedding model is installed.

#include <filesystem>
#include <memory>
#include <optional>

#include "base/diagnostics.h"
#include "base/http.h"
#include "llm/embedding_backend.h"
#include "llm/llama_server_manager.h"
#include "llm/llm_backend.h"
#include "wayfen/embedding_provider.h"

namespace nuvrel::app {

struct SummaryBackendChoice {
    std::shared_ptr<llm::LLMBackend> backend;
    // The dedicated server on 8766, if any.
    std::shared_ptr<llm::LlamaServerManager> manager;
};

// Follows SummaryModelPlanner::decide, writing which way it went to `diagnostics`. The reuse
// cases talk to the router's server at `routerURL`.
SummaryBackendChoice resolveSummaryBackend(std::shared_ptr<llm::LlamaServerManager> routerManager,
                                           const base::Url& routerURL,
                                           const std::filesystem::path& modelsDirectory,
                                           std::optional<double> idleStopInterval,
                                           std::shared_ptr<base::HttpSession> session,
                                           const base::Diagnostics& diagnostics);

struct EmbeddingBackendChoice {
    std::shared_ptr<llm::EmbeddingBackend> backend;
    std::shared_ptr<llm::LlamaServerManager> manager;
};

// The server on 8767 when the model file is installed; else nothing, and one line saying
// that passages are ranked lexically.
EmbeddingBackendChoice makeEmbeddingBackend(const std::filesystem::path& modelsDirectory,
                                            std::shared_ptr<base::HttpSession> session,
                                            const base::Diagnostics& diagnostics);

// An embedding backend as the chunk selector asks for one.
class EmbeddingBackendAdapter : public wayfen::EmbeddingProvider {
public:
    explicit EmbeddingBackendAdapter(std::shared_ptr<llm::EmbeddingBackend> backend)
        : backend_(std::move(backend)) {}
    std::vector<float> embed(const std::string& text, bool isQuery) const override {
        return backend_->embed(text, isQuery);
    }

private:
    std::shared_ptr<llm::EmbeddingBackend> backend_;
};

}  // namespace nuvrel::app
