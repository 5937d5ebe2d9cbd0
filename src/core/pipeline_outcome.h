#pragma once
// What one run of the pipeline ends in; the shell renders it.

#include <variant>

#include "core/action_plan.h"
#include "core/capability_result.h"
#include "core/user_facing_error.h"

namespace nuvrel::core {

class PipelineOutcome {
public:
    enum class Kind { result, confirm, error, cancelled };

    static PipelineOutcome result(CapabilityResult result) { return {std::move(result)}; }
    // The shell must ask the user before the plan runs.
    static PipelineOutcome confirm(ActionPlan plan) { return {std::move(plan)}; }
    static PipelineOutcome error(UserFacingError error) { return {std::move(error)}; }
    static PipelineOutcome cancelled() { return {Cancelled{}}; }

    Kind kind() const { return static_cast<Kind>(storage_.index()); }

    // The payload when the outcome is of that case, else null.
    const CapabilityResult* asResult() const { return std::get_if<CapabilityResult>(&storage_); }
    const ActionPlan* asConfirm() const { return std::get_if<ActionPlan>(&storage_); }
    const UserFacingError* asError() const { return std::get_if<UserFacingError>(&storage_); }
    bool isCancelled() const { return kind() == Kind::cancelled; }

private:
    struct Cancelled {};
    using Storage = std::variant<CapabilityResult, ActionPlan, UserFacingError, Cancelled>;

    PipelineOutcome(Storage storage) : storage_(std::move(storage)) {}

    Storage storage_;
};

}  // namespace nuvrel::core
