// Routed intents that act without a plan: the router's slots turned into the inputs that the
// fast paths would have produced.

#include <string>
#include <vector>

#include "answers/currency_capability.h"
#include "answers/weather_capability.h"
#include "base/cancellation.h"
#include "base/regex.h"
#include "base/text.h"
#include "desktop/app_launch_capability.h"
#include "desktop/window_manage_capability.h"
#include "personal/timer_fast_path.h"
#include "pipeline/personal_capabilities.h"
#include "pipeline/pipeline.h"
#include "pipeline/user_facing.h"
#include "pipeline/validator.h"

namespace nuvrel::pipeline {
namespace {

std::string joinedWithBlanks(const std::vector<std::string>& parts) {
    std::string joined;
    for (const std::string& part : parts) {
        if (!joined.empty()) joined += ' ';
        joined += part;
    }
    return joined;
}

}  // namespace

std::optional<core::PipelineOutcome> Pipeline::routedWeather(
    const core::RoutedIntent& routed, const core::LocalizedStrings& strings) const {
    answers::WeatherCapability weather;
    weather.language = language;
    weather.services = informationServices;
    const auto here = [&] {
        return outcomeOfCall(ErrorRule::userFacingAsThrown, strings, diagnostics, [&] {
            return weather.executeCurrentLocation(weatherLocationProvider.get());
        });
    };
    const std::optional<std::string> location = Validator::stringSlot(routed.slots, "location");
    const std::optional<std::string> place =
        location ? location : Validator::stringSlot(routed.slots, "content");
    if (!place) return here();
    if (auto outcome = outcomeOfCall(ErrorRule::userFacingAsThrown, strings, diagnostics,
                                     [&] { return weather.execute(*place); }))
        return outcome;
    // A place the geocoder does not know in "content" may be the whole phrase, or a place in
    // the wrong slot: the weather here still answers the user.
    if (location) return std::nullopt;
    return here();
}

std::optional<core::PipelineOutcome> Pipeline::dispatchRouterFallbackIntent(
    const core::RoutedIntent& routed, std::string_view query,
    const core::LocalizedStrings& strings) const {
    if (base::isCancelled()) return core::PipelineOutcome::cancelled();

    using core::IntentID;
    switch (routed.intent) {
        case IntentID::weatherQuery:
        case IntentID::currencyConvert:
            // Decided before any slot is read: unusable slots still get the offline error.
            if (!networkFeaturesEnabled)
                return core::PipelineOutcome::error(networkFeaturesOfflineError(strings));
            if (routed.intent == IntentID::weatherQuery) return routedWeather(routed, strings);
            if (const auto request = currencyRequest(routed.slots)) {
                return outcomeOfCall(ErrorRule::userFacingAsThrown, strings, diagnostics, [&] {
                    return answers::CurrencyCapability::execute(*request, language,
                                                                informationServices);
                });
            }
            return std::nullopt;
        case IntentID::timerSet: {
            const auto duration = Validator::stringSlot(routed.slots, "duration");
            if (!duration || !timerCapability.notificationCenter) return std::nullopt;
            const auto request = personal::TimerFastPath::request(*duration);
            if (!request) return std::nullopt;
            return outcomeOfCall(ErrorRule::userFacingAsThrown, strings, diagnostics,
                                 [&] { return timerCapability.execute(*request); });
        }
        case IntentID::reminderSet: {
            if (!reminderStore) return std::nullopt;
            const auto parsed =
                parsedDateTimeSlots(routed.slots, query, personal::DateTimeExpressionParser::parse);
            if (!parsed) return std::nullopt;
            const personal::ReminderCandidate candidate{parsed->title, parsed->dateToken,
                                                        parsed->hour, parsed->minute,
                                                        parsed->hasExplicitDateWord};
            return outcomeOfCall(ErrorRule::userFacingAsThrown, strings, diagnostics,
                                 [&] { return reminderCapabilityOf(*this).execute(candidate); });
        }
        case IntentID::calendarAdd: {
            if (!calendarStore) return std::nullopt;
            const auto parsed =
                parsedDateTimeSlots(routed.slots, query, personal::DateTimeExpressionParser::parse);
            if (!parsed) return std::nullopt;
            const personal::CalendarAddEventCandidate candidate{parsed->title, parsed->dateToken,
                                                                parsed->hour, parsed->minute,
                                                                parsed->hasExplicitDateWord};
            return outcomeOfCall(ErrorRule::userFacingAsThrown, strings, diagnostics,
                                 [&] { return calendarAddCapabilityOf(*this).execute(candidate); });
        }
        case IntentID::windowManage: {
            const auto slot = Validator::stringSlot(routed.slots, "action");
            const auto action = slot ? core::windowActionFromRouterSlot(*slot) : std::nullopt;
            if (!action) return std::nullopt;
            return outcomeOfCall(ErrorRule::userFacingAsThrown, strings, diagnostics, [&] {
                return desktop::WindowManageCapability::execute(*action, language,
                                                                windowSystem.get());
            });
        }
        case IntentID::appLaunch: {
            const auto name = Validator::stringSlot(routed.slots, "query");
            if (!name || !applications) return std::nullopt;
            const auto app = applications->index(language)->bestMatch(*name, true);
            if (!app) return std::nullopt;
            return outcomeOfCall(ErrorRule::allThroughUserFacing, strings, diagnostics, [&] {
                applications->open(*app);
                return core::CapabilityResult(core::CapabilityResult::AppLaunched{
                    desktop::AppLaunchCapability::shownName(*app)});
            });
        }
        case IntentID::noteCreate: {
            const auto content = Validator::stringSlot(routed.slots, "content");
            if (!content || !notesCapability.store) return std::nullopt;
            const personal::NotesCandidate candidate{*content};
            return outcomeOfCall(ErrorRule::userFacingAsThrown, strings, diagnostics,
                                 [&] { return notesCapability.execute(candidate); });
        }
        case IntentID::systemCommand:
            // Never on the model's word: a system command runs only when its normalised
            // phrase hit the fast path's table.
            return std::nullopt;
        case IntentID::finderSearch:
        case IntentID::calendarQuery:
        case IntentID::messageSend:
        case IntentID::musicPlay:
        case IntentID::webSearch:
        case IntentID::unknown:
            return std::nullopt;
    }
    return std::nullopt;
}

std::optional<answers::CurrencyConversionRequest> Pipeline::currencyRequest(
    const core::Slots& slots) {
    using answers::CurrencyCode;
    const auto amountText = Validator::stringSlot(slots, "amount");
    if (!amountText) return std::nullopt;
    const auto amount = base::text::parseDecimal(base::text::replaceAll(*amountText, ",", ""));
    const auto fromText = Validator::stringSlot(slots, "from_currency");
    if (!amount || !fromText) return std::nullopt;
    const auto from = answers::CurrencyFastPath::currencyCode(*fromText);
    const auto to = answers::CurrencyFastPath::currencyCode(
        Validator::stringSlot(slots, "to_currency").value_or(*fromText));
    if (!from || !to) return std::nullopt;
    answers::CurrencyConversionRequest request{*amount, *from, *to};
    if (request.to == request.from) {
        request.to = request.from == CurrencyCode::krw ? CurrencyCode::usd : CurrencyCode::krw;
    }
    return request;
}

std::optional<DateTimeExpressionParser::Result> Pipeline::parsedDateTimeSlots(
    const core::Slots& slots, std::string_view query,
    const DateTimeExpressionParser::Parse& parse) {
    const std::optional<std::string> title = Validator::stringSlot(slots, "title");
    const std::optional<std::string> content = Validator::stringSlot(slots, "content");
    const std::optional<std::string> first = title ? title : content;
    const std::optional<std::string> secondChoice = title ? content : std::nullopt;

    std::vector<std::string> grounded;
    for (const auto& value :
         {first, Validator::stringSlot(slots, "date"), Validator::stringSlot(slots, "time")}) {
        if (!value) continue;
        if (query.empty() || slotValueAppears(query, *value)) grounded.push_back(*value);
    }
    if (grounded.empty()) {
        if (query.empty()) return std::nullopt;
        grounded.emplace_back(query);
    }

    std::optional<DateTimeExpressionParser::Result> result = parse(joinedWithBlanks(grounded));
    // A title that swallowed the time can leave the parse without an hour; the content may
    // still carry it. stringSlot never gives an empty text, so the second choice counts only
    // when the query holds it.
    if (result && !result->hour && secondChoice && slotValueAppears(query, *secondChoice)) {
        std::vector<std::string> withSecond{*secondChoice};
        withSecond.insert(withSecond.end(), grounded.begin(), grounded.end());
        std::optional<DateTimeExpressionParser::Result> retry = parse(joinedWithBlanks(withSecond));
        if (retry && retry->hour) result = std::move(retry);
    }
    return result;
}

bool Pipeline::slotValueAppears(std::string_view query, std::string_view value) {
    static const base::Regex whiteSpaceRuns(R"(\s+)");
    const std::string needle = base::text::lower(whiteSpaceRuns.replaceAll(value, ""));
    if (needle.empty()) return false;
    return base::text::contains(base::text::lower(whiteSpaceRuns.replaceAll(query, "")), needle);
}

}  // namespace nuvrel::pipeline
