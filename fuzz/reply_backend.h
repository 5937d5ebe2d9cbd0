#pragma once
// A model that answers every call with the same text: the fuzzer's bytes standing in for
// whatever a model server sends back.

#include <string>

#include "llm/llm_backend.h"

namespace nuvrel::fuzz {

class ReplyBackend final : public llm::LLMBackend {
public:
    explicit ReplyBackend(std::string reply) : reply_(std::move(reply)) {}
    using LLMBackend::complete;
    std::string complete(std::string_view, std::string_view, std::string_view) override {
        ++calls;
        return reply_;
    }
    int calls = 0;

private:
    std::string reply_;
};

}  // namespace nuvrel::fuzz
