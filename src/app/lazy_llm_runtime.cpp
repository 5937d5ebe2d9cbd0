#include "app/lazy_llm_runtime.h"

#include "llm/llm_error.h"

namespace nuvrel::app {

LLMRuntime& LazyLLMRuntime::get() {
    const std::lock_guard lock(mutex_);
    if (!runtime_) runtime_ = make_();
    return *runtime_;
}

bool LazyLLMRuntime::isMade() const {
    const std::lock_guard lock(mutex_);
    return runtime_.has_value();
}

void LazyLLMRuntime::stopServers() const {
    const std::lock_guard lock(mutex_);
    if (runtime_) runtime_->stopServers();
}

llm::LLMBackend& LazyRuntimeBackend::target() const {
    LLMRuntime& runtime = runtime_->get();
    const auto& backend = role_ == Role::routing ? runtime.routingBackend : runtime.summaryBackend;
    if (!backend) throw llm::LLMError::modelNotFound();
    return *backend;
}

std::string LazyRuntimeBackend::complete(std::string_view system, std::string_view user,
                                         std::string_view jsonSchema) {
    return target().complete(system, user, jsonSchema);
}

std::string LazyRuntimeBackend::complete(std::string_view system, std::string_view user,
                                         std::string_view jsonSchema,
                                         std::optional<std::string_view> assistantPrefix) {
    return target().complete(system, user, jsonSchema, assistantPrefix);
}

std::optional<std::string> LazyRuntimeBackend::modelFileName() const {
    return target().modelFileName();
}

std::vector<float> LazyEmbeddingProvider::embed(const std::string& text, bool isQuery) const {
    const auto& backend = runtime_->get().embeddingBackend;
    if (!backend) throw llm::LLMError::modelNotFound();
    return backend->embed(text, isQuery);
}

}  // namespace nuvrel::app
