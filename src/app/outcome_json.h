#pragma once
// Outcomes as JSON for scripts: {"outcome":"result","result":{"case":...,<payload>}},
// {"outcome":"error","error":{...}}, {"outcome":"confirm","plan":{"case":...}},
// {"outcome":"cancelled"}. Payload fields keep the names of the records they come from.

#include <nlohmann/json.hpp>

#include "core/action_plan.h"
#include "core/capability_result.h"
#include "core/pipeline_outcome.h"

namespace nuvrel::app {

nlohmann::ordered_json resultJSON(const core::CapabilityResult& result);
nlohmann::ordered_json planJSON(const core::ActionPlan& plan);
nlohmann::ordered_json outcomeJSON(const core::PipelineOutcome& outcome);

}  // namespace nuvrel::app
