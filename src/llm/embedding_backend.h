#pragma once
// The embedding model: a llama-server in embedding mode on port 8767, started on the first
// call and stopped after three idle minutes, ranking passages for web answers.

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/http.h"
#include "base/url.h"
#include "llm/idle_stop_timer.h"
#include "llm/llama_server_manager.h"

namespace nuvrel::llm {

class EmbeddingBackend {
public:
    virtual ~EmbeddingBackend() = default;
    // One vector for the text; `isQuery` tells a query from a passage. Blocks on the caller's
    // task; throws LLMError, base::HttpError or base::Cancelled.
    virtual std::vector<float> embed(const std::string& text, bool isQuery) = 0;
};

namespace LlamaEmbeddingResponseParser {
// The first item's vector of an OpenAI-style embeddings reply. Throws LLMError:
// invalidResponse when the body does not decode, emptyResponse without a non-empty vector.
std::vector<float> extractEmbedding(std::string_view body);
}  // namespace LlamaEmbeddingResponseParser

// POST <baseURL>/v1/embeddings, with "query: " or "document: " before the text.
class LlamaEmbeddingBackend : public EmbeddingBackend {
public:
    static constexpr std::string_view modelName = "lfm2.5-embedding";

    LlamaEmbeddingBackend(base::Url baseURL, std::shared_ptr<base::HttpSession> session,
                          double requestTimeoutInterval = 10);
    std::vector<float> embed(const std::string& text, bool isQuery) override;

    base::Url baseURL;
    std::shared_ptr<base::HttpSession> session;
    double requestTimeoutInterval;
};

// Keeps the embedding server up only while it is used.
class EmbeddingModelBackend : public EmbeddingBackend {
public:
    EmbeddingModelBackend(std::shared_ptr<EmbeddingServerManaging> manager,
                          std::shared_ptr<EmbeddingBackend> backend, double idleTimeout = 180,
                          base::SleepFn sleepFn = base::liveSleep);
    std::vector<float> embed(const std::string& text, bool isQuery) override;

private:
    std::shared_ptr<EmbeddingBackend> backend_;
    IdleStopTimer idle_;
};

namespace EmbeddingModelPlanner {
inline constexpr int dedicatedPort = embeddingServerPort;
inline constexpr int contextSize = 2048;
// "LFM2.5-Embedding-350M-Q8_0.gguf" in the directory.
std::filesystem::path embeddingModelPath(const std::filesystem::path& directory);
}  // namespace EmbeddingModelPlanner

}  // namespace nuvrel::llm
