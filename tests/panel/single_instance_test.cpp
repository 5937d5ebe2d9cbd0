// One panel per session over a private session bus: later starts toggle the first and end.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <optional>
#include <thread>

#include "support/environment_override.h"
#include "support/helper_process.h"
#include "support/private_bus.h"
#include "support/temporary_home.h"

namespace {

using namespace std::chrono_literals;
using nuvrel::test::HelperProcess;

// The first panel's Visible property as the bus reports it; nothing while no one serves it.
std::optional<bool> panelVisible() {
    FILE* out = ::popen(
        "dbus-send --session --print-reply --dest=com.nuvrel.Panel /com/nuvrel/Panel "
        "org.freedesktop.DBus.Properties.Get string:com.nuvrel.Panel string:Visible 2>/dev/null",
        "r");
    std::string reply;
    char buffer[256];
    while (out && std::fgets(buffer, sizeof buffer, out)) reply += buffer;
    if (!out || ::pclose(out) != 0) return std::nullopt;
    return reply.find("boolean true") != std::string::npos;
}

std::optional<bool> waitForVisible(std::optional<bool> wanted) {
    std::optional<bool> seen;
    for (int i = 0; i < 200 && (seen = panelVisible()) != wanted; ++i)
        std::this_thread::sleep_for(100ms);
    return seen;
}

int exitStatusOf(HelperProcess& process) {
    const auto status = process.waitForExit(20s);
    return status && WIFEXITED(*status) ? WEXITSTATUS(*status) : -1;
}

TEST(SingleInstance, ASecondStartTogglesTheFirstAndEnds) {
    nuvrel::test::TemporaryHome home;
    nuvrel::test::PrivateBus bus;
    ASSERT_FALSE(bus.address.empty());
    nuvrel::test::EnvironmentOverride environment("QT_QPA_PLATFORM", "offscreen");
    environment.set("XDG_RUNTIME_DIR", home.path().c_str());

    HelperProcess first{{NUVREL_PANEL_PATH, "--background"}};
    ASSERT_EQ(waitForVisible(false), false);
    for (const bool shown : {true, false}) {
        HelperProcess second{{NUVREL_PANEL_PATH, "--toggle"}};
        EXPECT_EQ(exitStatusOf(second), 0);
        EXPECT_EQ(waitForVisible(shown), shown);
    }
    // SIGTERM is an ordinary quit.
    ::kill(first.pid(), SIGTERM);
    EXPECT_EQ(exitStatusOf(first), 0);
    EXPECT_EQ(panelVisible(), std::nullopt);
}

}  // namespace
