#pragma once
// How the errors of capability calls become what a card may show. Only a UserFacingError
// reaches a card, and a stop request always ends as the outcome cancelled, never as an error.

#include <exception>
#include <optional>
#include <type_traits>
#include <utility>

#include "base/cancellation.h"
#include "base/diagnostics.h"
#include "core/capability_result.h"
#include "core/localized_strings.h"
#include "core/pipeline_outcome.h"
#include "core/user_facing_error.h"

namespace nuvrel::pipeline {

// Any error as a card may show it. A UserFacingError keeps its message and `retryable` and
// gets helpHintRecovery when it has no recovery. A library that did not load
// (base::SharedLibraryError) becomes systemToolMissingMessage naming it. Anything else is written
// to `diagnostics` and becomes genericErrorMessage: no internal text reaches the card. `error` must
// not hold base::Cancelled.
core::UserFacingError userFacing(const std::exception_ptr& error,
                                 const core::LocalizedStrings& strings,
                                 const base::Diagnostics& diagnostics);

// "Network features are turned off", with where to turn them on; not retryable.
core::UserFacingError networkFeaturesOfflineError(const core::LocalizedStrings& strings);

// Which errors reach the card unchanged.
enum class ErrorRule {
    // The fast paths and routed dispatch: a UserFacingError exactly as thrown.
    userFacingAsThrown,
    // After validation, and opening an application: every error through userFacing.
    allThroughUserFacing,
};

// Runs one capability call and wraps its answer in the outcome result. `call` gives a
// CapabilityResult, or an optional one whose absence lets the query go on (nothing back).
template <class Call>
std::optional<core::PipelineOutcome> outcomeOfCall(ErrorRule rule,
                                                   const core::LocalizedStrings& strings,
                                                   const base::Diagnostics& diagnostics,
                                                   Call&& call) {
    using Answer = std::invoke_result_t<Call&>;
    try {
        if constexpr (std::is_same_v<Answer, std::optional<core::CapabilityResult>>) {
            std::optional<core::CapabilityResult> result = call();
            if (!result) return std::nullopt;
            return core::PipelineOutcome::result(std::move(*result));
        } else {
            return core::PipelineOutcome::result(call());
        }
    } catch (const base::Cancelled&) {
        return core::PipelineOutcome::cancelled();
    } catch (const core::UserFacingError& error) {
        if (rule == ErrorRule::userFacingAsThrown) return core::PipelineOutcome::error(error);
        return core::PipelineOutcome::error(
            userFacing(std::current_exception(), strings, diagnostics));
    } catch (...) {
        return core::PipelineOutcome::error(
            userFacing(std::current_exception(), strings, diagnostics));
    }
}

}  // namespace nuvrel::pipeline
