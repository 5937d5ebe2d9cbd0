#pragma once
// The texts that ask the summary model for a web answer: the system prompt, the reply's schema
// and the assistant prefix that starts the reply, so that it cannot open by echoing titles.

#include <string_view>

#include "core/app_language.h"

namespace nuvrel::answers::WebSearchPrompts {

// The only shape the model may answer in: one object with one text field "summary".
inline constexpr std::string_view summarySchema =
    R"({"type":"object","properties":{"summary":{"type":"string"}},"required":["summary"],"additionalProperties":false})";

// Asks for 1 to 3 sentences in the language, drawn only from the given results.
std::string_view systemPrompt(core::AppLanguage language);

// The opening of the reply, an unclosed JSON text of the "summary" field.
std::string_view assistantPrefix(core::AppLanguage language);

}  // namespace nuvrel::answers::WebSearchPrompts
