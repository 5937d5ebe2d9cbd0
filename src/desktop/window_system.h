#pragma once
// The desktop's window and screen facilities that window management needs. Window positions
// are y-down from the primary display's top-left corner; screens are in the desktop's y-up
// coordinates (Rect), the primary display first. The live form is in src/platform.
//
// Threading: calls block briefly (a round trip to the display server) on the caller's thread.
// Implementations are safe to call from any thread: the display server, not a thread, is what
// the calls share.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "desktop/window_geometry.h"

namespace nuvrel::desktop {

using WindowHandle = std::uint64_t;

// The application in front. Not every desktop tells whose a window is: the ID may be unknown.
struct FrontmostApplication {
    std::optional<std::int32_t> pid{};
};

class WindowSystem {
public:
    virtual ~WindowSystem() = default;
    // Whether this program may move other programs' windows.
    virtual bool isTrusted() = 0;
    virtual bool isProcessRunning(std::int32_t pid) = 0;
    virtual std::int32_t currentProcessID() = 0;
    virtual std::optional<FrontmostApplication> frontmostApplication() = 0;
    // The focused window of that process, or with no ID the desktop's active window; nothing
    // when there is none or it cannot be read.
    virtual std::optional<WindowHandle> focusedWindow(std::optional<std::int32_t> pid) = 0;
    // The top-left corner of the window's frame; nothing when it cannot be read.
    virtual std::optional<Point> position(WindowHandle window) = 0;
    virtual std::vector<Screen> screens() = 0;
    // The display that has the user's attention; nothing when the desktop cannot tell.
    virtual std::optional<Screen> mainScreen() = 0;
    // Place the frame's top-left corner, and size the frame; false when the window refused or
    // is gone.
    virtual bool setPosition(WindowHandle window, Point topLeft) = 0;
    virtual bool setSize(WindowHandle window, double width, double height) = 0;
    // The name of the window's application as the user knows it, or the empty text.
    virtual std::string applicationName(WindowHandle window) = 0;
};

}  // namespace nuvrel::desktop
