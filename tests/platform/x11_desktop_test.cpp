// Window moves and screen captures in a real X11 session: Xvfb, openbox, a real client window.
#include <gtest/gtest.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "desktop/window_manage_capability.h"
#include "platform/linux/live_system_commands.h"
#include "platform/linux/x11_window_system.h"
#include "support/private_bus.h"
#include "support/x11_session.h"

namespace nuvrel::platform {
namespace {

using core::WindowAction;

std::string commandOutput(const std::string& command) {
    std::string text;
    FILE* out = ::popen(command.c_str(), "r");
    char buffer[512];
    while (out && std::fgets(buffer, sizeof buffer, out)) text += buffer;
    if (out) ::pclose(out);
    return text;
}

// The client window's x, y, width and height in root coordinates, as xwininfo reads them.
std::array<int, 4> clientGeometry(xcb_window_t window) {
    const std::string info = commandOutput("xwininfo -id " + std::to_string(window));
    std::array<int, 4> values{};
    const char* labels[] = {
        "Absolute upper-left X:", "Absolute upper-left Y:", "Width:", "Height:"};
    for (int i = 0; i < 4; ++i)
        values[i] = std::atoi(info.c_str() + info.find(labels[i]) + std::strlen(labels[i]));
    return values;
}

TEST(X11Desktop, LayoutsPlaceTheActiveWindowsFrameAndCapturesAreScreenSizedPngs) {
    test::X11Session session;
    ASSERT_TRUE(session.ready());
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const xcb_window_t window = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 40, 40, 300, 200, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS,
                        XCB_ATOM_STRING, 8, 12, "probe\0Probe\0");
    // Managed once openbox has framed it. A window manager that is still starting may drop
    // the first map request: asked again until it is framed.
    int left = 0, right = 0, top = 0, bottom = 0;
    for (int i = 0; i < 100 && top == 0; ++i) {
        if (i % 10 == 0) xcb_map_window(connection, window), xcb_flush(connection);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        const std::string extents =
            commandOutput("xprop -id " + std::to_string(window) + " _NET_FRAME_EXTENTS");
        if (extents.find("= ") != std::string::npos)
            std::sscanf(extents.c_str() + extents.find("= ") + 2, "%d, %d, %d, %d", &left, &right,
                        &top, &bottom);
    }
    ASSERT_GT(top, 0) << "openbox did not frame the window";
    const auto windows = X11WindowSystem::connect();
    ASSERT_TRUE(windows);

    // Frames y-down: the Xvfb screen is 1280x800 with no panels.
    const std::array<std::pair<WindowAction, std::array<int, 4>>, 4> cases = {{
        {WindowAction::leftHalf, {0, 0, 640, 800}},
        {WindowAction::maximize, {0, 0, 1280, 800}},
        {WindowAction::topRightQuarter, {640, 0, 640, 400}},
        {WindowAction::center, {192, 120, 896, 560}},
    }};
    for (const auto& [action, frame] : cases) {
        const auto result =
            desktop::WindowManageCapability::execute(action, core::AppLanguage::en, windows.get());
        const auto* arranged = result.get<core::CapabilityResult::WindowArranged>();
        ASSERT_TRUE(arranged);
        EXPECT_EQ(arranged->appName, "Probe");
        const std::array<int, 4> expected = {frame[0] + left, frame[1] + top,
                                             frame[2] - left - right, frame[3] - top - bottom};
        std::array<int, 4> actual{};
        for (int i = 0; i < 100 && (actual = clientGeometry(window)) != expected; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
        EXPECT_EQ(actual, expected) << core::rawValue(action);
    }
    xcb_disconnect(connection);

    const auto folder =
        std::filesystem::temp_directory_path() / ("nuvrel-shot-" + std::to_string(::getpid()));
    // A session bus without a desktop portal: the capture falls to the tools.
    test::PrivateBus bus;
    LiveSystemCommandSettings settings;
    settings.screenshotFolder = folder;
    const auto sessionBus = SessionBus::connect();
    ASSERT_TRUE(sessionBus);
    settings.sessionBus = [sessionBus] { return sessionBus; };
    const std::string shot = liveSystemCommandOperations(settings).takeScreenshot();
    EXPECT_EQ(commandOutput("identify -format '%m %wx%h' '" + shot + "'"), "PNG 1280x800");
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace nuvrel::platform
