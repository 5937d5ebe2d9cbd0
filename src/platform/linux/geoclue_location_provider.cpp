#include "platform/linux/geoclue_location_provider.h"

#include <gio/gio.h>

#include <memory>
#include <stdexcept>
#include <thread>

#include "base/cancellation.h"

namespace nuvrel::platform {
namespace {

constexpr const char* service = "org.freedesktop.GeoClue2";
constexpr const char* managerPath = "/org/freedesktop/GeoClue2/Manager";
constexpr const char* managerInterface = "org.freedesktop.GeoClue2.Manager";
constexpr const char* clientInterface = "org.freedesktop.GeoClue2.Client";
constexpr const char* locationInterface = "org.freedesktop.GeoClue2.Location";
constexpr int callTimeoutMs = 3000;
// GCLUE_ACCURACY_LEVEL_CITY: enough for a forecast, and less to disclose.
constexpr guint32 cityAccuracy = 4;

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
    void operator()(GVariant* value) const { g_variant_unref(value); }
    void operator()(GError* error) const { g_error_free(error); }
};
using Connection = std::unique_ptr<GDBusConnection, Unref>;
using Variant = std::unique_ptr<GVariant, Unref>;
using Error = std::unique_ptr<GError, Unref>;

// A refusal of GeoClue's agent, as opposed to a GeoClue that is absent or failing.
struct Refused : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Session {
public:
    explicit Session(const std::optional<std::string>& address) {
        GError* raw = nullptr;
        if (address) {
            connection_.reset(g_dbus_connection_new_for_address_sync(
                address->c_str(),
                GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                     G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
                nullptr, nullptr, &raw));
        } else {
            connection_.reset(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, &raw));
        }
        check(raw, "no bus");
    }

    Variant call(const char* path, const char* interface, const char* method, GVariant* args,
                 const GVariantType* reply) {
        GError* raw = nullptr;
        Variant result(g_dbus_connection_call_sync(connection_.get(), service, path, interface,
                                                   method, args, reply, G_DBUS_CALL_FLAGS_NONE,
                                                   callTimeoutMs, nullptr, &raw));
        check(raw, method);
        return result;
    }

    Variant property(const char* path, const char* interface, const char* name) {
        Variant reply = call(path, "org.freedesktop.DBus.Properties", "Get",
                             g_variant_new("(ss)", interface, name), G_VARIANT_TYPE("(v)"));
        GVariant* value = nullptr;
        g_variant_get(reply.get(), "(v)", &value);
        return Variant(value);
    }

    void setProperty(const char* path, const char* interface, const char* name, GVariant* value) {
        call(path, "org.freedesktop.DBus.Properties", "Set",
             g_variant_new("(ssv)", interface, name, value), nullptr);
    }

private:
    static void check(GError* raw, const char* what) {
        if (!raw) return;
        Error error(raw);
        const bool refused = g_error_matches(raw, G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED) ||
                             g_error_matches(raw, G_DBUS_ERROR, G_DBUS_ERROR_AUTH_FAILED);
        const std::string text = std::string(what) + ": " + raw->message;
        if (refused) throw Refused(text);
        throw std::runtime_error(text);
    }

    Connection connection_;
};

core::CurrentLocation readFix(const std::optional<std::string>& address,
                              std::chrono::milliseconds timeout) {
    Session bus(address);
    Variant client =
        bus.call(managerPath, managerInterface, "GetClient", nullptr, G_VARIANT_TYPE("(o)"));
    const gchar* raw = nullptr;
    g_variant_get(client.get(), "(&o)", &raw);
    const std::string path = raw;
    bus.setProperty(path.c_str(), clientInterface, "DesktopId",
                    g_variant_new_string(GeoClueLocationProvider::desktopId));
    bus.setProperty(path.c_str(), clientInterface, "RequestedAccuracyLevel",
                    g_variant_new_uint32(cityAccuracy));
    bus.call(path.c_str(), clientInterface, "Start", nullptr, nullptr);

    // GeoClue publishes the fix as the client's Location property; polling it spares a main
    // loop on this thread.
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    std::string location = "/";
    for (;;) {
        location = g_variant_get_string(
            bus.property(path.c_str(), clientInterface, "Location").get(), nullptr);
        if (location != "/" || std::chrono::steady_clock::now() >= deadline) break;
        base::checkCancellation();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    try {
        bus.call(path.c_str(), clientInterface, "Stop", nullptr, nullptr);
    } catch (const std::runtime_error&) {
    }
    if (location == "/") throw std::runtime_error("GeoClue had no fix in time");
    const auto coordinate = [&](const char* name) {
        return g_variant_get_double(bus.property(location.c_str(), locationInterface, name).get());
    };
    return core::CurrentLocation{coordinate("Latitude"), coordinate("Longitude"), std::nullopt};
}

}  // namespace

GeoClueLocationProvider::GeoClueLocationProvider(std::optional<std::string> busAddress,
                                                 std::chrono::milliseconds fixTimeout)
    : busAddress_(std::move(busAddress)), fixTimeout_(fixTimeout) {}

bool GeoClueLocationProvider::requestAuthorization() {
    try {
        Session bus(busAddress_);
        Variant client =
            bus.call(managerPath, managerInterface, "GetClient", nullptr, G_VARIANT_TYPE("(o)"));
        const gchar* path = nullptr;
        g_variant_get(client.get(), "(&o)", &path);
        bus.setProperty(path, clientInterface, "DesktopId", g_variant_new_string(desktopId));
        bus.call(path, clientInterface, "Start", nullptr, nullptr);
        bus.call(path, clientInterface, "Stop", nullptr, nullptr);
        return true;
    } catch (const Refused&) {
        return false;
    } catch (const std::runtime_error&) {
        // Absent or failing: the reading will say so.
        return true;
    }
}

core::CurrentLocation GeoClueLocationProvider::currentLocation() {
    return readFix(busAddress_, fixTimeout_);
}

}  // namespace nuvrel::platform
