#include "platform/linux/session_bus.h"

#include <gio/gio.h>

namespace nuvrel::platform {
namespace {

constexpr int callTimeoutMs = 5000;

// A call to the bus itself, with a reply of one value.
GVariant* callBus(GDBusConnection* connection, const char* method, GVariant* parameters,
                  const char* replyType) {
    return g_dbus_connection_call_sync(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                       "org.freedesktop.DBus", method, parameters,
                                       G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE,
                                       callTimeoutMs, nullptr, nullptr);
}

}  // namespace

std::shared_ptr<SessionBus> SessionBus::connect() {
    // No address means no session: GIO would otherwise try to autolaunch one through X11.
    const char* address = g_getenv("DBUS_SESSION_BUS_ADDRESS");
    if (!address || !*address) return nullptr;
    GError* error = nullptr;
    GDBusConnection* connection = g_dbus_connection_new_for_address_sync(
        address,
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, &error);
    if (!connection) {
        g_clear_error(&error);
        return nullptr;
    }
    g_dbus_connection_set_exit_on_close(connection, false);
    return std::shared_ptr<SessionBus>(new SessionBus(connection));
}

SessionBus::~SessionBus() {
    g_dbus_connection_flush_sync(connection_, nullptr, nullptr);
    g_object_unref(connection_);
}

bool SessionBus::serviceAvailable(std::string_view name) const {
    const std::string service(name);
    if (GVariant* reply =
            callBus(connection_, "NameHasOwner", g_variant_new("(s)", service.c_str()), "(b)")) {
        gboolean owned = false;
        g_variant_get(reply, "(b)", &owned);
        g_variant_unref(reply);
        if (owned) return true;
    }
    GVariant* reply = callBus(connection_, "ListActivatableNames", nullptr, "(as)");
    if (!reply) return false;
    bool activatable = false;
    GVariantIter* names = nullptr;
    g_variant_get(reply, "(as)", &names);
    const gchar* each = nullptr;
    while (g_variant_iter_loop(names, "&s", &each)) activatable = activatable || service == each;
    g_variant_iter_free(names);
    g_variant_unref(reply);
    return activatable;
}

bool SessionBus::notify(std::string_view appName, std::string_view summary,
                        std::string_view body) const {
    const std::string app(appName), title(summary), text(body);
    GVariantBuilder actions, hints;
    g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    GVariant* reply = g_dbus_connection_call_sync(
        connection_, "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
        "org.freedesktop.Notifications", "Notify",
        g_variant_new("(susssasa{sv}i)", app.c_str(), 0u, "", title.c_str(), text.c_str(), &actions,
                      &hints, -1),
        G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, callTimeoutMs, nullptr, nullptr);
    if (!reply) return false;
    g_variant_unref(reply);
    return true;
}

}  // namespace nuvrel::platform
