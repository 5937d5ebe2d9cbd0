#pragma once
// The display server, reached on the first window command rather than at every start: most
// sentences never move a window, and a connection costs round trips to the X server.

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "core/app_language.h"
#include "desktop/window_system.h"

namespace nuvrel::app {

// One connection for the process, made by the first call that needs it; nothing (kept) when
// there is no display to connect to.
class WindowSystemOnFirstUse {
public:
    explicit WindowSystemOnFirstUse(std::function<std::shared_ptr<desktop::WindowSystem>()> connect)
        : connect_(std::move(connect)) {}
    std::shared_ptr<desktop::WindowSystem> get();

private:
    std::function<std::shared_ptr<desktop::WindowSystem>()> connect_;
    std::once_flag once_;
    std::shared_ptr<desktop::WindowSystem> connected_;
};

// A run's window system over the shared connection. Without a display the first question
// fails with the card that says window control needs an X11 session, in the run's language.
class LazyWindowSystem final : public desktop::WindowSystem {
public:
    LazyWindowSystem(std::shared_ptr<WindowSystemOnFirstUse> shared, core::AppLanguage language)
        : shared_(std::move(shared)), language_(language) {}

    bool isTrusted() override;
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
    // Throws core::UserFacingError when there is no display.
    desktop::WindowSystem& connected();
    std::shared_ptr<WindowSystemOnFirstUse> shared_;
    core::AppLanguage language_;
};

}  // namespace nuvrel::app
