#include "llm/llama_response_parser.h"

#include <nlohmann/json.hpp>

#include "llm/llm_error.h"

namespace nuvrel::llm::LlamaResponseParser {

namespace {

using Json = nlohmann::json;

[[noreturn]] void decodingFailure(const std::string& description) {
    throw LLMError::invalidResponse("failed to decode chat completion response: " + description);
}

// The parser's message without its "last read" excerpt: the reply is the model's text, which
// may echo the user's words, and this message ends up in diagnostic lines.
std::string withoutExcerpt(std::string message) {
    const std::string marker = "; last read: '";
    const auto start = message.find(marker);
    if (start == std::string::npos) return message;
    const std::string expected = "; expected ";
    const auto tail = message.find(expected, start + marker.size());
    return message.substr(0, start) + (tail == std::string::npos ? "" : message.substr(tail));
}

const char* typeName(const Json& value) {
    return value.is_null() ? "null" : value.type_name();
}

const Json& member(const Json& object, const char* key, const std::string& path) {
    if (!object.is_object()) {
        decodingFailure(path + " is " + typeName(object) + ", expected an object");
    }
    const auto found = object.find(key);
    if (found == object.end()) decodingFailure("no key \"" + std::string(key) + "\" in " + path);
    return *found;
}

}  // namespace

std::string extractContent(std::string_view bytes) {
    Json reply;
    try {
        reply = Json::parse(bytes);
    } catch (const Json::exception& error) {
        decodingFailure(withoutExcerpt(error.what()));
    }

    const Json& choices = member(reply, "choices", "the reply");
    if (!choices.is_array()) {
        decodingFailure(std::string("choices is ") + typeName(choices) + ", expected an array");
    }
    // Every choice must decode, not only the first one that is used.
    for (std::size_t index = 0; index < choices.size(); ++index) {
        const std::string path = "choices[" + std::to_string(index) + "]";
        const Json& message = member(choices[index], "message", path);
        const Json& content = member(message, "content", path + ".message");
        if (!content.is_string()) {
            decodingFailure(path + ".message.content is " + typeName(content) +
                            ", expected a string");
        }
    }
    if (choices.empty()) throw LLMError::emptyResponse();
    std::string content = choices[0]["message"]["content"].get<std::string>();
    if (content.empty()) throw LLMError::emptyResponse();
    return content;
}

}  // namespace nuvrel::llm::LlamaResponseParser
