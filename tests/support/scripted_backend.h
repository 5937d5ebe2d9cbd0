#pragma once
// An in-process model client that plays a script: each call runs the next step, which returns
// a reply or throws. Calls are recorded, with the assistant prefix if one was given; a call
// beyond the script fails the test.

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "llm/llm_backend.h"

namespace nuvrel::testing {

class ScriptedBackend : public llm::LLMBackend {
public:
    using Step = std::function<std::string()>;
    struct Call {
        std::string system, user, schema;
        std::optional<std::string> prefix;
    };

    explicit ScriptedBackend(std::vector<Step> script,
                             std::optional<std::string> modelFile = std::nullopt)
        : script_(std::move(script)), modelFile_(std::move(modelFile)) {}

    std::string complete(std::string_view system, std::string_view user,
                         std::string_view jsonSchema) override {
        return complete(system, user, jsonSchema, std::nullopt);
    }
    std::string complete(std::string_view system, std::string_view user,
                         std::string_view jsonSchema,
                         std::optional<std::string_view> prefix) override {
        calls.push_back({std::string(system), std::string(user), std::string(jsonSchema),
                         prefix ? std::optional<std::string>(*prefix) : std::nullopt});
        if (calls.size() > script_.size()) {
            ADD_FAILURE() << "unscripted model call " << calls.size();
            throw std::logic_error("unscripted call");
        }
        return script_[calls.size() - 1]();
    }

    std::optional<std::string> modelFileName() const override { return modelFile_; }

    std::vector<Call> calls;

private:
    std::vector<Step> script_;
    std::optional<std::string> modelFile_;
};

inline ScriptedBackend::Step reply(std::string text) {
    return [text = std::move(text)] { return text; };
}

template <class Error>
ScriptedBackend::Step failWith(Error error) {
    return [error]() -> std::string { throw error; };
}

}  // namespace nuvrel::testing
