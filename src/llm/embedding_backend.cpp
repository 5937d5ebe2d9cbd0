#include "llm/embedding_backend.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "llm/llm_error.h"

namespace nuvrel::llm {

namespace LlamaEmbeddingResponseParser {

std::vector<float> extractEmbedding(std::string_view body) {
    std::vector<std::vector<float>> items;
    try {
        const auto json = nlohmann::json::parse(body);
        for (const auto& item : json.at("data"))
            items.push_back(item.at("embedding").get<std::vector<float>>());
    } catch (const nlohmann::json::exception& error) {
        throw LLMError::invalidResponse(std::string("failed to decode embeddings response: ") +
                                        error.what());
    }
    if (items.empty() || items.front().empty()) throw LLMError::emptyResponse();
    return std::move(items.front());
}

}  // namespace LlamaEmbeddingResponseParser

LlamaEmbeddingBackend::LlamaEmbeddingBackend(base::Url baseURL,
                                             std::shared_ptr<base::HttpSession> session,
                                             double requestTimeoutInterval)
    : baseURL(std::move(baseURL)),
      session(std::move(session)),
      requestTimeoutInterval(requestTimeoutInterval) {}

std::vector<float> LlamaEmbeddingBackend::embed(const std::string& text, bool isQuery) {
    base::HttpRequest request;
    request.method = "POST";
    request.url = baseURL.appendingPath("v1").appendingPath("embeddings");
    request.headers = {{"Content-Type", "application/json"}};
    request.body = nlohmann::json{
        {"input", (isQuery ? "query: " : "document: ") + text},
        {"model",
         modelName}}.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    request.timeout = std::chrono::milliseconds(std::int64_t(requestTimeoutInterval * 1000));
    const base::HttpResponse response = session->send(request);
    if (response.status < 200 || response.status > 299) throw LLMError::http(response.status);
    return LlamaEmbeddingResponseParser::extractEmbedding(response.body);
}

EmbeddingModelBackend::EmbeddingModelBackend(std::shared_ptr<EmbeddingServerManaging> manager,
                                             std::shared_ptr<EmbeddingBackend> backend,
                                             double idleTimeout, base::SleepFn sleepFn)
    : backend_(std::move(backend)), idle_(std::move(manager), idleTimeout, std::move(sleepFn)) {}

std::vector<float> EmbeddingModelBackend::embed(const std::string& text, bool isQuery) {
    return idle_.withServer([&] { return backend_->embed(text, isQuery); });
}

namespace EmbeddingModelPlanner {

std::filesystem::path embeddingModelPath(const std::filesystem::path& directory) {
    return directory / "LFM2.5-Embedding-350M-Q8_0.gguf";
}

}  // namespace EmbeddingModelPlanner

}  // namespace nuvrel::llm
