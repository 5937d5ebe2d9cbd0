#include "core/slot_value.h"

#include <nlohmann/json.hpp>

#include "core/decoding_error.h"

namespace nuvrel::core {

std::optional<double> SlotValue::asNumber() const {
    if (const auto* number = std::get_if<double>(&storage_)) return *number;
    return std::nullopt;
}

std::optional<bool> SlotValue::asBool() const {
    if (const auto* flag = std::get_if<bool>(&storage_)) return *flag;
    return std::nullopt;
}

void to_json(nlohmann::json& json, const SlotValue& value) {
    std::visit([&json](const auto& payload) { json = payload; }, value.storage());
}

void from_json(const nlohmann::json& json, SlotValue& value) {
    if (json.is_null()) {
        value = SlotValue(nullptr);
    } else if (json.is_boolean()) {
        value = SlotValue(json.get<bool>());
    } else if (json.is_number()) {
        value = SlotValue(json.get<double>());
    } else if (json.is_string()) {
        value = SlotValue(json.get_ref<const std::string&>());
    } else {
        throw DecodingError(DecodingError::Kind::typeMismatch,
                            "SlotValue must be a JSON string, number, bool, or null.");
    }
}

}  // namespace nuvrel::core
