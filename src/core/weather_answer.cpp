#include "core/weather_answer.h"

#include <initializer_list>

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
    for (WeatherSource source : {WeatherSource::appleWeather, WeatherSource::openMeteo}) {
        if (rawValue(source) == raw) return source;
    }
    return std::nullopt;
}

}  // namespace nuvrel::core
