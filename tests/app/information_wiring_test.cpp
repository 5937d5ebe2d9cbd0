#include "app/information_wiring.h"

#include <gtest/gtest.h>

#include "app/app_test_support.h"
#include "app/settings_keys.h"
#include "support/recording_sink.h"

namespace nuvrel::app {
namespace {

using answers::InformationServices;

TEST(InformationWiring, SettingsMoveTheServicesAndUnusableValuesAreIgnoredAloud) {
    test::InMemorySettingsStore defaults;
    defaults.set(settingsKey::openMeteoGeocodingEndpoint, std::string(" http://127.0.0.1:9/om/ "));
    defaults.set(settingsKey::openMeteoForecastEndpoint, std::string("ftp://example.org"));
    defaults.set(settingsKey::frankfurterEndpoint, std::string("rates.example.org"));
    const nuvrel::test::RecordedDiagnostics recorded;
    const InformationServices services =
        makeInformationServices(defaults, nullptr, nullptr, recorded.diagnostics);
    const std::string diagnostics = recorded.sink->text();
    EXPECT_EQ(services.geocodingEndpoint.text(), "http://127.0.0.1:9/om/v1/search");
    EXPECT_EQ(services.forecast(), InformationServices::defaultForecastEndpoint());
    EXPECT_EQ(services.frankfurter(), InformationServices::defaultFrankfurterEndpoint());
    EXPECT_EQ(diagnostics,
              "[Nuvrel] ignoring openMeteoForecastEndpoint: not an http or https address; the "
              "public service answers\n"
              "[Nuvrel] ignoring frankfurterEndpoint: not an http or https address; the public "
              "service answers\n");
}

TEST(InformationWiring, RequestsAreLoggedDecodedByPurposeButNotOnLoopback) {
    test::InMemorySettingsStore defaults;
    auto log = std::make_shared<NetworkActivityLog>();
    const InformationServices services = makeInformationServices(defaults, nullptr, log, {});
    services.record(*base::Url::parse("https://geo.example/v1/%EC%84%9C?name=secret"),
                    InformationServices::Purpose::weather);
    services.record(*base::Url::parse("http://localhost:8/v1/latest"),
                    InformationServices::Purpose::currency);
    services.record(*base::Url::parse("https://rates.example/v1/latest?amount=1"),
                    InformationServices::Purpose::currency);
    const auto entries = log->recentEntries(10);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[1].host + entries[1].path, "geo.example/v1/서");
    EXPECT_EQ(entries[1].purpose, NetworkActivityLog::Purpose::weather);
    EXPECT_EQ(entries[0].host + entries[0].path, "rates.example/v1/latest");
    EXPECT_EQ(entries[0].purpose, NetworkActivityLog::Purpose::currency);
}

}  // namespace
}  // namespace nuvrel::app
