#include "support/private_bus.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace nuvrel::test {

PrivateBus::PrivateBus() {
    static std::atomic<int> made{0};
    config_ = std::filesystem::temp_directory_path() /
              ("nuvrel-private-bus-" + std::to_string(::getpid()) + "-" + std::to_string(made++) +
               ".conf");
    std::ofstream(config_) << "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>"
                              "<policy context=\"default\"><allow send_destination=\"*\" "
                              "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/>"
                              "</policy></busconfig>\n";
    const std::string command =
        "dbus-daemon --config-file=" + config_.string() + " --fork --print-address=1 --print-pid=1";
    FILE* out = ::popen(command.c_str(), "r");
    char line[512];
    if (out && std::fgets(line, sizeof line, out))
        address = std::string(line, std::strcspn(line, "\n"));
    if (out && std::fgets(line, sizeof line, out)) pid = std::atoi(line);
    if (out) ::pclose(out);
    environment_.set("DBUS_SESSION_BUS_ADDRESS", address.c_str());
}

PrivateBus::~PrivateBus() {
    if (pid > 0) ::kill(pid, SIGTERM);
    // The daemon reads its configuration again when the file changes: it goes last.
    std::filesystem::remove(config_);
}

}  // namespace nuvrel::test
