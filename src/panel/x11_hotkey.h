#pragma once
// The global shortcut on X11: a key grab on the root window through Qt's own connection to
// the X server, and the window that had the focus before the panel, to give it back.
// Elsewhere (Wayland, no display) it is unavailable and the desktop's own shortcut runs
// `nuvrel-panel --toggle`.
//
// Threading: the GUI thread; the handler runs inside Qt's event processing.

#include <QAbstractNativeEventFilter>
#include <cstdint>
#include <functional>

#include "base/diagnostics.h"

struct xcb_connection_t;

namespace nuvrel::panel {

class X11Hotkey : public QAbstractNativeEventFilter {
public:
    X11Hotkey(base::Diagnostics diagnostics, std::function<void()> onPressed);
    ~X11Hotkey() override;
    X11Hotkey(const X11Hotkey&) = delete;
    X11Hotkey& operator=(const X11Hotkey&) = delete;

    bool available() const { return connection_ != nullptr; }

    // Grabs the stored combination; false (and a line on the diagnostics) when another
    // program holds it or the key has no X11 equivalent.
    bool registerCombination(std::uint32_t keyCode, std::uint32_t modifiers, bool atLaunch);
    // Drops the grab and takes the new one; on failure the previous combination is grabbed
    // again and the answer is false.
    bool reregister(std::uint32_t keyCode, std::uint32_t modifiers);

    // The window that has the focus now (read before the panel shows) ...
    void noteActiveWindow();
    // ... and focus given back to it (after Escape closed the panel).
    void restoreActiveWindow();

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    bool grab(std::uint32_t keyCode, std::uint32_t modifiers);
    void ungrab();
    std::uint32_t atom(const char* name);

    base::Diagnostics diagnostics_;
    std::function<void()> onPressed_;
    xcb_connection_t* connection_ = nullptr;
    std::uint32_t root_ = 0;
    std::uint8_t grabbedKey_ = 0;
    std::uint16_t grabbedModifiers_ = 0;
    std::uint32_t keyCode_ = 0;
    std::uint32_t modifiers_ = 0;
    std::uint32_t previousWindow_ = 0;
};

}  // namespace nuvrel::panel
