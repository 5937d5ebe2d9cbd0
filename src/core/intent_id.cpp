#include "core/intent_id.h"

#include <nlohmann/json.hpp>
#include <string>

#include "core/decoding_error.h"
#include "core/raw_value.h"

namespace nuvrel::core {

std::string_view rawValue(IntentID intent) {
    switch (intent) {
        case IntentID::finderSearch:
            return "finder.search";
        case IntentID::calendarQuery:
            return "calendar.query";
        case IntentID::messageSend:
            return "message.send";
        case IntentID::musicPlay:
            return "music.play";
        case IntentID::webSearch:
            return "web.search";
        // The router's schema and prompts use this exact form.
        case IntentID::unknown:
            return "system.unknown";
        case IntentID::weatherQuery:
            return "weather.query";
        case IntentID::currencyConvert:
            return "currency.convert";
        case IntentID::timerSet:
            return "timer.set";
        case IntentID::reminderSet:
            return "reminder.set";
        case IntentID::noteCreate:
            return "note.create";
        case IntentID::calendarAdd:
            return "calendar.add";
        case IntentID::windowManage:
            return "window.manage";
        case IntentID::systemCommand:
            return "system.command";
        case IntentID::appLaunch:
            return "app.launch";
    }
    return {};
}

std::optional<IntentID> intentIDFromRawValue(std::string_view raw) {
    return caseWithRawValue(allIntentIDs, raw);
}

void to_json(nlohmann::json& json, IntentID intent) {
    json = std::string(rawValue(intent));
}

void from_json(const nlohmann::json& json, IntentID& intent) {
    if (!json.is_string()) {
        throw DecodingError(DecodingError::Kind::typeMismatch, "IntentID must be a JSON string.");
    }
    const auto& raw = json.get_ref<const std::string&>();
    auto decoded = intentIDFromRawValue(raw);
    if (!decoded) {
        throw DecodingError(DecodingError::Kind::dataCorrupted,
                            "Cannot initialize IntentID from invalid String value " + raw);
    }
    intent = *decoded;
}

}  // namespace nuvrel::core
