#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "desktop/system_command_capability.h"
#include "desktop/system_command_fast_path.h"
#include "support/result_case.h"

namespace nuvrel::desktop {
namespace {

using core::SystemCommand;
namespace Capability = SystemCommandCapability;
using Result = core::CapabilityResult;

TEST(SystemCommandFastPath, EveryPhraseNamesItsOwnCommandAndOnlyWholePhrasesMatch) {
    for (const auto& row : SystemCommandFastPath::table())
        for (const std::string_view phrase : row.phrases)
            EXPECT_EQ(SystemCommandFastPath::match(phrase), row.command) << phrase;
    EXPECT_EQ(SystemCommandFastPath::match(" Lock Screen! "), SystemCommand::lockScreen);
    EXPECT_EQ(SystemCommandFastPath::match("UNMUTE"), SystemCommand::unmute);
    for (const char* miss : {"sleep timer", "mute it", "", "  ", "ロックして"})
        EXPECT_FALSE(SystemCommandFastPath::match(miss)) << miss;
}

TEST(SystemCommandCapability, VolumeMovesInStepsOfTenClampedWithFiftyForAnUnreadableDevice) {
    EXPECT_EQ(Capability::targetVolume(95, 10), 100);
    EXPECT_EQ(Capability::targetVolume(5, -10), 0);
    EXPECT_EQ(Capability::targetVolume(std::nullopt, 10), 60);
    EXPECT_EQ(Capability::appleScriptSource(SystemCommand::volumeDown),
              "set currentVolume to output volume of (get volume settings)\nif currentVolume is "
              "missing value then set currentVolume to 50\nset targetVolume to currentVolume + "
              "(-10)\nif targetVolume > 100 then set targetVolume to 100\nif targetVolume < 0 "
              "then set targetVolume to 0\nset volume output volume targetVolume");
    EXPECT_FALSE(Capability::appleScriptSource(SystemCommand::lockScreen));
}

TEST(SystemCommandCapability, EachCommandCallsItsOwnOperation) {
    std::vector<std::string> calls;
    SystemCommandOperations ops;
    ops.sleep = [&] { calls.push_back("sleep"); };
    ops.lockScreen = [&] { calls.push_back("lock"); };
    ops.setOutputMuted = [&](bool muted) { calls.push_back(muted ? "mute" : "unmute"); };
    ops.outputVolume = [&]() -> std::optional<int> { return 95; };
    ops.setOutputVolume = [&](int volume) { calls.push_back(std::to_string(volume)); };
    ops.takeScreenshot = [&] { return std::string("/tmp/shot.png"); };
    ops.openWallpaperSettings = [&] { calls.push_back("wallpaper"); };
    const std::vector<std::string> expected = {"sleep", "lock", "mute", "unmute",
                                               "100",   "85",   "",     "wallpaper"};
    for (const SystemCommand command : core::allSystemCommands) {
        calls.clear();
        const core::CapabilityResult result = Capability::execute(command, ops);
        if (command == SystemCommand::screenshot) {
            EXPECT_EQ(test::caseOf<Result::ScreenshotTaken>(result),
                      Result::ScreenshotTaken{"/tmp/shot.png"});
            continue;
        }
        EXPECT_EQ(test::caseOf<Result::SystemCommandExecuted>(result),
                  Result::SystemCommandExecuted{command});
        EXPECT_EQ(calls, std::vector<std::string>{expected[static_cast<int>(command)]});
    }
}

TEST(SystemCommandCapability, ScreenshotNamesUseTheTwelveHourClock) {
    std::tm time{};
    time.tm_year = 126, time.tm_mon = 2, time.tm_mday = 5;
    time.tm_min = 7, time.tm_sec = 9;
    for (const auto& [hour, clock] :
         {std::pair{16, "4.07.09 PM"}, {0, "12.07.09 AM"}, {12, "12.07.09 PM"}}) {
        time.tm_hour = hour;
        EXPECT_EQ(Capability::screenshotFileName(time),
                  "Screenshot 2026-03-05 at " + std::string(clock) + ".png");
    }
}

}  // namespace
}  // namespace nuvrel::desktop
