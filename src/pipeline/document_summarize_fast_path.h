#pragma once
// Recognises a request to summarise a named file: "summarize report.pdf", "보고서.pdf 요약해줘".
//
// Pure; safe from any thread.

#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::pipeline::DocumentSummarizeFastPath {

// The file name as the user typed it; a Korean name loses a trailing object particle.
std::optional<std::string> match(std::string_view text);

}  // namespace nuvrel::pipeline::DocumentSummarizeFastPath
