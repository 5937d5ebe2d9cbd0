#pragma once
// Reading the JSON replies of search services the tolerant way: fields may be absent or null
// and unknown ones are ignored, but a field of the wrong type fails the whole reply.

#include <exception>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "wayfen/searxng_transport.h"

namespace wayfen::JsonReply {

// The reply is not JSON, or not of the shape its reader expects.
struct Undecodable : std::exception {
    const char* what() const noexcept override { return "undecodable JSON reply"; }
};

// The parsed body, which must be a JSON object.
nlohmann::json parseObject(std::string_view body);

// The member `key` of `object`; nullptr when it is absent or null. `object` must be an object.
const nlohmann::json* member(const nlohmann::json& object, std::string_view key);
// A text member; nothing when absent or null.
std::optional<std::string> text(const nlohmann::json& object, std::string_view key);
// An object member; nullptr when absent or null.
const nlohmann::json* object(const nlohmann::json& object, std::string_view key);
// A list member, as a JSON array; an empty one when absent or null.
const nlohmann::json& list(const nlohmann::json& object, std::string_view key);

// One search hit as the JSON transports keep it: the title trimmed, the snippet trimmed or
// empty. Nothing when the title is absent or blank, or the URL absent or empty.
std::optional<SearXNGResultItem> resultItem(const std::optional<std::string>& title,
                                            const std::optional<std::string>& url,
                                            const std::optional<std::string>& snippet);

}  // namespace wayfen::JsonReply
