#pragma once
// Capabilities that only name their intent, and a readable form of validation outcomes, so
// that a failed comparison shows which slot went wrong.

#include <initializer_list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "core/capability.h"
#include "core/capability_registry.h"
#include "core/validation_outcome.h"

namespace nuvrel::testing {

// The validator must only look a capability up, never plan or run with it.
class IntentOnlyCapability : public core::Capability {
public:
    explicit IntentOnlyCapability(core::IntentID intent) : intent_(intent) {}
    core::IntentID intentID() const override { return intent_; }
    core::ActionPlan plan(const core::Slots&, std::string_view) const override {
        throw std::logic_error("the validator must not plan through a capability");
    }
    core::CapabilityResult execute(const core::ActionPlan&) override {
        throw std::logic_error("the validator must not execute a capability");
    }

private:
    core::IntentID intent_;
};

inline core::CapabilityRegistry registryServing(std::initializer_list<core::IntentID> intents) {
    std::vector<std::shared_ptr<core::Capability>> capabilities;
    for (core::IntentID intent : intents)
        capabilities.push_back(std::make_shared<IntentOnlyCapability>(intent));
    return core::CapabilityRegistry(capabilities);
}

// Every intent served, so that only the validator's own rules decide.
inline const core::CapabilityRegistry& fullRegistry() {
    static const core::CapabilityRegistry registry = [] {
        std::vector<std::shared_ptr<core::Capability>> capabilities;
        for (core::IntentID intent : core::allIntentIDs) {
            capabilities.push_back(std::make_shared<IntentOnlyCapability>(intent));
        }
        return core::CapabilityRegistry(capabilities);
    }();
    return registry;
}

inline std::string describeOptional(const std::optional<std::string>& value) {
    return value ? "\"" + *value + "\"" : "-";
}

inline std::string describeOutcome(const core::ValidationOutcome& outcome) {
    if (const auto* missing = outcome.asMissingSlot()) {
        return "missing(" + std::string(core::rawValue(missing->intent)) + ", " + missing->name +
               ")";
    }
    if (const auto* fallback = outcome.asFallbackWeb())
        return "fallbackWeb(\"" + fallback->query + "\")";
    const core::ActionPlan& plan = *outcome.asPlan();
    if (const auto* finder = plan.get<core::FinderQuery>()) {
        return "finder(keyword " + describeOptional(finder->keyword) + ", type " +
               describeOptional(finder->fileType) + ", location " +
               describeOptional(finder->location) + ", date " +
               describeOptional(finder->dateRange) + ")";
    }
    if (const auto* calendar = plan.get<core::CalendarRange>()) {
        return "calendar(" + calendar->dateRange + ", keyword " +
               describeOptional(calendar->keyword) + ")";
    }
    if (const auto* message = plan.get<core::MessageDraft>()) {
        return "message(\"" + message->recipientQuery + "\", resolved " +
               describeOptional(message->resolvedName) + ", " +
               std::string(core::rawValue(message->channel)) + ", \"" + message->body + "\")";
    }
    if (const auto* music = plan.get<core::MusicCommand>()) {
        return "music(" + std::string(core::rawValue(music->action)) + ", query " +
               describeOptional(music->query) + ")";
    }
    const auto* web = plan.get<core::WebQuery>();
    return "web(\"" + web->query + "\", wantAnswer " + (web->wantAnswer ? "true" : "false") + ")";
}

inline std::string describeOutcome(const core::ActionPlan& plan) {
    return describeOutcome(core::ValidationOutcome::plan(plan));
}

}  // namespace nuvrel::testing
