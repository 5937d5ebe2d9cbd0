#pragma once
// The body of a chat-completion request to llama-server, written by hand so that the key
// order is fixed and the caller's schema reaches the server byte for byte.

#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::llm::LlamaRequestBuilder {

// The text as one JSON string literal, quotes included, as the JSON writer spells it.
// Throws LLMError::invalidRequest("failed to encode string literal") for ill-formed UTF-8.
std::string jsonStringLiteral(std::string_view text);

// {"model":..,"temperature":..,"max_tokens":..,"response_format":{..},"messages":[..]} with
// no white space. The messages are system, user and, when `assistantPrefix` is present (even
// empty), an assistant turn holding it. `jsonSchema` must be well-formed UTF-8 and JSON; it is
// checked, never rewritten. Throws LLMError::invalidRequest.
std::string body(std::string_view system, std::string_view user, std::string_view jsonSchema,
                 std::string_view model, double temperature, int maxTokens,
                 std::string_view schemaName, std::optional<std::string_view> assistantPrefix);

}  // namespace nuvrel::llm::LlamaRequestBuilder
