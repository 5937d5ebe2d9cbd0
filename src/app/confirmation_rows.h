#pragma once
// What an outcome asks the user to confirm: the plan of a `confirm` (one row), or each item of
// a delete confirmation card (one row per event, reminder, note or file).

#include <cstddef>
#include <string>

#include "core/pipeline_outcome.h"

namespace nuvrel::app {

// 0 when the outcome asks for no confirmation.
std::size_t confirmationRowCount(const core::PipelineOutcome& outcome);
// The name of a row as the user knows it (an event's title, a file's name); empty for a plan.
std::string confirmationRowTitle(const core::PipelineOutcome& outcome, std::size_t row);

}  // namespace nuvrel::app
