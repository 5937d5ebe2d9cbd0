// The GeoClue provider against a small GDBus stand-in for GeoClue on a private bus.
#include "platform/linux/geoclue_location_provider.h"

#include <gio/gio.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "support/private_bus.h"

namespace nuvrel::platform {
namespace {

constexpr const char* introspection =
    "<node><interface name='org.freedesktop.GeoClue2.Manager'><method name='GetClient'>"
    "<arg type='o' direction='out'/></method></interface>"
    "<interface name='org.freedesktop.GeoClue2.Client'><method name='Start'/><method name='Stop'/>"
    "<property name='Location' type='o' access='read'/>"
    "<property name='DesktopId' type='s' access='readwrite'/>"
    "<property name='RequestedAccuracyLevel' type='u' access='readwrite'/></interface>"
    "<interface name='org.freedesktop.GeoClue2.Location'><property name='Latitude' type='d' "
    "access='read'/><property name='Longitude' type='d' access='read'/></interface></node>";

// Speaks GeoClue's protocol: a client that starts (or is refused) and then has a location.
class GeoClueStandIn {
public:
    enum class Mode { fix, refuse, noFix };

    GeoClueStandIn(const std::string& address, Mode mode) : mode_(mode) {
        context_ = g_main_context_new();
        loop_ = g_main_loop_new(context_, false);
        g_main_context_push_thread_default(context_);
        connection_ = g_dbus_connection_new_for_address_sync(
            address.c_str(),
            GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                 G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, nullptr);
        GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(introspection, nullptr);
        static const GDBusInterfaceVTable vtable = {
            &GeoClueStandIn::call, &GeoClueStandIn::get, &GeoClueStandIn::set, {}};
        const char* paths[] = {"/org/freedesktop/GeoClue2/Manager",
                               "/org/freedesktop/GeoClue2/Client/1",
                               "/org/freedesktop/GeoClue2/Location/1"};
        for (int i = 0; i < 3; ++i)
            g_dbus_connection_register_object(connection_, paths[i], node->interfaces[i], &vtable,
                                              this, nullptr, nullptr);
        g_dbus_node_info_unref(node);
        GVariant* owned = g_dbus_connection_call_sync(
            connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "RequestName", g_variant_new("(su)", "org.freedesktop.GeoClue2", 0u), nullptr,
            G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
        if (owned) g_variant_unref(owned);
        g_main_context_pop_thread_default(context_);
        thread_ = std::thread([this] {
            g_main_context_push_thread_default(context_);
            g_main_loop_run(loop_);
            g_main_context_pop_thread_default(context_);
        });
    }
    ~GeoClueStandIn() {
        g_main_loop_quit(loop_);
        g_main_context_wakeup(context_);
        thread_.join();
        g_dbus_connection_close_sync(connection_, nullptr, nullptr);
        g_object_unref(connection_);
        g_main_loop_unref(loop_);
        g_main_context_unref(context_);
    }
    std::string desktopId;

private:
    static void call(GDBusConnection*, const char*, const char*, const char*, const char* method,
                     GVariant*, GDBusMethodInvocation* invocation, gpointer self) {
        auto* standIn = static_cast<GeoClueStandIn*>(self);
        if (std::string(method) == "GetClient") {
            g_dbus_method_invocation_return_value(
                invocation, g_variant_new("(o)", "/org/freedesktop/GeoClue2/Client/1"));
        } else if (std::string(method) == "Start" && standIn->mode_ == Mode::refuse) {
            g_dbus_method_invocation_return_dbus_error(
                invocation, "org.freedesktop.DBus.Error.AccessDenied", "denied by the agent");
        } else {
            standIn->started_ = standIn->started_ || std::string(method) == "Start";
            g_dbus_method_invocation_return_value(invocation, nullptr);
        }
    }
    static GVariant* get(GDBusConnection*, const char*, const char*, const char*, const char* name,
                         GError**, gpointer self) {
        auto* standIn = static_cast<GeoClueStandIn*>(self);
        const std::string property = name;
        if (property == "Latitude") return g_variant_new_double(37.5665);
        if (property == "Longitude") return g_variant_new_double(126.978);
        if (property == "DesktopId") return g_variant_new_string(standIn->desktopId.c_str());
        if (property == "RequestedAccuracyLevel") return g_variant_new_uint32(4);
        const bool fixed = standIn->started_ && standIn->mode_ == Mode::fix;
        return g_variant_new_object_path(fixed ? "/org/freedesktop/GeoClue2/Location/1" : "/");
    }
    static gboolean set(GDBusConnection*, const char*, const char*, const char*, const char* name,
                        GVariant* value, GError**, gpointer self) {
        if (std::string(name) == "DesktopId")
            static_cast<GeoClueStandIn*>(self)->desktopId = g_variant_get_string(value, nullptr);
        return true;
    }

    Mode mode_;
    bool started_ = false;
    GMainContext* context_;
    GMainLoop* loop_;
    GDBusConnection* connection_;
    std::thread thread_;
};

TEST(GeoClueLocationProvider, ReadsTheFixOrTellsRefusalFromAbsence) {
    test::PrivateBus bus;
    ASSERT_FALSE(bus.address.empty());
    using Mode = GeoClueStandIn::Mode;
    {
        GeoClueStandIn geoclue(bus.address, Mode::fix);
        GeoClueLocationProvider provider(bus.address);
        EXPECT_TRUE(provider.requestAuthorization());
        const core::CurrentLocation here = provider.currentLocation();
        EXPECT_EQ(here.latitude, 37.5665);
        EXPECT_EQ(here.longitude, 126.978);
        EXPECT_EQ(geoclue.desktopId, "nuvrel");
    }
    {
        GeoClueStandIn geoclue(bus.address, Mode::refuse);
        GeoClueLocationProvider provider(bus.address);
        EXPECT_FALSE(provider.requestAuthorization());
        EXPECT_THROW(provider.currentLocation(), std::runtime_error);
    }
    {
        GeoClueStandIn geoclue(bus.address, Mode::noFix);
        GeoClueLocationProvider provider(bus.address, std::chrono::milliseconds(200));
        EXPECT_THROW(provider.currentLocation(), std::runtime_error);
    }
    // No GeoClue on the bus: not a refusal, but no position either.
    GeoClueLocationProvider absent(bus.address);
    EXPECT_TRUE(absent.requestAuthorization());
    EXPECT_THROW(absent.currentLocation(), std::runtime_error);
}

}  // namespace
}  // namespace nuvrel::platform
