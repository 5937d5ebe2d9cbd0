#include "answers/weather_capability.h"

#include <array>
#include <nlohmann/json.hpp>
#include <utility>

#include "answers/calc_number_format.h"
#include "base/cancellation.h"
#include "base/diagnostics.h"
#include "base/text.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"

namespace nuvrel::answers {
namespace {

constexpr std::pair<std::string_view, std::string_view> koreanCityAliases[] = {
    {"서울", "Seoul"},    {"부산", "Busan"},   {"인천", "Incheon"},  {"대구", "Daegu"},
    {"대전", "Daejeon"},  {"광주", "Gwangju"}, {"울산", "Ulsan"},    {"수원", "Suwon"},
    {"성남", "Seongnam"}, {"고양", "Goyang"},  {"용인", "Yongin"},   {"창원", "Changwon"},
    {"제주", "Jeju"},     {"전주", "Jeonju"},  {"청주", "Cheongju"}, {"천안", "Cheonan"},
    {"안양", "Anyang"},   {"포항", "Pohang"},  {"세종", "Sejong"},
};

// Per group 0...7 and then no group: en, ko, zh, ja.
constexpr std::array<std::array<std::string_view, 4>, 9> conditionTexts = {{
    {"Clear", "맑음", "晴", "晴れ"},
    {"Partly Cloudy", "구름 조금", "少云", "所により曇り"},
    {"Overcast", "흐림", "阴", "曇り"},
    {"Fog", "안개", "雾", "霧"},
    {"Drizzle", "이슬비", "毛毛雨", "霧雨"},
    {"Rain", "비", "雨", "雨"},
    {"Snow", "눈", "雪", "雪"},
    {"Thunderstorm", "뇌우", "雷暴", "雷雨"},
    {"Unknown", "날씨 정보 없음", "暂无天气信息", "天気情報なし"},
}};

std::optional<std::string_view> alias(std::string_view name) {
    for (const auto& [korean, english] : koreanCityAliases) {
        if (korean == name) return english;
    }
    return std::nullopt;
}

std::string_view languageCode(core::AppLanguage language) {
    switch (language) {
        case core::AppLanguage::en:
            return "en";
        case core::AppLanguage::ko:
            return "ko";
        case core::AppLanguage::zh:
            return "zh";
        case core::AppLanguage::ja:
            return "ja";
    }
    return "en";
}

std::size_t languageIndex(core::AppLanguage language) {
    switch (language) {
        case core::AppLanguage::en:
            return 0;
        case core::AppLanguage::ko:
            return 1;
        case core::AppLanguage::zh:
            return 2;
        case core::AppLanguage::ja:
            return 3;
    }
    return 0;
}

std::string decimalText(double value) {
    return CalculatorFastPath::formatNumber(value, 6);
}

bool isSuccess(const base::HttpResponse& response) {
    return response.status >= 200 && response.status <= 299;
}

std::optional<double> number(const nlohmann::json& object, std::string_view key) {
    const auto field = object.find(key);
    if (field == object.end() || !field->is_number()) return std::nullopt;
    return field->get<double>();
}

std::optional<double> firstNumber(const nlohmann::json& object, std::string_view key) {
    const auto field = object.find(key);
    if (field == object.end() || !field->is_array() || field->empty()) return std::nullopt;
    if (!field->front().is_number()) return std::nullopt;
    return field->front().get<double>();
}

// The reading of a forecast body; nothing for a body of the wrong shape.
std::optional<ForecastReading> decodedForecast(const std::string& body) {
    const auto json = nlohmann::json::parse(body, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    const auto current = json.find("current");
    const auto daily = json.find("daily");
    if (current == json.end() || !current->is_object() || daily == json.end() ||
        !daily->is_object())
        return std::nullopt;
    const auto temperature = number(*current, "temperature_2m");
    const auto high = firstNumber(*daily, "temperature_2m_max");
    const auto low = firstNumber(*daily, "temperature_2m_min");
    if (!temperature || !high || !low) return std::nullopt;
    std::optional<int> code;
    const auto codeField = current->find("weather_code");
    if (codeField != current->end() && codeField->is_number_integer()) code = codeField->get<int>();
    return ForecastReading{*temperature, WeatherCapability::conditionGroup(code), *high, *low};
}

}  // namespace

std::optional<int> WeatherCapability::conditionGroup(std::optional<int> wmoCode) {
    if (!wmoCode) return std::nullopt;
    switch (*wmoCode) {
        case 0:
            return 0;
        case 1:
        case 2:
            return 1;
        case 3:
            return 2;
        case 45:
        case 48:
            return 3;
        case 51:
        case 53:
        case 55:
        case 56:
        case 57:
            return 4;
        case 61:
        case 63:
        case 65:
        case 66:
        case 67:
        case 80:
        case 81:
        case 82:
            return 5;
        case 71:
        case 73:
        case 75:
        case 77:
        case 85:
        case 86:
            return 6;
        case 95:
        case 96:
        case 99:
            return 7;
        default:
            return std::nullopt;
    }
}

std::string WeatherCapability::conditionText(std::optional<int> group, core::AppLanguage language) {
    const std::size_t row = group && *group >= 0 && *group <= 7 ? std::size_t(*group) : 8;
    return std::string(conditionTexts[row][languageIndex(language)]);
}

std::string WeatherCapability::geocodingName(std::string_view query) {
    const std::string trimmed = base::text::trim(query);
    if (auto english = alias(trimmed)) return std::string(*english);
    const std::vector<std::string> words = base::text::splitBlanks(trimmed);
    if (!words.empty()) {
        if (auto english = alias(words.front())) return std::string(*english);
    }
    return trimmed;
}

std::optional<WeatherCapability::Place> WeatherCapability::geocode(std::string_view query) const {
    const auto& strings = core::LocalizedStrings::strings(language);
    const base::Url url = services.geocoding().withQueryItems({
        {"name", geocodingName(query)},
        {"count", "1"},
        {"language", std::string(languageCode(language))},
        {"format", "json"},
    });
    base::HttpResponse response;
    try {
        response = services.get(url, InformationServices::Purpose::weather);
    } catch (const base::Cancelled&) {
        throw;
    } catch (...) {
        throw core::UserFacingError(strings.weatherNetworkFailureMessage);
    }
    if (!isSuccess(response)) return std::nullopt;
    const auto json = nlohmann::json::parse(response.body, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    const auto results = json.find("results");
    if (results == json.end() || !results->is_array() || results->empty()) return std::nullopt;
    const nlohmann::json& first = results->front();
    if (!first.is_object()) return std::nullopt;
    const auto name = first.find("name");
    const auto latitude = number(first, "latitude");
    const auto longitude = number(first, "longitude");
    if (name == first.end() || !name->is_string() || !latitude || !longitude) return std::nullopt;
    return Place{name->get<std::string>(), *latitude, *longitude};
}

core::CapabilityResult WeatherCapability::forecast(const Place& place) const {
    const auto& strings = core::LocalizedStrings::strings(language);
    const auto answer = [&](const ForecastReading& reading, core::WeatherSource source) {
        return core::CapabilityResult::Weather{
            core::WeatherAnswer{.locationName = place.name,
                                .temperatureC = reading.temperatureC,
                                .condition = conditionText(reading.conditionGroup, language),
                                .highC = reading.highC,
                                .lowC = reading.lowC,
                                .source = source}};
    };
    // A self-hosted forecast service is the user's choice: the platform's is not asked then.
    if (platformForecast && services.forecast() == InformationServices::defaultForecastEndpoint()) {
        try {
            const ForecastReading reading = platformForecast(place.latitude, place.longitude);
            if (services.record) {
                services.record(*base::Url::parse("https://" + std::string(platformServiceHost) +
                                                  "/api/v1/weather"),
                                InformationServices::Purpose::weather);
            }
            return answer(reading, core::WeatherSource::appleWeather);
        } catch (const base::Cancelled&) {
            throw;
        } catch (const std::exception& error) {
            services.diagnostics.event(std::string("WeatherKit 실패, Open-Meteo로 폴백: ") +
                                       error.what());
        }
    }
    const base::Url url = services.forecast().withQueryItems({
        {"latitude", decimalText(place.latitude)},
        {"longitude", decimalText(place.longitude)},
        {"current", "temperature_2m,weather_code"},
        {"daily", "temperature_2m_max,temperature_2m_min"},
        {"timezone", "auto"},
        {"forecast_days", "1"},
    });
    std::optional<ForecastReading> reading;
    try {
        const base::HttpResponse response =
            services.get(url, InformationServices::Purpose::weather);
        if (isSuccess(response)) reading = decodedForecast(response.body);
    } catch (const base::Cancelled&) {
        throw;
    } catch (...) {
    }
    if (!reading) throw core::UserFacingError(strings.weatherNetworkFailureMessage);
    return answer(*reading, core::WeatherSource::openMeteo);
}

std::optional<core::CapabilityResult> WeatherCapability::execute(std::string_view query) const {
    const std::optional<Place> place = geocode(query);
    if (!place) return std::nullopt;
    return forecast(*place);
}

core::CapabilityResult WeatherCapability::executeCurrentLocation(
    core::CurrentLocationProviding* provider) const {
    const auto& strings = core::LocalizedStrings::strings(language);
    if (provider && !provider->requestAuthorization())
        return core::CapabilityResult::NeedsPermission{core::PermissionKind::location};
    core::CurrentLocation here;
    try {
        if (!provider) throw WeatherKitUnavailable();
        here = provider->currentLocation();
    } catch (const base::Cancelled&) {
        throw;
    } catch (...) {
        throw core::UserFacingError(strings.weatherLocationUnavailableMessage);
    }
    return forecast(Place{here.name.value_or(strings.weatherCurrentLocationLabel), here.latitude,
                          here.longitude});
}

}  // namespace nuvrel::answers
