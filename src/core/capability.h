#pragma once
// An action that turns slots into a plan and runs the plan.
//
// Threading contract: plan() is synchronous and free of side effects. execute() blocks and
// runs on the caller's task: it observes that task's cancellation (throwing base::Cancelled)
// and may throw UserFacingError or any other error, which the pipeline converts. Both may be
// called from any task, including from two at once: an implementation guards its own state.

#include <string_view>

#include "core/action_plan.h"
#include "core/capability_result.h"
#include "core/intent_id.h"
#include "core/slot_value.h"

namespace nuvrel::core {

class Capability {
public:
    virtual ~Capability() = default;

    // The intent this capability serves.
    virtual IntentID intentID() const = 0;
    // Turns the router's slots and the user's query into a plan, or throws.
    virtual ActionPlan plan(const Slots& slots, std::string_view query) const = 0;
    // Runs a plan of this capability's intent.
    virtual CapabilityResult execute(const ActionPlan& plan) = 0;
};

}  // namespace nuvrel::core
