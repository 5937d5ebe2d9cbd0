#include "llm/llama_request_builder.h"

#include <charconv>
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "llm/llm_error.h"

namespace nuvrel::llm::LlamaRequestBuilder {

namespace {

// Shortest text that reads back as the same double, always marked as a floating value:
// "0.0", "0.1", "1e-07". NaN and infinities come out as words, which the final check of the
// body refuses.
std::string temperatureText(double value) {
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    std::string text(buffer, result.ptr);
    if (text.find_first_of(".en") == std::string::npos) text += ".0";
    return text;
}

}  // namespace

std::string jsonStringLiteral(std::string_view text) {
    try {
        // The writer's own spelling of a string; a lone string value is not a document for
        // every JSON writer, so it goes into an array and the brackets are cut off again.
        std::string array = nlohmann::json::array({std::string(text)}).dump();
        return array.substr(1, array.size() - 2);
    } catch (const nlohmann::json::exception&) {
        throw LLMError::invalidRequest("failed to encode string literal");
    }
}

std::string body(std::string_view system, std::string_view user, std::string_view jsonSchema,
                 std::string_view model, double temperature, int maxTokens,
                 std::string_view schemaName, std::optional<std::string_view> assistantPrefix) {
    if (!nlohmann::json::accept(jsonSchema)) {
        if (!base::text::isValidUtf8(jsonSchema)) {
            throw LLMError::invalidRequest("jsonSchema is not valid UTF-8");
        }
        std::string description = "unknown parse error";
        try {
            [[maybe_unused]] const auto parsed = nlohmann::json::parse(jsonSchema);
        } catch (const nlohmann::json::exception& error) {
            description = error.what();
        }
        throw LLMError::invalidRequest("jsonSchema is not valid JSON: " + description);
    }

    const std::string systemLiteral = jsonStringLiteral(system);
    const std::string userLiteral = jsonStringLiteral(user);
    const std::string modelLiteral = jsonStringLiteral(model);
    const std::string nameLiteral = jsonStringLiteral(schemaName);
    const std::optional<std::string> prefixLiteral =
        assistantPrefix ? std::optional(jsonStringLiteral(*assistantPrefix)) : std::nullopt;

    std::string out;
    out.reserve(256 + jsonSchema.size() + systemLiteral.size() + userLiteral.size() +
                (prefixLiteral ? prefixLiteral->size() : 0));
    out += "{\"model\":";
    out += modelLiteral;
    out += ",\"temperature\":";
    out += temperatureText(temperature);
    out += ",\"max_tokens\":";
    out += std::to_string(maxTokens);
    out += ",\"response_format\":{\"type\":\"json_schema\",\"json_schema\":{\"name\":";
    out += nameLiteral;
    out += ",\"schema\":";
    out += jsonSchema;
    out += "}},\"messages\":[{\"role\":\"system\",\"content\":";
    out += systemLiteral;
    out += "},{\"role\":\"user\",\"content\":";
    out += userLiteral;
    out += '}';
    if (prefixLiteral) {
        out += ",{\"role\":\"assistant\",\"content\":";
        out += *prefixLiteral;
        out += '}';
    }
    out += "]}";

    // A malformed body never leaves the process. Well-formed JSON is well-formed UTF-8 too:
    // both checks look at the bytes inside strings, and allow only ASCII outside them.
    if (!nlohmann::json::accept(out)) {
        throw LLMError::invalidRequest("failed to serialize request body");
    }
    return out;
}

}  // namespace nuvrel::llm::LlamaRequestBuilder
