#pragma once
// A pipeline whose router plays a script, and capabilities that record what they were asked
// and answer as a test tells them.

#include <functional>
#include <initializer_list>
#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "core/capability.h"
#include "core/capability_registry.h"
#include "core/user_facing_error.h"
#include "pipeline/pipeline.h"
#include "support/scripted_backend.h"

namespace nuvrel::core {

// Readable failures of comparisons between errors.
inline void PrintTo(const UserFacingError& error, std::ostream* out) {
    *out << "UserFacingError(\"" << error.message << "\", "
         << (error.recoverySuggestion ? "\"" + *error.recoverySuggestion + "\"" : "no recovery")
         << (error.retryable ? ", retryable)" : ")");
}

}  // namespace nuvrel::core

namespace nuvrel::testing {

class FakeCapability : public core::Capability {
public:
    using Execute = std::function<core::CapabilityResult(const core::ActionPlan&)>;
    struct PlanCall {
        core::Slots slots;
        std::string query;
    };

    // By default a web capability answers with a web answer for the plan's query; any other
    // answers `empty`.
    explicit FakeCapability(core::IntentID intent, Execute onExecute = {})
        : intent_(intent), onExecute_(std::move(onExecute)) {}

    core::IntentID intentID() const override { return intent_; }

    // Only the web capability is ever asked for a plan: the fallback search builds its own.
    core::ActionPlan plan(const core::Slots& slots, std::string_view query) const override {
        planCalls.push_back({slots, std::string(query)});
        if (planError) std::rethrow_exception(planError);
        return core::WebQuery{std::string(query), true};
    }

    core::CapabilityResult execute(const core::ActionPlan& plan) override {
        executed.push_back(plan);
        if (onExecute_) return onExecute_(plan);
        if (const auto* web = plan.get<core::WebQuery>()) {
            return core::CapabilityResult::WebAnswer{
                core::WebAnswer{.summary = "an answer", .query = web->query}};
        }
        return core::CapabilityResult::Empty{intent_, ""};
    }

    mutable std::vector<PlanCall> planCalls;
    std::exception_ptr planError;
    std::vector<core::ActionPlan> executed;

private:
    core::IntentID intent_;
    Execute onExecute_;
};

// Throws `error` from execute.
template <class Error>
std::shared_ptr<FakeCapability> throwingCapability(core::IntentID intent, Error error) {
    return std::make_shared<FakeCapability>(
        intent, [error](const core::ActionPlan&) -> core::CapabilityResult { throw error; });
}

// The router's JSON answer.
inline std::string routerReply(core::IntentID intent, double confidence,
                               nlohmann::json slots = nlohmann::json::object()) {
    return nlohmann::json{
        {"intent", core::rawValue(intent)}, {"confidence", confidence}, {"slots", std::move(slots)}}
        .dump();
}

struct PipelineUnderTest {
    std::shared_ptr<ScriptedBackend> backend;
    pipeline::Pipeline pipeline;
};

// Network features and live fast paths on, English.
inline PipelineUnderTest pipelineWith(
    std::vector<ScriptedBackend::Step> routerScript,
    std::vector<std::shared_ptr<core::Capability>> capabilities = {}) {
    PipelineUnderTest made{std::make_shared<ScriptedBackend>(std::move(routerScript)), {}};
    made.pipeline.router.backend = made.backend;
    made.pipeline.registry = core::CapabilityRegistry(capabilities);
    return made;
}

}  // namespace nuvrel::testing
