#pragma once
// A private D-Bus bus for one test: dbus-daemon started for it and stopped with it.

#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace nuvrel::test {

class PrivateBus {
public:
    PrivateBus() {
        FILE* out = ::popen("dbus-daemon --session --fork --print-address=1 --print-pid=1", "r");
        char line[512];
        if (out && std::fgets(line, sizeof line, out))
            address = std::string(line, std::strcspn(line, "\n"));
        if (out && std::fgets(line, sizeof line, out)) pid = std::atoi(line);
        if (out) ::pclose(out);
    }
    ~PrivateBus() {
        if (pid > 0) ::kill(pid, SIGTERM);
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    std::string address;
    int pid = 0;
};

}  // namespace nuvrel::test
