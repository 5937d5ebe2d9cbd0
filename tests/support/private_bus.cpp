#include "support/private_bus.h"

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace nuvrel::test {

PrivateBus::PrivateBus() {
    const auto config = std::filesystem::temp_directory_path() /
                        ("nuvrel-private-bus-" + std::to_string(::getpid()) + ".conf");
    std::ofstream(config) << "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>"
                             "<policy context=\"default\"><allow send_destination=\"*\"/>"
                             "<allow own=\"*\"/></policy></busconfig>\n";
    const std::string command =
        "dbus-daemon --config-file=" + config.string() + " --fork --print-address=1 --print-pid=1";
    FILE* out = ::popen(command.c_str(), "r");
    char line[512];
    if (out && std::fgets(line, sizeof line, out))
        address_ = std::string(line, std::strcspn(line, "\n"));
    if (out && std::fgets(line, sizeof line, out)) pid_ = std::atoi(line);
    if (out) ::pclose(out);
    std::filesystem::remove(config);
    environment_.set("DBUS_SESSION_BUS_ADDRESS", address_.c_str());
}

PrivateBus::~PrivateBus() {
    if (pid_ > 0) ::kill(pid_, SIGTERM);
}

}  // namespace nuvrel::test
