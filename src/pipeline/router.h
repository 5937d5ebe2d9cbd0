#pragma once
// Classifies one query into an intent with slots by asking the on-device model. It never
// throws: every failure comes back beside the empty intent.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "core/route_failure.h"
#include "core/routed_intent.h"
#include "llm/llm_backend.h"

namespace nuvrel::pipeline {

struct Router {
    struct Detailed {
        // The empty intent (unknown, no slots, confidence 0) whenever `failure` is present.
        core::RoutedIntent routed;
        std::optional<core::RouteFailure> failure;
    };

    // The model client. A missing one fails every call, as an unreachable model would.
    std::shared_ptr<llm::LLMBackend> backend;
    // Append the interim guidance to the system prompt.
    bool interimPrompt = false;
    // Offer "app.launch" in prompt and schema. Replies naming it decode either way.
    bool appLaunchIntent = false;
    // When set, gives the two flags above at each call instead: the model file, which decides
    // them, may be found only once a sentence reaches the router.
    struct PromptFlags {
        bool interimPrompt = false;
        bool appLaunchIntent = false;
    };
    std::function<PromptFlags()> promptFlags{};

    // Blocks on the caller's task for at most two model calls: output that is unusable or a
    // failed call is retried exactly once, unchanged; input too long is never retried. A task
    // cancelled before or between the calls ends with `cancelled`. Holds no mutable state and
    // may be called from any task.
    Detailed routeDetailed(std::string_view query) const;
    // routeDetailed without the failure.
    core::RoutedIntent route(std::string_view query) const;

    // The first balanced JSON object in `text`, from its first "{" to the brace that closes it;
    // braces and quotes inside JSON strings, escaped ones included, do not count. Unbalanced
    // text gives nothing. Linear in the length of the text, whatever its content.
    static std::optional<std::string> extractJSONObject(std::string_view text);
};

}  // namespace nuvrel::pipeline
