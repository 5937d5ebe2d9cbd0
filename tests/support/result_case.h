#pragma once
// The payload of one case of a result or outcome, for comparisons in tests.

#include <optional>

#include "core/capability_result.h"
#include "core/pipeline_outcome.h"

namespace nuvrel::test {

template <class Case>
std::optional<Case> caseOf(const core::CapabilityResult& result) {
    if (const Case* payload = result.get<Case>()) return *payload;
    return std::nullopt;
}

template <class Case>
std::optional<Case> caseOf(const core::PipelineOutcome& outcome) {
    if (const core::CapabilityResult* result = outcome.asResult()) return caseOf<Case>(*result);
    return std::nullopt;
}

}  // namespace nuvrel::test
