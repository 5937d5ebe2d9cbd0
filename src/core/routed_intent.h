#pragma once
// The router's parsed answer: an intent with its loosely typed slots.

#include <nlohmann/json_fwd.hpp>
#include <string_view>

#include "core/intent_id.h"
#include "core/slot_value.h"

namespace nuvrel::core {

struct RoutedIntent {
    IntentID intent = IntentID::unknown;
    Slots slots;
    // The model's self-reported confidence, expected in 0.0 to 1.0; not checked here.
    double confidence = 0.0;

    bool operator==(const RoutedIntent&) const = default;

    // Parses one JSON object. Malformed text, a missing key or a value of the wrong kind
    // throws DecodingError.
    static RoutedIntent decode(std::string_view jsonText);
};

// JSON form: {"intent": raw value, "slots": {...}, "confidence": number}; all keys required.
void to_json(nlohmann::json& json, const RoutedIntent& routed);
void from_json(const nlohmann::json& json, RoutedIntent& routed);

}  // namespace nuvrel::core
