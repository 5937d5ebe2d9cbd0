#include "core/routed_intent.h"

#include <nlohmann/json.hpp>
#include <string>

#include "core/decoding_error.h"

namespace nuvrel::core {
namespace {

const nlohmann::json& requiredKey(const nlohmann::json& object, const char* key) {
    auto found = object.find(key);
    if (found == object.end()) {
        throw DecodingError(DecodingError::Kind::keyNotFound,
                            std::string("No value associated with key \"") + key + "\".");
    }
    if (found->is_null()) {
        throw DecodingError(
            DecodingError::Kind::valueNotFound,
            std::string("Expected a value for key \"") + key + "\" but found null.");
    }
    return *found;
}

}  // namespace

void to_json(nlohmann::json& json, const RoutedIntent& routed) {
    json = nlohmann::json{
        {"intent", routed.intent}, {"slots", routed.slots}, {"confidence", routed.confidence}};
}

void from_json(const nlohmann::json& json, RoutedIntent& routed) {
    if (!json.is_object()) {
        throw DecodingError(DecodingError::Kind::typeMismatch,
                            "RoutedIntent must be a JSON object.");
    }
    RoutedIntent decoded;
    decoded.intent = requiredKey(json, "intent").get<IntentID>();

    const auto& slots = requiredKey(json, "slots");
    if (!slots.is_object()) {
        throw DecodingError(DecodingError::Kind::typeMismatch, "\"slots\" must be a JSON object.");
    }
    for (const auto& [name, value] : slots.items()) {
        decoded.slots.emplace(name, value.get<SlotValue>());
    }

    const auto& confidence = requiredKey(json, "confidence");
    if (!confidence.is_number()) {
        throw DecodingError(DecodingError::Kind::typeMismatch,
                            "\"confidence\" must be a JSON number.");
    }
    decoded.confidence = confidence.get<double>();
    routed = std::move(decoded);
}

RoutedIntent RoutedIntent::decode(std::string_view jsonText) {
    nlohmann::json json;
    try {
        json = nlohmann::json::parse(jsonText);
    } catch (const nlohmann::json::parse_error& error) {
        throw DecodingError(DecodingError::Kind::dataCorrupted,
                            std::string("The given data was not valid JSON. ") + error.what());
    }
    return json.get<RoutedIntent>();
}

}  // namespace nuvrel::core
