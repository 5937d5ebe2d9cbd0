#pragma once
// A forecast reading as the weather card shows it.

#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::core {

// The service that gave the reading; raw values equal the case names.
enum class WeatherSource { appleWeather, openMeteo };

std::string_view rawValue(WeatherSource source);
std::optional<WeatherSource> weatherSourceFromRawValue(std::string_view raw);

struct WeatherAnswer {
    std::string locationName{};
    double temperatureC = 0.0;
    std::string condition{};  // in the user's language
    double highC = 0.0;
    double lowC = 0.0;
    WeatherSource source = WeatherSource::appleWeather;

    bool operator==(const WeatherAnswer&) const = default;
};

}  // namespace nuvrel::core
