#include "platform/linux/logind.h"

#include <gio/gio.h>

#include <cstdlib>

namespace nuvrel::platform {
namespace {

constexpr int callTimeoutMs = 5000;

bool meansAbsent(const GError* error) {
    return g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
           g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) ||
           g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD) ||
           g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_OBJECT);
}

}  // namespace

Logind::Outcome Logind::callManager(const char* method, void* arguments) const {
    GVariant* args = static_cast<GVariant*>(arguments);
    g_variant_ref_sink(args);
    GError* error = nullptr;
    GDBusConnection* connection =
        busAddress_ ? g_dbus_connection_new_for_address_sync(
                          busAddress_->c_str(),
                          GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                               G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
                          nullptr, nullptr, &error)
                    : g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, &error);
    if (!connection) {
        g_clear_error(&error);
        g_variant_unref(args);
        return Outcome::unavailable;
    }
    GVariant* reply =
        g_dbus_connection_call_sync(connection, "org.freedesktop.login1", "/org/freedesktop/login1",
                                    "org.freedesktop.login1.Manager", method, args, nullptr,
                                    G_DBUS_CALL_FLAGS_NONE, callTimeoutMs, nullptr, &error);
    g_variant_unref(args);
    g_object_unref(connection);
    if (reply) {
        g_variant_unref(reply);
        return Outcome::done;
    }
    const Outcome outcome = meansAbsent(error) ? Outcome::unavailable : Outcome::failed;
    g_error_free(error);
    return outcome;
}

Logind::Outcome Logind::suspend() const {
    return callManager("Suspend", g_variant_new("(b)", TRUE));
}

Logind::Outcome Logind::lockSession() const {
    // An empty session ID is logind's word for the caller's own session.
    const char* session = std::getenv("XDG_SESSION_ID");
    return callManager("LockSession", g_variant_new("(s)", session ? session : ""));
}

}  // namespace nuvrel::platform
