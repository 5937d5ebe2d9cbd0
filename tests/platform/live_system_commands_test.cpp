// The live system commands against a GDBus stand-in for logind on a private bus and a fake
// `wpctl` on PATH that records its arguments.
#include "platform/linux/live_system_commands.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <vector>

#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "support/bus_stand_in.h"
#include "support/environment_override.h"
#include "support/error_of.h"
#include "support/private_bus.h"
#include "support/temporary_home.h"

namespace nuvrel::platform {
namespace {

const core::LocalizedStrings& en = core::LocalizedStrings::en();

constexpr const char* managerXml =
    "<node><interface name='org.freedesktop.login1.Manager'>"
    "<method name='Suspend'><arg type='b' direction='in'/></method>"
    "<method name='LockSession'><arg type='s' direction='in'/></method></interface></node>";

TEST(LiveSystemCommands, LockAndSleepGoToLogindAndAnAbsentLogindIsNamed) {
    test::PrivateBus bus;
    ASSERT_FALSE(bus.address.empty());
    test::EnvironmentOverride session("XDG_SESSION_ID", "c7");
    LiveSystemCommandSettings settings;
    settings.logindBusAddress = bus.address;
    const auto operations = liveSystemCommandOperations(settings);
    EXPECT_EQ(test::errorOf<core::UserFacingError>(operations.lockScreen),
              core::UserFacingError(en.systemToolMissingMessage("logind")));
    std::mutex mutex;
    std::vector<std::string> calls;
    const test::BusStandIn logind(bus.address, "org.freedesktop.login1",
                                  {{"/org/freedesktop/login1", managerXml}},
                                  [&](const std::string&, const std::string& method, GVariant* in) {
                                      gchar* arguments = g_variant_print(in, false);
                                      const std::lock_guard lock(mutex);
                                      calls.push_back(method + arguments);
                                      g_free(arguments);
                                      return static_cast<GVariant*>(nullptr);
                                  });
    operations.lockScreen();
    operations.sleep();
    EXPECT_EQ(calls, (std::vector<std::string>{"LockSession('c7',)", "Suspend(true,)"}));
}

TEST(LiveSystemCommands, VolumeAndMuteThroughWpctlAndAMissingToolIsNamed) {
    test::TemporaryHome home;
    const auto bin = home.path() / "bin";
    std::filesystem::create_directories(bin);
    const auto log = home.path() / "wpctl.log";
    std::ofstream(bin / "wpctl") << "#!/bin/sh\necho \"$@\" >> '" << log.string()
                                 << "'\n[ \"$1\" = get-volume ] && echo 'Volume: 0.95 [MUTED]'\n"
                                    "exit 0\n";
    std::filesystem::permissions(bin / "wpctl", std::filesystem::perms::owner_all);
    test::EnvironmentOverride path("PATH", bin.c_str());
    const auto operations = liveSystemCommandOperations({});
    operations.setOutputMuted(true);
    operations.setOutputVolume(
        desktop::SystemCommandCapability::targetVolume(operations.outputVolume(), 10));
    std::stringstream recorded;
    recorded << std::ifstream(log).rdbuf();
    EXPECT_EQ(recorded.str(),
              "set-mute @DEFAULT_AUDIO_SINK@ 1\nget-volume @DEFAULT_AUDIO_SINK@\n"
              "set-volume @DEFAULT_AUDIO_SINK@ 1.00\n");
    EXPECT_EQ(parsePactlVolume("Volume: front-left: 26214 /  40% / -23.87 dB,"), 40);

    std::filesystem::remove(bin / "wpctl");
    EXPECT_EQ(test::errorOf<core::UserFacingError>([&] { operations.setOutputMuted(false); }),
              core::UserFacingError(en.systemToolMissingMessage("wpctl, pactl")));
}

}  // namespace
}  // namespace nuvrel::platform
