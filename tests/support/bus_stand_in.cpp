#include "support/bus_stand_in.h"

#include <gio/gio.h>
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace nuvrel::test {

namespace {

void onCall(GDBusConnection*, const char*, const char* path, const char*, const char* method,
            GVariant* parameters, GDBusMethodInvocation* invocation, gpointer self) {
    auto& handler = *static_cast<BusStandIn::Handler*>(self);
    try {
        g_dbus_method_invocation_return_value(invocation, handler(path, method, parameters));
    } catch (const std::exception& error) {
        g_dbus_method_invocation_return_dbus_error(invocation, "org.freedesktop.DBus.Error.Failed",
                                                   error.what());
    }
}

}  // namespace

BusStandIn::BusStandIn(const std::string& address, const std::string& name,
                       const std::map<std::string, std::string>& introspectionByPath,
                       Handler handler)
    : handler_(std::move(handler)) {
    context_ = g_main_context_new();
    loop_ = g_main_loop_new(context_, false);
    g_main_context_push_thread_default(context_);
    connection_ = g_dbus_connection_new_for_address_sync(
        address.c_str(),
        GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
    static const GDBusInterfaceVTable vtable = {&onCall, nullptr, nullptr, {}};
    for (const auto& [path, xml] : introspectionByPath) {
        GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(xml.c_str(), nullptr);
        for (GDBusInterfaceInfo** interface = node->interfaces; *interface; ++interface)
            g_dbus_connection_register_object(connection_, path.c_str(), *interface, &vtable,
                                              &handler_, nullptr, nullptr);
        g_dbus_node_info_unref(node);
    }
    GVariant* owned = g_dbus_connection_call_sync(
        connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "RequestName", g_variant_new("(su)", name.c_str(), 0u), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
        nullptr, nullptr);
    if (owned) g_variant_unref(owned);
    g_main_context_pop_thread_default(context_);
    thread_ = std::thread([this] {
        g_main_context_push_thread_default(context_);
        g_main_loop_run(loop_);
        g_main_context_pop_thread_default(context_);
    });
}

BusStandIn::~BusStandIn() {
    g_main_loop_quit(loop_);
    g_main_context_wakeup(context_);
    thread_.join();
    g_dbus_connection_close_sync(connection_, nullptr, nullptr);
    g_object_unref(connection_);
    g_main_loop_unref(loop_);
    g_main_context_unref(context_);
}

}  // namespace nuvrel::test
