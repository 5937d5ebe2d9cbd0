#include "llm/json_object_extraction.h"

#include <nlohmann/json.hpp>

#include "base/text.h"

namespace nuvrel::llm {

std::optional<std::string> extractJSONObject(std::string_view text) {
    // Byte-wise is exact: '{', '}', '"' and '\\' are ASCII and never occur inside a UTF-8
    // multibyte sequence, so ill-formed or foreign text cannot fake or hide one.
    const std::size_t start = text.find('{');
    if (start == std::string_view::npos) return std::nullopt;

    std::size_t depth = 0;
    bool inString = false;
    bool escaped = false;
    for (std::size_t i = start; i < text.size(); ++i) {
        const char c = text[i];
        if (inString) {
            if (escaped) {
                escaped = false;
            } else if (c == '\\') {
                escaped = true;
            } else if (c == '"') {
                inString = false;
            }
        } else if (c == '"') {
            inString = true;
        } else if (c == '{') {
            ++depth;
        } else if (c == '}') {
            if (--depth == 0) return std::string(text.substr(start, i - start + 1));
        }
    }
    return std::nullopt;
}

std::optional<std::string> trimmedStringField(const std::string& objectText, std::string_view key) {
    const auto json = nlohmann::json::parse(objectText, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    const auto field = json.find(key);
    if (field == json.end() || !field->is_string()) return std::nullopt;
    std::string value = base::text::trim(field->get_ref<const std::string&>());
    if (value.empty()) return std::nullopt;
    return value;
}

}  // namespace nuvrel::llm
