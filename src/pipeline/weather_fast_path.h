#pragma once
// Recognises a weather question in English ("weather in Paris", "seoul weather?") or Korean
// ("서울 날씨 알려줘", "오늘 날씨가 어때"), with or without a place.
//
// Pure; safe from any thread.

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace nuvrel::pipeline {

// A place as the user typed it, or here.
struct WeatherTarget {
    struct CurrentLocation {
        bool operator==(const CurrentLocation&) const = default;
    };
    std::variant<std::string, CurrentLocation> value;

    static WeatherTarget named(std::string place) { return {std::move(place)}; }
    static WeatherTarget currentLocation() { return {CurrentLocation{}}; }
    const std::string* name() const { return std::get_if<std::string>(&value); }
    bool operator==(const WeatherTarget&) const = default;
};

namespace WeatherFastPath {

// A place keeps the case the user typed; no place, or only a word for today or now, is here.
std::optional<WeatherTarget> match(std::string_view text);

}  // namespace WeatherFastPath

}  // namespace nuvrel::pipeline
