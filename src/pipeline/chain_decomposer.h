#pragma once
// Splits a sentence that holds several requests into steps with the summary model, and throws
// the split away unless every step is provably the user's own words. Any failure gives
// nothing: the query then runs as one request, and no error reaches the user from here.

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/app_language.h"
#include "llm/llm_backend.h"

namespace nuvrel::pipeline::ChainDecomposer {

// The model's answer: {"steps": [...]}.
struct Response {
    std::vector<std::string> steps;
};

inline constexpr std::string_view jsonSchema =
    R"({"type":"object","properties":{"steps":{"type":"array","items":{"type":"string"}}},"required":["steps"],"additionalProperties":false})";

// A step that ends in a verb's linking form gets back its request form.
struct TrailingRepair {
    std::string_view suffix;
    std::string_view replacement;
};
inline constexpr std::array<TrailingRepair, 8> trailingConnectorRepairs = {{
    {"알려주고", "알려줘"},
    {"보내주고", "보내줘"},
    {"틀어주고", "틀어줘"},
    {"찾아주고", "찾아줘"},
    {"열어주고", "열어줘"},
    {"적어주고", "적어줘"},
    {"맞추고", "맞춰줘"},
    {"맞춰주고", "맞춰줘"},
}};

inline constexpr std::size_t minimumSteps = 2;
inline constexpr std::size_t maximumSteps = 5;

// The instruction for the summary model, in the interface language; the same content in all
// four, each asking for the same JSON form.
std::string_view systemPrompt(core::AppLanguage language);

// Passes the query through ChainGate first; a query that fails the gate or a missing
// `summarizer` gives nothing without a model call. Blocks on the caller's task for one model
// call. A cancelled task propagates base::Cancelled; every other failure gives nothing.
std::optional<std::vector<std::string>> decompose(
    std::string_view query, core::AppLanguage language,
    const std::shared_ptr<llm::LLMBackend>& summarizer);

}  // namespace nuvrel::pipeline::ChainDecomposer
