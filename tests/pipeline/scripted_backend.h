#pragma once
// An in-process model client that plays a script: each call runs the next step, which returns
// a reply or throws. Calls are recorded; a call beyond the script fails the test.

#include <gtest/gtest.h>

#include <functional>
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
    };

    explicit ScriptedBackend(std::vector<Step> script) : script_(std::move(script)) {}

    using LLMBackend::complete;
    std::string complete(std::string_view system, std::string_view user,
                         std::string_view jsonSchema) override {
        calls.push_back({std::string(system), std::string(user), std::string(jsonSchema)});
        if (calls.size() > script_.size()) {
            ADD_FAILURE() << "unscripted model call " << calls.size();
            throw std::logic_error("unscripted call");
        }
        return script_[calls.size() - 1]();
    }

    std::vector<Call> calls;

private:
    std::vector<Step> script_;
};

inline ScriptedBackend::Step reply(std::string text) {
    return [text = std::move(text)] { return text; };
}

template <class Error>
ScriptedBackend::Step failWith(Error error) {
    return [error]() -> std::string { throw error; };
}

}  // namespace nuvrel::testing
