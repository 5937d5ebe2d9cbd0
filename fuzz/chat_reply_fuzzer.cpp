// The chat completion reply parser: content, or LLMError of the two kinds it may throw, and
// nothing else; content is what the first choice carries.

#include <nlohmann/json.hpp>

#include "fuzz_support.h"
#include "llm/llama_response_parser.h"
#include "llm/llm_error.h"

using namespace nuvrel;
using llm::LLMError;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = fuzz::text(data, size);
    try {
        const std::string content = llm::LlamaResponseParser::extractContent(bytes);
        FUZZ_CHECK(!content.empty());
        const auto reply = nlohmann::json::parse(bytes);
        FUZZ_CHECK(reply.at("choices").at(0).at("message").at("content") == content);
    } catch (const LLMError& error) {
        FUZZ_CHECK(error.kind() == LLMError::Kind::invalidResponse ||
                   error.kind() == LLMError::Kind::emptyResponse);
    }
    return 0;
}
