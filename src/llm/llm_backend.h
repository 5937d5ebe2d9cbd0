#pragma once
// The one way the rest of the program asks a language model for an answer: a system prompt,
// a user prompt and a JSON schema in, one schema-constrained string out.

#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::llm {

class LLMBackend {
public:
    virtual ~LLMBackend() = default;

    // Blocks on the caller's task; a cancelled task ends the call with base::Cancelled.
    // Throws LLMError, base::HttpError (transport) or base::Cancelled.
    virtual std::string complete(std::string_view system, std::string_view user,
                                 std::string_view jsonSchema) = 0;

    // The reply continues behind `assistantPrefix` and does not repeat it. A backend that cannot
    // pre-fill an assistant turn drops the prefix. Overriders of one form add
    // `using LLMBackend::complete;` so that the other stays visible.
    virtual std::string complete(std::string_view system, std::string_view user,
                                 std::string_view jsonSchema,
                                 std::optional<std::string_view> assistantPrefix) {
        (void)assistantPrefix;
        return complete(system, user, jsonSchema);
    }

    // The file name of the model behind this backend, when known.
    virtual std::optional<std::string> modelFileName() const { return std::nullopt; }
};

}  // namespace nuvrel::llm
