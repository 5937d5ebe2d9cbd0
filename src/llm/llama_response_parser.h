#pragma once
// The reply of llama-server's chat completion, reduced to the one thing the program uses: the
// content of the first choice's message.

#include <string>
#include <string_view>

namespace nuvrel::llm::LlamaResponseParser {

// The content of the first choice, unparsed; white space alone counts as content. Every
// choice must carry a message with a string content; other keys are ignored.
// Throws LLMError::invalidResponse("failed to decode chat completion response: ...") when the
// reply does not have that shape (a null content included), and LLMError::emptyResponse when
// there is no choice or the first content is empty.
std::string extractContent(std::string_view bytes);

}  // namespace nuvrel::llm::LlamaResponseParser
