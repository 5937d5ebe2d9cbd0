#pragma once
// Holds the router's slots against the words of the query, so that a slot the model invented
// cannot reach an action. Stateless; every function is pure and safe on any thread.

#include <optional>
#include <string>
#include <string_view>

#include "core/capability_registry.h"
#include "core/routed_intent.h"
#include "core/slot_value.h"
#include "core/validation_outcome.h"

namespace nuvrel::pipeline::Validator {

// A plan for finder search, calendar query, message send, music play and web search; a
// missing slot (message send only); or a web search for the trimmed query when the intent is
// unknown, the confidence is below 0.5 (NaN is not), no capability serves the intent, or the
// intent needs no plan.
core::ValidationOutcome validate(const core::RoutedIntent& routed, std::string_view query,
                                 const core::CapabilityRegistry& registry);

// The one reader of slots: a text slot trimmed of white space; nothing when the key is absent,
// the value is not text (a number, a boolean, null), or nothing is left after trimming.
std::optional<std::string> stringSlot(const core::Slots& slots, std::string_view key);

// A token of SlotEnums::calendarDateRange() for a phrase such as "다음주 금요일" or
// "day after tomorrow"; nothing when the text names no day or range.
std::optional<std::string> calendarDateRangeToken(std::string_view fromNaturalLanguage);

// The recipient without a trailing Korean dative particle ("엄마한테" → "엄마"), trimmed. A
// recipient that is nothing but a particle stays as it is.
std::string strippingDativeParticle(std::string_view recipient);

}  // namespace nuvrel::pipeline::Validator
