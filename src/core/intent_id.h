#pragma once
// The intents the system understands; the raw value is the wire id the model emits.

#include <array>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string_view>

namespace nuvrel::core {

enum class IntentID {
    finderSearch,
    calendarQuery,
    messageSend,
    musicPlay,
    webSearch,
    unknown,
    weatherQuery,
    currencyConvert,
    timerSet,
    reminderSet,
    noteCreate,
    calendarAdd,
    windowManage,
    systemCommand,
    appLaunch,
};

// Every case, in declared order.
inline constexpr std::array<IntentID, 15> allIntentIDs{
    IntentID::finderSearch, IntentID::calendarQuery,   IntentID::messageSend,
    IntentID::musicPlay,    IntentID::webSearch,       IntentID::unknown,
    IntentID::weatherQuery, IntentID::currencyConvert, IntentID::timerSet,
    IntentID::reminderSet,  IntentID::noteCreate,      IntentID::calendarAdd,
    IntentID::windowManage, IntentID::systemCommand,   IntentID::appLaunch,
};

// "finder.search", ..., "system.unknown" for `unknown`.
std::string_view rawValue(IntentID intent);
std::optional<IntentID> intentIDFromRawValue(std::string_view raw);

// JSON form: the raw value as a string. Decoding anything else throws DecodingError.
void to_json(nlohmann::json& json, IntentID intent);
void from_json(const nlohmann::json& json, IntentID& intent);

}  // namespace nuvrel::core
