#pragma once
// A small GDBus service on a test's private bus (support/private_bus.h) that answers method
// calls through one function, run on a thread of its own.

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>

typedef struct _GDBusConnection GDBusConnection;
typedef struct _GMainContext GMainContext;
typedef struct _GMainLoop GMainLoop;
typedef struct _GVariant GVariant;

namespace nuvrel::test {

class BusStandIn {
public:
    // The reply of a call (a tuple, or null for none), or a thrown std::runtime_error, which
    // the caller receives as a D-Bus error.
    using Handler = std::function<GVariant*(const std::string& path, const std::string& method,
                                            GVariant* parameters)>;
    // Owns `name` and serves each object path with the interfaces of its introspection XML.
    BusStandIn(const std::string& address, const std::string& name,
               const std::map<std::string, std::string>& introspectionByPath, Handler handler);
    ~BusStandIn();

private:
    Handler handler_;
    GMainContext* context_;
    GMainLoop* loop_;
    GDBusConnection* connection_;
    std::thread thread_;
};

}  // namespace nuvrel::test
