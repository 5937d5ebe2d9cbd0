#include "wayfen/json_reply.h"

#include "base/text.h"

namespace wayfen::JsonReply {

nlohmann::json parseObject(std::string_view body) {
    // No exceptions from the parser: a syntax error, ill-formed UTF-8 included, is discarded.
    nlohmann::json value = nlohmann::json::parse(body, nullptr, false);
    if (value.is_discarded() || !value.is_object()) throw Undecodable();
    return value;
}

const nlohmann::json* member(const nlohmann::json& object, std::string_view key) {
    if (!object.is_object()) throw Undecodable();
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return nullptr;
    return &*found;
}

std::optional<std::string> text(const nlohmann::json& object, std::string_view key) {
    const nlohmann::json* value = member(object, key);
    if (value == nullptr) return std::nullopt;
    if (!value->is_string()) throw Undecodable();
    return value->get<std::string>();
}

const nlohmann::json* object(const nlohmann::json& object, std::string_view key) {
    const nlohmann::json* value = member(object, key);
    if (value != nullptr && !value->is_object()) throw Undecodable();
    return value;
}

const nlohmann::json& list(const nlohmann::json& object, std::string_view key) {
    static const nlohmann::json empty = nlohmann::json::array();
    const nlohmann::json* value = member(object, key);
    if (value == nullptr) return empty;
    if (!value->is_array()) throw Undecodable();
    return *value;
}

std::optional<SearXNGResultItem> resultItem(const std::optional<std::string>& title,
                                            const std::optional<std::string>& url,
                                            const std::optional<std::string>& snippet) {
    if (!title || !url || url->empty()) return std::nullopt;
    std::string trimmedTitle = nuvrel::base::text::trim(*title);
    if (trimmedTitle.empty()) return std::nullopt;
    return SearXNGResultItem{std::move(trimmedTitle), *url,
                             snippet ? nuvrel::base::text::trim(*snippet) : std::string()};
}

}  // namespace wayfen::JsonReply
