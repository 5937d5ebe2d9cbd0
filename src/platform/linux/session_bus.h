#pragma once
// The user's session bus through GIO's GDBus: one connection, made once and passed down, and
// the few calls the program makes on it. Safe to use from any thread (GDBus connections are).

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

typedef struct _GDBusConnection GDBusConnection;

namespace nuvrel::platform {

class SessionBus;
// The bus as a component that may connect only when first asked; null when there is none.
using SessionBusSource = std::function<std::shared_ptr<SessionBus>()>;

class SessionBus {
public:
    // The bus of $DBUS_SESSION_BUS_ADDRESS; nothing when there is none or it cannot be reached.
    static std::shared_ptr<SessionBus> connect();
    ~SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    // Whether a service of that name runs now or the bus can start it.
    bool serviceAvailable(std::string_view name) const;
    // Shows a notification through org.freedesktop.Notifications; false when the service did
    // not take it. Blocks up to 5 s.
    bool notify(std::string_view appName, std::string_view summary, std::string_view body) const;

    GDBusConnection* connection() const { return connection_; }

private:
    explicit SessionBus(GDBusConnection* connection) : connection_(connection) {}
    GDBusConnection* connection_;
};

}  // namespace nuvrel::platform
