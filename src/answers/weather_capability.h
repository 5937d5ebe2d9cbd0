#pragma once
// The weather at a named place or here: the place through Open-Meteo's geocoder, the reading
// from the platform's weather service where it has one, else from Open-Meteo's forecast.
//
// Threading: a plain value; execute blocks on the caller's task for at most two requests of
// the services' time-out each. A stop request ends it with Cancelled.

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "answers/information_services.h"
#include "core/app_language.h"
#include "core/capability_result.h"
#include "core/current_location_providing.h"

namespace nuvrel::answers {

struct ForecastReading {
    double temperatureC = 0;
    std::optional<int> conditionGroup{};
    double highC = 0;
    double lowC = 0;
    bool operator==(const ForecastReading&) const = default;
};

// The platform's weather service has nothing to give.
struct WeatherKitUnavailable : std::exception {
    const char* what() const noexcept override { return "weather service unavailable"; }
};

struct WeatherCapability {
    // The platform's own forecast by coordinates; throws when it cannot give one. Linux has
    // no such service, so by default there is none, and it is never asked (nor its failure
    // reported on every query).
    using PlatformForecast = std::function<ForecastReading(double latitude, double longitude)>;

    // The WeatherKit service's host, as the network log names it.
    static constexpr std::string_view platformServiceHost = "weatherkit.apple.com";

    core::AppLanguage language = core::AppLanguage::en;
    InformationServices services{};
    // Asked only while the forecast endpoint is the public one.
    PlatformForecast platformForecast{};

    // The reading at a named place; nothing when the geocoder does not know it, so that the
    // query goes on. A transport failure of the geocoder or any failure of the forecast is
    // a UserFacingError with weatherNetworkFailureMessage.
    std::optional<core::CapabilityResult> execute(std::string_view query) const;
    // The reading here: needsPermission(location) when access is denied, a UserFacingError
    // with weatherLocationUnavailableMessage when no reading can be had (no provider either).
    core::CapabilityResult executeCurrentLocation(core::CurrentLocationProviding* provider) const;

    // WMO weather code → condition group 0...7; nothing for codes of no group.
    static std::optional<int> conditionGroup(std::optional<int> wmoCode);
    // The group's text in the language; "Unknown" and its forms for no group.
    static std::string conditionText(std::optional<int> group, core::AppLanguage language);
    // The spelling the geocoder knows best: a Korean city alias for the whole query or its
    // first word, else the trimmed query.
    static std::string geocodingName(std::string_view query);

private:
    struct Place {
        std::string name;
        double latitude;
        double longitude;
    };
    std::optional<Place> geocode(std::string_view query) const;
    core::CapabilityResult forecast(const Place& place) const;
};

}  // namespace nuvrel::answers
