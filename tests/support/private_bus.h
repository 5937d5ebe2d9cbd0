#pragma once
// A private session bus for one test: its own dbus-daemon with no service files, so that
// nothing is started on demand (no key store, no notification daemon) unless the test starts
// it. DBUS_SESSION_BUS_ADDRESS points at it while the object lives; `address` also serves a
// test that stands a system service (logind, GeoClue) on it.

#include <filesystem>
#include <string>

#include "support/environment_override.h"

namespace nuvrel::test {

class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    // Empty when no daemon could be started.
    std::string address;
    int pid = 0;

private:
    std::filesystem::path config_;
    EnvironmentOverride environment_;
};

}  // namespace nuvrel::test
