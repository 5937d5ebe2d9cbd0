#pragma once
// A private session bus for one test: its own dbus-daemon with no service files, so that
// nothing is started on demand (no key store, no notification daemon) unless the test starts
// it. DBUS_SESSION_BUS_ADDRESS points at it while the object lives.

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

    const std::string& address() const { return address_; }

private:
    std::filesystem::path config_;
    std::string address_;
    int pid_ = 0;
    EnvironmentOverride environment_;
};

}  // namespace nuvrel::test
