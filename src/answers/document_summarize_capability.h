#pragma once
// Summarises a named file in 3 to 5 sentences with the local summary model. Finding the file
// and reading its text are injected, so that the logic runs without a desktop.
//
// Threading: stateless; execute blocks on the caller's task (a file search, a read, one model
// call).

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "core/app_language.h"
#include "core/capability_result.h"
#include "core/result_records.h"
#include "llm/llm_backend.h"

namespace nuvrel::answers::DocumentSummarizeCapability {

using FindFile = std::function<std::optional<core::FileHit>(std::string_view name)>;
// The text of the file at a path; nothing (or a throw) when it cannot be read.
using ExtractText = std::function<std::optional<std::string>(const std::string& path)>;

// Only this many characters of the document reach the model.
inline constexpr std::size_t textLimit = 4000;

inline constexpr std::string_view schema =
    R"({"type":"object","properties":{"summary":{"type":"string"}},"required":["summary"],"additionalProperties":false})";

std::string_view systemPrompt(core::AppLanguage language);

// Nothing without a summariser or without a file of that name, so that the query goes on.
// A file without readable text is a UserFacingError with documentSummarizeUnreadableMessage;
// a failed model call or a reply without a non-blank "summary", documentSummarizeFailedMessage.
std::optional<core::CapabilityResult> execute(std::string_view candidateName,
                                              core::AppLanguage language,
                                              llm::LLMBackend* summarizer, const FindFile& findFile,
                                              const ExtractText& extractText);

}  // namespace nuvrel::answers::DocumentSummarizeCapability
