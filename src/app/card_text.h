#pragma once
// An outcome as the plain text a terminal shows: the card's payload first, the header only
// where the payload alone would not say what it is.

#include <string>

#include "core/localized_strings.h"
#include "core/pipeline_outcome.h"

namespace nuvrel::app {

std::string cardText(const core::PipelineOutcome& outcome, const core::LocalizedStrings& strings);

}  // namespace nuvrel::app
