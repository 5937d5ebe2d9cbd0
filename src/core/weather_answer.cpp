#include "core/weather_answer.h"

#include <initializer_list>

#include "core/raw_value.h"

namespace nuvrel::core {

std::string_view rawValue(WeatherSource source) {
    switch (source) {
        case WeatherSource::appleWeather:
            return "appleWeather";
        case WeatherSource::openMeteo:
            return "openMeteo";
    }
    return {};
}

std::optional<WeatherSource> weatherSourceFromRawValue(std::string_view raw) {
    return caseWithRawValue(
        std::initializer_list<WeatherSource>{WeatherSource::appleWeather, WeatherSource::openMeteo},
        raw);
}

}  // namespace nuvrel::core
