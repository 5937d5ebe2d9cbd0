#pragma once
// What the validator decided about a routed intent.

#include <string>
#include <variant>

#include "core/action_plan.h"
#include "core/intent_id.h"

namespace nuvrel::core {

class ValidationOutcome {
public:
    enum class Kind { plan, missingSlot, fallbackWeb };

    struct MissingSlot {
        IntentID intent{};
        std::string name{};
        bool operator==(const MissingSlot&) const = default;
    };
    struct FallbackWeb {
        std::string query{};
        bool operator==(const FallbackWeb&) const = default;
    };

    static ValidationOutcome plan(ActionPlan plan) { return {std::move(plan)}; }
    static ValidationOutcome missingSlot(IntentID intent, std::string name) {
        return {MissingSlot{intent, std::move(name)}};
    }
    static ValidationOutcome fallbackWeb(std::string query) {
        return {FallbackWeb{std::move(query)}};
    }

    Kind kind() const { return static_cast<Kind>(storage_.index()); }

    // The payload when the outcome is of that case, else null.
    const ActionPlan* asPlan() const { return std::get_if<ActionPlan>(&storage_); }
    const MissingSlot* asMissingSlot() const { return std::get_if<MissingSlot>(&storage_); }
    const FallbackWeb* asFallbackWeb() const { return std::get_if<FallbackWeb>(&storage_); }

    bool operator==(const ValidationOutcome&) const = default;

private:
    using Storage = std::variant<ActionPlan, MissingSlot, FallbackWeb>;

    ValidationOutcome(Storage storage) : storage_(std::move(storage)) {}

    Storage storage_;
};

}  // namespace nuvrel::core
