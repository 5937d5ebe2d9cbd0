#pragma once
// Finding the JSON object in a model's reply, which may carry text around it. Shared by every
// reader of model output, so that all of them agree on what counts as the object.

#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::llm {

// The first balanced JSON object in `text`, from its first "{" to the brace that closes it;
// braces and quotes inside JSON strings, escaped ones included, do not count. Unbalanced
// text gives nothing. Linear in the length of the text, whatever its content. Pure.
std::optional<std::string> extractJSONObject(std::string_view text);

// The trimmed text under `key` of the JSON object `objectText`; nothing when the text is no
// object (invalid UTF-8 included), the value is no string, or it is blank.
std::optional<std::string> trimmedStringField(const std::string& objectText, std::string_view key);

}  // namespace nuvrel::llm
