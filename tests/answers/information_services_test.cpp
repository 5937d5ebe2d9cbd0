// Weather and currency against loopback services that answer as Open-Meteo and Frankfurter do.

#include <gtest/gtest.h>

#include "answers/currency_capability.h"
#include "answers/weather_capability.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "support/error_of.h"
#include "support/information_services_stand_in.h"

namespace nuvrel::answers {
namespace {

using core::AppLanguage;
using core::UserFacingError;
using Purpose = InformationServices::Purpose;
using Recorded = std::vector<std::pair<std::string, Purpose>>;

struct Services : test::InformationServicesStandIn {
    WeatherCapability weather(AppLanguage language = AppLanguage::en) {
        WeatherCapability made;
        made.language = language;
        made.services = services();
        return made;
    }
};

core::WeatherAnswer weatherOf(const std::optional<core::CapabilityResult>& result) {
    const auto* weather = result ? result->get<core::CapabilityResult::Weather>() : nullptr;
    return weather ? weather->answer : core::WeatherAnswer{};
}

TEST(WeatherCapability, AnswersNamedPlacesInEveryLanguage) {
    const struct {
        const char *query, *geocoderQuery, *location, *condition;
        AppLanguage language;
    } cases[] = {
        {"서울", "count=1&format=json&language=ko&name=Seoul", "Seoul", "구름 조금",
         AppLanguage::ko},
        {"서울 강남", "count=1&format=json&language=en&name=Seoul", "Seoul", "Partly Cloudy",
         AppLanguage::en},
        {" 東京 ", "count=1&format=json&language=ja&name=東京", "東京都", "所により曇り",
         AppLanguage::ja},
        {"北京", "count=1&format=json&language=zh&name=北京", "北京市", "少云", AppLanguage::zh},
    };
    for (const auto& c : cases) {
        Services services;
        EXPECT_EQ(weatherOf(services.weather(c.language).execute(c.query)),
                  (core::WeatherAnswer{c.location, 3.4, c.condition, 8.1, -1.2,
                                       core::WeatherSource::openMeteo}));
        ASSERT_EQ(services.requests.size(), 2u) << c.query;
        EXPECT_EQ(services.requests[0], std::string("/v1/search?") + c.geocoderQuery);
        EXPECT_EQ(services.recorded, (Recorded{{"127.0.0.1/v1/search", Purpose::weather},
                                               {"127.0.0.1/v1/forecast", Purpose::weather}}));
    }
    EXPECT_EQ(
        WeatherCapability::conditionText(WeatherCapability::conditionGroup(100), AppLanguage::ko),
        "날씨 정보 없음");
}

TEST(WeatherCapability, UnknownPlaceGivesNothingAndBadForecastsGiveTheNetworkError) {
    Services services;
    EXPECT_EQ(services.weather().execute("Atlantis"), std::nullopt);
    EXPECT_EQ(services.requests.size(), 1u);

    const UserFacingError failure(core::LocalizedStrings::en().weatherNetworkFailureMessage);
    const std::string days = R"({"temperature_2m_max":[2],"temperature_2m_min":[1]})";
    const std::pair<int, std::string> broken[] = {
        {500, services.forecast},
        {200, "not json"},
        {200, test::forecastBody(R"({"temperature_2m":3})", R"({"temperature_2m_max":[]})")},
        {200, test::forecastBody(R"({"weather_code":0})", days)},
    };
    for (const auto& [status, body] : broken) {
        services.forecastStatus = status;
        services.forecast = body;
        EXPECT_EQ(test::errorOf<UserFacingError>([&] { services.weather().execute("Paris"); }),
                  failure)
            << body;
    }
    // A geocoder that cannot be reached at all is a network failure, not an unknown place.
    WeatherCapability unreachable = services.weather();
    unreachable.services.geocodingEndpoint = *base::Url::parse("http://127.0.0.1:1/v1/search");
    EXPECT_EQ(test::errorOf<UserFacingError>([&] { unreachable.execute("Paris"); }), failure);
}

TEST(WeatherCapability, CurrentLocationAsksPermissionThenReadsThePosition) {
    Services services;
    test::StubLocation location;
    location.allowed = false;
    const auto denied = services.weather().executeCurrentLocation(&location);
    EXPECT_TRUE(denied.get<core::CapabilityResult::NeedsPermission>());
    EXPECT_TRUE(services.requests.empty());

    location.allowed = true;
    const UserFacingError unavailable(
        core::LocalizedStrings::ko().weatherLocationUnavailableMessage);
    for (auto* provider : {static_cast<core::CurrentLocationProviding*>(&location),
                           static_cast<core::CurrentLocationProviding*>(nullptr)}) {
        EXPECT_EQ(test::errorOf<UserFacingError>(
                      [&] { services.weather(AppLanguage::ko).executeCurrentLocation(provider); }),
                  unavailable);
    }
    location.reading = core::CurrentLocation{37.5, 127.25, std::nullopt};
    EXPECT_EQ(weatherOf(services.weather().executeCurrentLocation(&location)).locationName,
              "Current Location");
    EXPECT_NE(services.requests.back().find("latitude=37.5&longitude=127.25"), std::string::npos);
}

TEST(WeatherCapability, ThePlatformServiceIsAskedOnlyForThePublicEndpoint) {
    Services services;
    WeatherCapability weather = services.weather();
    int asked = 0;
    weather.platformForecast = [&](double, double) {
        return ++asked, ForecastReading{20, 7, 25, 15};
    };
    EXPECT_EQ(weatherOf(weather.execute("Paris")).source, core::WeatherSource::openMeteo);
    weather.services.forecastEndpoint = InformationServices::defaultForecastEndpoint();
    EXPECT_EQ(weatherOf(weather.execute("Paris")),
              (core::WeatherAnswer{"Paris", 20, "Thunderstorm", 25, 15,
                                   core::WeatherSource::appleWeather}));
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(services.recorded.back(),
              std::make_pair(std::string("weatherkit.apple.com/api/v1/weather"), Purpose::weather));
}

TEST(CurrencyCapability, ConvertsWithOneRequestFormatsByCurrencyAndFailsWithOneMessage) {
    const struct {
        CurrencyConversionRequest request;
        const char *rates, *query, *display;
    } cases[] = {
        {{100, CurrencyCode::usd, CurrencyCode::jpy},
         R"({"JPY":15565.4})",
         "amount=100&from=USD&to=JPY",
         "100.00 USD = 15,565 JPY"},
        {{30000, CurrencyCode::krw, CurrencyCode::usd},
         R"({"USD":20.4567})",
         "amount=30000&from=KRW&to=USD",
         "30,000 KRW = 20.46 USD"},
        {{1234567.5, CurrencyCode::eur, CurrencyCode::krw},
         R"({"KRW":1890123456.7})",
         "amount=1234567.5&from=EUR&to=KRW",
         "1,234,567.50 EUR = 1,890,123,457 KRW"},
    };
    for (const auto& c : cases) {
        Services services;
        services.rates = std::string(R"({"amount":1,"base":"X","rates":)") + c.rates + "}";
        const auto result =
            CurrencyCapability::execute(c.request, AppLanguage::en, services.services());
        ASSERT_TRUE(result.get<core::CapabilityResult::CurrencyConversion>());
        EXPECT_EQ(result.get<core::CapabilityResult::CurrencyConversion>()->display, c.display);
        EXPECT_EQ(services.requests,
                  std::vector<std::string>{std::string("/v1/latest?") + c.query});
        EXPECT_EQ(services.recorded, (Recorded{{"127.0.0.1/v1/latest", Purpose::currency}}));
    }
    const UserFacingError failure(core::LocalizedStrings::ja().currencyNetworkFailureMessage);
    const std::pair<int, const char*> broken[] = {{500, R"({"rates":{"KRW":1}})"},
                                                  {302, R"({"rates":{"KRW":1}})"},
                                                  {200, R"({"rates":{"JPY":1}})"},
                                                  {200, "[]"}};
    for (const auto& [status, body] : broken) {
        Services services;
        services.rateStatus = status;
        services.rates = body;
        EXPECT_EQ(test::errorOf<UserFacingError>([&] {
                      CurrencyCapability::execute({1, CurrencyCode::usd, CurrencyCode::krw},
                                                  AppLanguage::ja, services.services());
                  }),
                  failure)
            << body;
    }
}

}  // namespace
}  // namespace nuvrel::answers
