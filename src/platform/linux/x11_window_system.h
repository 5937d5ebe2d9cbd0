#pragma once
// Windows and screens of an X11 session through xcb: the active window and its process from
// EWMH (_NET_ACTIVE_WINDOW, _NET_WM_PID, _NET_CLIENT_LIST_STACKING), moves through
// _NET_MOVERESIZE_WINDOW with the frame's extents taken off, displays from RandR monitors cut
// to _NET_WORKAREA. A maximised window is un-maximised before it is placed.
//
// Threading: one connection behind a mutex; safe from any thread.

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "desktop/window_system.h"

namespace nuvrel::platform {

class X11WindowSystem : public desktop::WindowSystem {
public:
    // The display of $DISPLAY; nothing in a Wayland session or without a display.
    static std::shared_ptr<X11WindowSystem> connect();
    ~X11WindowSystem() override;
    X11WindowSystem(const X11WindowSystem&) = delete;
    X11WindowSystem& operator=(const X11WindowSystem&) = delete;

    bool isTrusted() override { return true; }
    bool isProcessRunning(std::int32_t pid) override;
    std::int32_t currentProcessID() override;
    std::optional<desktop::FrontmostApplication> frontmostApplication() override;
    std::optional<desktop::WindowHandle> focusedWindow(std::optional<std::int32_t> pid) override;
    std::optional<desktop::Point> position(desktop::WindowHandle window) override;
    std::vector<desktop::Screen> screens() override;
    std::optional<desktop::Screen> mainScreen() override;
    bool setPosition(desktop::WindowHandle window, desktop::Point topLeft) override;
    bool setSize(desktop::WindowHandle window, double width, double height) override;
    std::string applicationName(desktop::WindowHandle window) override;

private:
    struct Connection;
    explicit X11WindowSystem(std::unique_ptr<Connection> connection);
    std::mutex mutex_;
    std::unique_ptr<Connection> x_;
};

}  // namespace nuvrel::platform
