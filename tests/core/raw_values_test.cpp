#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "core/app_language.h"
#include "core/decoding_error.h"
#include "core/intent_id.h"
#include "core/permission_kind.h"
#include "core/plan_records.h"
#include "core/system_command.h"
#include "core/weather_answer.h"
#include "core/window_action.h"

namespace nuvrel::core {
namespace {

// Every case maps to a distinct raw value that maps back to it.
template <typename Enum, typename Cases, typename FromRaw>
void expectRoundTrip(const Cases& cases, FromRaw fromRaw) {
    std::set<std::string> seen;
    for (Enum value : cases) {
        auto raw = std::string(rawValue(value));
        EXPECT_FALSE(raw.empty());
        EXPECT_TRUE(seen.insert(raw).second) << "duplicate raw value " << raw;
        EXPECT_EQ(fromRaw(raw), value) << raw;
    }
}

TEST(IntentID, RawValuesRoundTripInDeclaredOrder) {
    expectRoundTrip<IntentID>(allIntentIDs, intentIDFromRawValue);
    EXPECT_EQ(allIntentIDs.front(), IntentID::finderSearch);
    EXPECT_EQ(allIntentIDs[5], IntentID::unknown);
    EXPECT_EQ(allIntentIDs.back(), IntentID::appLaunch);
    EXPECT_EQ(rawValue(IntentID::unknown), "system.unknown");
    EXPECT_EQ(rawValue(IntentID::systemCommand), "system.command");
    EXPECT_EQ(rawValue(IntentID::currencyConvert), "currency.convert");
    EXPECT_FALSE(intentIDFromRawValue("unknown"));
    EXPECT_FALSE(intentIDFromRawValue("Finder.Search"));
    EXPECT_FALSE(intentIDFromRawValue(""));
}

TEST(IntentID, JsonIsTheRawValueAndForeignTextFails) {
    EXPECT_EQ(nlohmann::json(IntentID::weatherQuery).dump(), R"("weather.query")");
    EXPECT_EQ(nlohmann::json("app.launch").get<IntentID>(), IntentID::appLaunch);
    EXPECT_THROW(nlohmann::json("unknown").get<IntentID>(), DecodingError);
    EXPECT_THROW(nlohmann::json(1).get<IntentID>(), nlohmann::json::exception);
}

TEST(RawValues, EqualTheCaseNamesAndRoundTrip) {
    expectRoundTrip<PermissionKind>(allPermissionKinds, permissionKindFromRawValue);
    EXPECT_EQ(rawValue(PermissionKind::fullDiskAccess), "fullDiskAccess");
    expectRoundTrip<SystemCommand>(allSystemCommands, systemCommandFromRawValue);
    EXPECT_EQ(rawValue(SystemCommand::openWallpaperSettings), "openWallpaperSettings");
    expectRoundTrip<WindowAction>(allWindowActions, windowActionFromRawValue);
    EXPECT_EQ(rawValue(WindowAction::bottomRightQuarter), "bottomRightQuarter");
    expectRoundTrip<AppLanguage>(allAppLanguages, appLanguageFromRawValue);
    expectRoundTrip<WeatherSource>(
        std::array{WeatherSource::appleWeather, WeatherSource::openMeteo},
        weatherSourceFromRawValue);

    using Channel = MessageDraft::Channel;
    expectRoundTrip<Channel>(std::array{Channel::imessage, Channel::sms, Channel::mail},
                             messageChannelFromRawValue);
    EXPECT_EQ(rawValue(Channel::imessage), "imessage");
    using Action = MusicCommand::Action;
    expectRoundTrip<Action>(std::array{Action::play, Action::pause, Action::next, Action::prev},
                            musicActionFromRawValue);
    EXPECT_EQ(rawValue(Action::prev), "prev");
    EXPECT_FALSE(musicActionFromRawValue("previous"));
}

TEST(WindowAction, RouterSlotAcceptsShortQuarterNames) {
    EXPECT_EQ(windowActionFromRouterSlot("topLeft"), WindowAction::topLeftQuarter);
    EXPECT_EQ(windowActionFromRouterSlot("topRight"), WindowAction::topRightQuarter);
    EXPECT_EQ(windowActionFromRouterSlot("bottomLeft"), WindowAction::bottomLeftQuarter);
    EXPECT_EQ(windowActionFromRouterSlot("bottomRight"), WindowAction::bottomRightQuarter);
    EXPECT_EQ(windowActionFromRouterSlot("bottomRightQuarter"), WindowAction::bottomRightQuarter);
    EXPECT_EQ(windowActionFromRouterSlot("nextDisplay"), WindowAction::nextDisplay);
    // The short forms exist only for quarters, and the text is exact.
    EXPECT_FALSE(windowActionFromRouterSlot("left"));
    EXPECT_FALSE(windowActionFromRouterSlot("topleft"));
    EXPECT_FALSE(windowActionFromRawValue("topLeft"));
}

}  // namespace
}  // namespace nuvrel::core
