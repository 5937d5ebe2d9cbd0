// Window moves and screen captures in a real X11 session: Xvfb, openbox, a real client window.
#include <gtest/gtest.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "desktop/window_manage_capability.h"
#include "platform/linux/live_system_commands.h"
#include "platform/linux/x11_window_system.h"
#include "support/result_case.h"
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

int field(const std::string& text, const std::string& label) {
    const auto at = text.find(label);
    return at == std::string::npos ? -1 : std::atoi(text.c_str() + at + label.size());
}

// x, y, width, height of the client window in root coordinates, as xwininfo reads them.
std::array<int, 4> clientGeometry(xcb_window_t window) {
    const std::string info = commandOutput("xwininfo -id " + std::to_string(window));
    return {field(info, "Absolute upper-left X:"), field(info, "Absolute upper-left Y:"),
            field(info, "Width:"), field(info, "Height:")};
}

class X11Desktop : public ::testing::Test {
protected:
    void SetUp() override {
        if (!session.ready()) GTEST_SKIP() << "Xvfb could not start";
        connection = xcb_connect(nullptr, nullptr);
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        window = xcb_generate_id(connection);
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 40, 40, 300, 200,
                          0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS,
                            XCB_ATOM_STRING, 8, 12, "probe\0Probe\0");
        xcb_map_window(connection, window);
        xcb_flush(connection);
        // Managed once openbox has framed it and made it the active window.
        for (int i = 0; i < 100; ++i) {
            const std::string root = commandOutput("xprop -root _NET_ACTIVE_WINDOW");
            if (std::strtoul(root.c_str() + root.find("# ") + 2, nullptr, 16) == window) break;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        const std::string extents =
            commandOutput("xprop -id " + std::to_string(window) + " _NET_FRAME_EXTENTS");
        std::sscanf(extents.c_str() + extents.find("= ") + 2, "%d, %d, %d, %d", &left, &right, &top,
                    &bottom);
        windows = X11WindowSystem::connect();
    }
    void TearDown() override {
        if (connection) xcb_disconnect(connection);
    }

    test::X11Session session;
    xcb_connection_t* connection = nullptr;
    xcb_window_t window = 0;
    int left = 0, right = 0, top = 0, bottom = 0;
    std::shared_ptr<X11WindowSystem> windows;
};

TEST_F(X11Desktop, LayoutsPlaceTheActiveWindowsFrameInTheWorkArea) {
    ASSERT_TRUE(windows);
    ASSERT_GT(top, 0) << "openbox did not frame the window";
    struct Case {
        WindowAction action;
        std::array<int, 4> frame;  // y-down: the Xvfb screen is 1280x800 with no panels
    };
    for (const Case& c : {Case{WindowAction::leftHalf, {0, 0, 640, 800}},
                          Case{WindowAction::maximize, {0, 0, 1280, 800}},
                          Case{WindowAction::topRightQuarter, {640, 0, 640, 400}},
                          Case{WindowAction::center, {192, 120, 896, 560}}}) {
        const auto result = desktop::WindowManageCapability::execute(
            c.action, core::AppLanguage::en, windows.get());
        EXPECT_EQ(test::caseOf<core::CapabilityResult::WindowArranged>(result),
                  (core::CapabilityResult::WindowArranged{c.action, "Probe"}));
        const std::array<int, 4> expected = {c.frame[0] + left, c.frame[1] + top,
                                             c.frame[2] - left - right, c.frame[3] - top - bottom};
        std::array<int, 4> actual{};
        for (int i = 0; i < 100 && (actual = clientGeometry(window)) != expected; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
        EXPECT_EQ(actual, expected) << core::rawValue(c.action);
    }
}

TEST_F(X11Desktop, AScreenshotThroughImportIsAPngOfTheScreensSize) {
    const auto folder =
        std::filesystem::temp_directory_path() / ("nuvrel-shot-" + std::to_string(::getpid()));
    LiveSystemCommandSettings settings;
    settings.screenshotFolder = folder;
    const std::string path = liveSystemCommandOperations(settings).takeScreenshot();
    std::ifstream file(path, std::ios::binary);
    std::array<unsigned char, 24> head{};
    file.read(reinterpret_cast<char*>(head.data()), head.size());
    EXPECT_EQ(std::string(head.begin() + 1, head.begin() + 4), "PNG") << path;
    const auto bigEndian = [&](int at) {
        return head[at] << 24 | head[at + 1] << 16 | head[at + 2] << 8 | head[at + 3];
    };
    EXPECT_EQ(bigEndian(16), 1280);
    EXPECT_EQ(bigEndian(20), 800);
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace nuvrel::platform
