// A run from the router on: routing, its failures, the confidence gate, validation and what
// becomes of each validation outcome.

#include "pipeline/pipeline.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

#include "base/cancellation.h"
#include "base/diagnostics.h"
#include "pipeline/chain_decomposer.h"
#include "pipeline/user_facing.h"
#include "pipeline/validator.h"

namespace nuvrel::pipeline {
namespace {

// Routed slots for headless verification.
constexpr std::string_view debugSlotsTag = "[nuvrel-debug-slots] ";

// The dispatch gate; the validator applies the same bound to plans on its own.
constexpr double dispatchConfidence = 0.5;

// The shortest text that reads back as the same number; whole numbers keep a ".0" ("1.0",
// "0.85").
std::string confidenceText(double confidence) {
    char buffer[32];
    const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, confidence);
    std::string text(buffer, error == std::errc() ? end : buffer);
    if (std::isfinite(confidence) && text.find_first_of(".e") == std::string::npos) text += ".0";
    return text;
}

void writeDebugSlotsLine(const core::RoutedIntent& routed, const base::Diagnostics& diagnostics) {
    diagnostics.line(debugSlotsTag,
                     "intent=" + std::string(core::rawValue(routed.intent)) +
                         " confidence=" + confidenceText(routed.confidence) + " slots=" +
                         nlohmann::json(routed.slots)
                             .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

core::PipelineOutcome offlineError(const core::LocalizedStrings& strings) {
    return core::PipelineOutcome::error(networkFeaturesOfflineError(strings));
}

core::PipelineOutcome capabilityUnavailableError(const core::LocalizedStrings& strings) {
    return core::PipelineOutcome::error(
        core::UserFacingError(strings.capabilityUnavailableMessage, std::nullopt, false));
}

const std::string& missingSlotLabel(const std::string& name,
                                    const core::LocalizedStrings& strings) {
    if (name == "recipient") return strings.slotNameRecipient;
    if (name == "body") return strings.slotNameBody;
    if (name == "content") return strings.slotNameContent;
    return name;
}

// Tells the card that the request was not understood as an action and searched instead.
core::CapabilityResult withFallbackNotice(core::CapabilityResult result) {
    const auto* web = result.get<core::CapabilityResult::WebAnswer>();
    if (web == nullptr) return result;
    core::CapabilityResult::WebAnswer marked = *web;
    marked.answer.fallbackNotice = true;
    return marked;
}

}  // namespace

core::PipelineOutcome Pipeline::run(std::string_view query) const {
    const core::LocalizedStrings& strings = core::LocalizedStrings::strings(language);
    try {
        if (auto outcome = runCascade(query, strings)) return std::move(*outcome);
        return runRouted(query, strings);
    } catch (const base::Cancelled&) {
        return core::PipelineOutcome::cancelled();
    } catch (...) {
        // Every capability call has its own handler; this only keeps the promise never to
        // throw, whatever a matcher or the validator might do.
        return core::PipelineOutcome::error(
            userFacing(std::current_exception(), strings, diagnostics));
    }
}

core::PipelineOutcome Pipeline::runRouted(std::string_view query,
                                          const core::LocalizedStrings& strings) const {
    Router::Detailed detailed = router.routeDetailed(query);
    if (base::isCancelled()) return core::PipelineOutcome::cancelled();
    if (debugSlotsLogging) writeDebugSlotsLine(detailed.routed, diagnostics);

    if (detailed.failure) {
        switch (*detailed.failure) {
            case core::RouteFailure::cancelled:
                return core::PipelineOutcome::cancelled();
            case core::RouteFailure::llmUnavailable:
                return core::PipelineOutcome::error(core::UserFacingError(
                    strings.llmUnavailableMessage, strings.llmUnavailableRecovery, true));
            case core::RouteFailure::inputTooLong:
                return core::PipelineOutcome::error(core::UserFacingError(
                    strings.inputTooLongMessage, strings.inputTooLongRecovery, false));
            case core::RouteFailure::invalidOutput:
                // Goes on like a success with the empty intent, which ends in web fallback.
                break;
        }
    }

    const core::RoutedIntent& routed = detailed.routed;
    if (routed.confidence >= dispatchConfidence) {
        if (auto outcome = dispatchRouterFallbackIntent(routed, query, strings))
            return std::move(*outcome);
    }
    return validatedOutcome(routed, query, strings);
}

core::PipelineOutcome Pipeline::validatedOutcome(const core::RoutedIntent& routed,
                                                 std::string_view query,
                                                 const core::LocalizedStrings& strings) const {
    const core::ValidationOutcome validation = Validator::validate(routed, query, registry);

    if (const auto* missing = validation.asMissingSlot()) {
        const std::string& recovery = missing->intent == core::IntentID::messageSend
                                          ? strings.messageSendExampleRecovery
                                          : strings.helpHintRecovery;
        return core::PipelineOutcome::error(core::UserFacingError(
            strings.missingSlotMessage(missingSlotLabel(missing->name, strings)), recovery, false));
    }
    if (const auto* fallback = validation.asFallbackWeb())
        return webFallbackOutcome(fallback->query, strings);

    const core::ActionPlan& plan = *validation.asPlan();
    // Nothing is sent without the user's word: the shell shows the draft.
    if (plan.is<core::MessageDraft>()) return core::PipelineOutcome::confirm(plan);
    if (plan.is<core::WebQuery>() && !networkFeaturesEnabled) return offlineError(strings);

    const std::shared_ptr<core::Capability> capability = registry.capability(routed.intent);
    if (!capability) return capabilityUnavailableError(strings);
    return *outcomeOfCall(ErrorRule::allThroughUserFacing, strings, diagnostics,
                          [&] { return capability->execute(plan); });
}

core::PipelineOutcome Pipeline::webFallbackOutcome(std::string_view fallbackQuery,
                                                   const core::LocalizedStrings& strings) const {
    if (!networkFeaturesEnabled) return offlineError(strings);
    const std::shared_ptr<core::Capability> web = registry.capability(core::IntentID::webSearch);
    if (!web) return capabilityUnavailableError(strings);
    return *outcomeOfCall(ErrorRule::allThroughUserFacing, strings, diagnostics, [&] {
        const core::ActionPlan plan = web->plan(core::Slots{}, fallbackQuery);
        return withFallbackNotice(web->execute(plan));
    });
}

std::optional<std::vector<std::string>> Pipeline::decomposeIfChain(std::string_view query) const {
    return ChainDecomposer::decompose(query, language, summarizer);
}

}  // namespace nuvrel::pipeline
