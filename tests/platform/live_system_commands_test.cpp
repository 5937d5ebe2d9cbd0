// The live system commands against a GDBus stand-in for logind on a private bus and a fake
// `wpctl` on PATH that records its arguments.
#include "platform/linux/live_system_commands.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

#include "core/localized_strings.h"
#include "core/user_facing_error.h"
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

// Answers logind's two calls on the bus under logind's name and records them.
class LogindStandIn {
public:
    explicit LogindStandIn(const std::string& address) {
        connection_ = g_dbus_connection_new_for_address_sync(
            address.c_str(),
            GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                 G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, nullptr);
        GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(managerXml, nullptr);
        static const GDBusInterfaceVTable vtable = {&LogindStandIn::call, nullptr, nullptr, {}};
        g_dbus_connection_register_object(connection_, "/org/freedesktop/login1",
                                          node->interfaces[0], &vtable, this, nullptr, nullptr);
        g_dbus_node_info_unref(node);
        g_variant_unref(g_dbus_connection_call_sync(
            connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "RequestName", g_variant_new("(su)", "org.freedesktop.login1", 0u), nullptr,
            G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    }
    ~LogindStandIn() { g_object_unref(connection_); }

    // Filled on the thread that runs the default main context.
    std::vector<std::string> calls;

private:
    static void call(GDBusConnection*, const char*, const char*, const char*, const char* method,
                     GVariant* parameters, GDBusMethodInvocation* invocation, gpointer self) {
        gchar* arguments = g_variant_print(parameters, false);
        static_cast<LogindStandIn*>(self)->calls.push_back(std::string(method) + arguments);
        g_free(arguments);
        g_dbus_method_invocation_return_value(invocation, nullptr);
    }

    GDBusConnection* connection_;
};

TEST(LiveSystemCommands, LockAndSleepGoToLogindAndAnAbsentLogindIsNamed) {
    test::PrivateBus bus;
    ASSERT_FALSE(bus.address.empty());
    test::EnvironmentOverride session("XDG_SESSION_ID", "c7");
    LiveSystemCommandSettings settings;
    settings.logindBusAddress = bus.address;
    const auto operations = liveSystemCommandOperations(settings);
    EXPECT_EQ(test::errorOf<core::UserFacingError>(operations.lockScreen),
              core::UserFacingError(en.systemToolMissingMessage("logind")));
    LogindStandIn logind(bus.address);
    // The stand-in's connection dispatches in the default main context.
    std::atomic<bool> done = false;
    std::thread loop([&] {
        while (!done)
            if (!g_main_context_iteration(nullptr, false)) g_usleep(1000);
    });
    operations.lockScreen();
    operations.sleep();
    done = true;
    loop.join();
    EXPECT_EQ(logind.calls, (std::vector<std::string>{"LockSession('c7',)", "Suspend(true,)"}));
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
