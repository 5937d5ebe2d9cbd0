#pragma once
// Translation by the local summary model: a prompt that names the target language and gives
// two worked examples. There is no translation engine beside the model.
//
// Threading: stateless; execute blocks on the caller's task for one model call.

#include <optional>
#include <string>
#include <string_view>

#include "core/app_language.h"
#include "core/capability_result.h"
#include "llm/llm_backend.h"

namespace nuvrel::answers {

struct TranslateCandidate {
    std::string text{};
    // "en", "ko", "ja" or "zh".
    std::string targetLanguage{};
    bool operator==(const TranslateCandidate&) const = default;
};

namespace TranslateCapability {

inline constexpr std::string_view schema =
    R"({"type":"object","properties":{"translation":{"type":"string"}},"required":["translation"],"additionalProperties":false})";

// "English", "Korean", "Japanese", "Chinese"; any other code is its own name.
std::string fullLanguageName(std::string_view code);
// The system prompt for the target language.
std::string systemPrompt(std::string_view targetLanguage);

// Nothing without a translator, so that the query goes on. A failed call, a reply without a
// non-blank "translation" is a UserFacingError with translateFailedMessage; a stop request
// is Cancelled. The result names the model when the backend knows its file.
std::optional<core::CapabilityResult> execute(const TranslateCandidate& candidate,
                                              core::AppLanguage language,
                                              llm::LLMBackend* translator);

}  // namespace TranslateCapability

}  // namespace nuvrel::answers
