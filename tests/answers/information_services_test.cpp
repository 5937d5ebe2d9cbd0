// Weather and currency against loopback services that answer as Open-Meteo and Frankfurter do.

#include <gtest/gtest.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "answers/currency_capability.h"
#include "answers/weather_capability.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "support/error_of.h"
#include "support/information_services_stand_in.h"

namespace nuvrel::answers {
namespace {

using core::AppLanguage;
using Purpose = InformationServices::Purpose;
using test::forecastBody;

struct Services : test::InformationServicesStandIn {
    WeatherCapability weather(AppLanguage language = AppLanguage::en) {
        WeatherCapability made;
        made.language = language;
        made.services = services();
        return made;
    }
};

template <class Case>
std::optional<Case> as(const std::optional<core::CapabilityResult>& result) {
    if (!result || !result->get<Case>()) return std::nullopt;
    return *result->get<Case>();
}

core::WeatherAnswer weatherOf(const std::optional<core::CapabilityResult>& result) {
    return as<core::CapabilityResult::Weather>(result)
        .value_or(core::CapabilityResult::Weather{})
        .answer;
}

TEST(WeatherCapability, AnswersNamedPlacesInEveryLanguage) {
    const struct {
        const char* query;
        AppLanguage language;
        const char* request;  // of the geocoder
        const char* location;
        const char* condition;
    } cases[] = {
        {"서울", AppLanguage::ko, "/v1/search?count=1&format=json&language=ko&name=Seoul", "Seoul",
         "구름 조금"},
        {"서울 강남", AppLanguage::en, "/v1/search?count=1&format=json&language=en&name=Seoul",
         "Seoul", "Partly Cloudy"},
        {" 東京 ", AppLanguage::ja, "/v1/search?count=1&format=json&language=ja&name=東京",
         "東京都", "所により曇り"},
        {"北京", AppLanguage::zh, "/v1/search?count=1&format=json&language=zh&name=北京", "北京市",
         "少云"},
    };
    for (const auto& c : cases) {
        Services services;
        const auto answer = weatherOf(services.weather(c.language).execute(c.query));
        EXPECT_EQ(answer, (core::WeatherAnswer{c.location, 3.4, c.condition, 8.1, -1.2,
                                               core::WeatherSource::openMeteo}))
            << c.query;
        ASSERT_EQ(services.requests.size(), 2u) << c.query;
        EXPECT_EQ(services.requests[0], c.request);
        EXPECT_EQ(services.requests[1].substr(0, 13), "/v1/forecast?");
        EXPECT_EQ(services.recorded, (std::vector<std::pair<std::string, Purpose>>{
                                         {"127.0.0.1/v1/search", Purpose::weather},
                                         {"127.0.0.1/v1/forecast", Purpose::weather}}));
    }
}

TEST(WeatherCapability, UnknownPlaceGivesNothingAndBadForecastsGiveTheNetworkError) {
    Services services;
    EXPECT_EQ(services.weather().execute("Atlantis"), std::nullopt);
    EXPECT_EQ(services.requests.size(), 1u);

    const std::string failure = core::LocalizedStrings::en().weatherNetworkFailureMessage;
    const std::string goodCurrent = R"({"temperature_2m":3.4,"weather_code":0})";
    const struct {
        int status;
        std::string body;
    } broken[] = {
        {500, services.forecast},
        {200, "not json"},
        {200, forecastBody(goodCurrent, R"({"temperature_2m_max":[],"temperature_2m_min":[1]})")},
        {200, forecastBody(R"({"weather_code":0})",
                           R"({"temperature_2m_max":[2],"temperature_2m_min":[1]})")},
        {200, R"({"current":{"temperature_2m":1}})"},
    };
    for (const auto& b : broken) {
        services.forecastStatus = b.status;
        services.forecast = b.body;
        const auto error =
            test::errorOf<core::UserFacingError>([&] { services.weather().execute("Paris"); });
        EXPECT_EQ(error, core::UserFacingError(failure)) << b.body;
    }
    // A geocoder that cannot be reached at all is a network failure, not an unknown place.
    WeatherCapability unreachable = services.weather();
    unreachable.services.geocodingEndpoint = *base::Url::parse("http://127.0.0.1:1/v1/search");
    EXPECT_EQ(test::errorOf<core::UserFacingError>([&] { unreachable.execute("Paris"); }),
              core::UserFacingError(failure));
}

TEST(WeatherCapability, CurrentLocationAsksPermissionThenReadsThePosition) {
    Services services;
    test::StubLocation location;
    location.allowed = false;
    EXPECT_EQ(as<core::CapabilityResult::NeedsPermission>(
                  services.weather().executeCurrentLocation(&location)),
              core::CapabilityResult::NeedsPermission{core::PermissionKind::location});
    EXPECT_TRUE(services.requests.empty());

    location.allowed = true;
    const auto unavailable =
        core::UserFacingError(core::LocalizedStrings::ko().weatherLocationUnavailableMessage);
    EXPECT_EQ(test::errorOf<core::UserFacingError>(
                  [&] { services.weather(AppLanguage::ko).executeCurrentLocation(&location); }),
              unavailable);
    EXPECT_EQ(test::errorOf<core::UserFacingError>(
                  [&] { services.weather(AppLanguage::ko).executeCurrentLocation(nullptr); }),
              unavailable);

    location.reading = core::CurrentLocation{37.5, 127.25, std::nullopt};
    EXPECT_EQ(weatherOf(services.weather().executeCurrentLocation(&location)).locationName,
              "Current Location");
    EXPECT_NE(services.requests.back().find("latitude=37.5&longitude=127.25"), std::string::npos);
    location.reading->name = "Mapo-gu";
    EXPECT_EQ(weatherOf(services.weather().executeCurrentLocation(&location)).locationName,
              "Mapo-gu");
}

TEST(WeatherCapability, ThePlatformServiceIsAskedOnlyForThePublicEndpoint) {
    Services services;
    WeatherCapability weather = services.weather();
    int asked = 0;
    weather.platformForecast = [&](double, double) {
        ++asked;
        return ForecastReading{20, 7, 25, 15};
    };
    EXPECT_EQ(weatherOf(weather.execute("Paris")).source, core::WeatherSource::openMeteo);
    EXPECT_EQ(asked, 0);

    weather.services.forecastEndpoint = InformationServices::defaultForecastEndpoint();
    EXPECT_EQ(weatherOf(weather.execute("Paris")),
              (core::WeatherAnswer{"Paris", 20, "Thunderstorm", 25, 15,
                                   core::WeatherSource::appleWeather}));
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(services.recorded.back(),
              std::make_pair(std::string("weatherkit.apple.com/api/v1/weather"), Purpose::weather));
}

TEST(WeatherCapability, ConditionGroupsAndTheirTexts) {
    EXPECT_EQ(WeatherCapability::conditionGroup(2), 1);
    EXPECT_EQ(WeatherCapability::conditionGroup(100), std::nullopt);
    EXPECT_EQ(WeatherCapability::conditionGroup(86), 6);
    for (auto language : {AppLanguage::en, AppLanguage::ko, AppLanguage::zh, AppLanguage::ja}) {
        EXPECT_EQ(WeatherCapability::conditionText(WeatherCapability::conditionGroup(1), language),
                  WeatherCapability::conditionText(1, language));
    }
    EXPECT_EQ(WeatherCapability::conditionText(std::nullopt, AppLanguage::ko), "날씨 정보 없음");
}

TEST(CurrencyCapability, ConvertsWithOneRequestAndFormatsByCurrency) {
    const struct {
        CurrencyConversionRequest request;
        std::string rates;
        const char* query;
        const char* display;
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
        services.rates = R"({"amount":1,"base":"X","date":"2026-11-21","rates":)" + c.rates + "}";
        const auto result =
            CurrencyCapability::execute(c.request, AppLanguage::en, services.services());
        EXPECT_EQ(as<core::CapabilityResult::CurrencyConversion>(result),
                  core::CapabilityResult::CurrencyConversion{c.display});
        ASSERT_EQ(services.requests.size(), 1u);
        EXPECT_EQ(services.requests[0], std::string("/v1/latest?") + c.query);
        EXPECT_EQ(services.recorded[0],
                  std::make_pair(std::string("127.0.0.1/v1/latest"), Purpose::currency));
    }
}

TEST(CurrencyCapability, EveryFailureIsOneMessage) {
    const core::UserFacingError failure(core::LocalizedStrings::ja().currencyNetworkFailureMessage);
    const struct {
        int status;
        const char* body;
    } broken[] = {{500, R"({"rates":{"KRW":1}})"}, {200, R"({"rates":{"JPY":1}})"}, {200, "[]"}};
    for (const auto& b : broken) {
        Services services;
        services.rateStatus = b.status;
        services.rates = b.body;
        EXPECT_EQ(test::errorOf<core::UserFacingError>([&] {
                      CurrencyCapability::execute({1, CurrencyCode::usd, CurrencyCode::krw},
                                                  AppLanguage::ja, services.services());
                  }),
                  failure)
            << b.body;
    }
}

}  // namespace
}  // namespace nuvrel::answers
