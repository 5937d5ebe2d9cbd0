#pragma once
// The model servers, made on the first sentence that needs a model: a calculator sentence
// never looks for a model file, nor writes a line about a missing one.

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/launch.h"
#include "llm/llm_backend.h"
#include "wayfen/embedding_provider.h"

namespace nuvrel::app {

class LazyLLMRuntime {
public:
    explicit LazyLLMRuntime(std::function<LLMRuntime()> make) : make_(std::move(make)) {}

    // The runtime, made by the first call on the caller's task; safe from any thread. A model
    // switch replaces its fields in place.
    LLMRuntime& get();
    bool isMade() const;
    // Stops the servers of a runtime that was made; nothing otherwise.
    void stopServers() const;

private:
    std::function<LLMRuntime()> make_;
    mutable std::mutex mutex_;
    std::optional<LLMRuntime> runtime_;
};

// The routing or summary backend of a lazy runtime, made at the first call.
class LazyRuntimeBackend : public llm::LLMBackend {
public:
    enum class Role { routing, summary };
    LazyRuntimeBackend(std::shared_ptr<LazyLLMRuntime> runtime, Role role)
        : runtime_(std::move(runtime)), role_(role) {}

    std::string complete(std::string_view system, std::string_view user,
                         std::string_view jsonSchema) override;
    std::string complete(std::string_view system, std::string_view user,
                         std::string_view jsonSchema,
                         std::optional<std::string_view> assistantPrefix) override;
    std::optional<std::string> modelFileName() const override;

private:
    llm::LLMBackend& target() const;
    std::shared_ptr<LazyLLMRuntime> runtime_;
    Role role_;
};

// The embedding model of a lazy runtime. Without one installed it fails, and the chunk
// selector ranks lexically, as it does with no provider.
class LazyEmbeddingProvider : public wayfen::EmbeddingProvider {
public:
    explicit LazyEmbeddingProvider(std::shared_ptr<LazyLLMRuntime> runtime)
        : runtime_(std::move(runtime)) {}
    std::vector<float> embed(const std::string& text, bool isQuery) const override;

private:
    std::shared_ptr<LazyLLMRuntime> runtime_;
};

}  // namespace nuvrel::app
