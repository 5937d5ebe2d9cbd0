#include "panel/x11_hotkey.h"

#include <QtGui/qguiapplication_platform.h>
#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>

#include <QGuiApplication>
#include <array>
#include <cstdlib>
#include <string>

#include "panel/hotkey_combination.h"

namespace nuvrel::panel {

namespace {
// Caps Lock and Num Lock must not stop the shortcut: each is grabbed with and without them.
constexpr std::uint16_t lockMask = XCB_MOD_MASK_LOCK, numLockMask = XCB_MOD_MASK_2;
constexpr std::array<std::uint16_t, 4> ignoredModifiers{0, lockMask, numLockMask,
                                                        lockMask | numLockMask};

std::string comboText(std::uint32_t keyCode, std::uint32_t modifiers) {
    return "keyCode=" + std::to_string(keyCode) + " modifiers=" + std::to_string(modifiers);
}
}  // namespace

X11Hotkey::X11Hotkey(base::Diagnostics diagnostics, std::function<void()> onPressed)
    : diagnostics_(std::move(diagnostics)), onPressed_(std::move(onPressed)) {
    auto* x11 = qApp ? qApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    if (!x11 || !x11->connection()) return;
    connection_ = x11->connection();
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    qApp->installNativeEventFilter(this);
}

X11Hotkey::~X11Hotkey() {
    if (!connection_) return;
    ungrab();
    if (qApp) qApp->removeNativeEventFilter(this);
}

bool X11Hotkey::grab(std::uint32_t keyCode, std::uint32_t modifiers) {
    const auto combination = x11Combination(keyCode, modifiers);
    if (!combination) return false;
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(connection_);
    xcb_keycode_t* codes = xcb_key_symbols_get_keycode(symbols, combination->keysym);
    const xcb_keycode_t key = codes ? codes[0] : XCB_NO_SYMBOL;
    std::free(codes);
    xcb_key_symbols_free(symbols);
    if (key == XCB_NO_SYMBOL) return false;
    bool ok = true;
    for (const std::uint16_t extra : ignoredModifiers) {
        const auto cookie =
            xcb_grab_key_checked(connection_, 1, root_, combination->modifiers | extra, key,
                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        if (xcb_generic_error_t* error = xcb_request_check(connection_, cookie)) {
            std::free(error);
            ok = false;
        }
    }
    grabbedKey_ = key;
    grabbedModifiers_ = combination->modifiers;
    if (!ok) ungrab();
    return ok;
}

void X11Hotkey::ungrab() {
    if (!grabbedKey_) return;
    for (const std::uint16_t extra : ignoredModifiers)
        xcb_ungrab_key(connection_, grabbedKey_, root_, grabbedModifiers_ | extra);
    xcb_flush(connection_);
    grabbedKey_ = 0;
}

bool X11Hotkey::registerCombination(std::uint32_t keyCode, std::uint32_t modifiers, bool atLaunch) {
    if (!connection_) return false;
    if (!grab(keyCode, modifiers)) {
        if (atLaunch) {
            diagnostics_.event("hotkey registration failed at launch for " +
                               comboText(keyCode, modifiers) +
                               " — likely already owned by another app");
        }
        return false;
    }
    keyCode_ = keyCode;
    modifiers_ = modifiers;
    return true;
}

bool X11Hotkey::reregister(std::uint32_t keyCode, std::uint32_t modifiers) {
    if (!connection_) return false;
    const std::uint32_t oldKey = keyCode_, oldModifiers = modifiers_;
    ungrab();
    if (registerCombination(keyCode, modifiers, false)) return true;
    diagnostics_.event("hotkey re-registration failed for " + comboText(keyCode, modifiers) +
                       " (likely already owned by another app) — restoring previous combo " +
                       comboText(oldKey, oldModifiers));
    if (!registerCombination(oldKey, oldModifiers, false)) {
        diagnostics_.event(
            "restoring the previous hotkey ALSO failed — the app has no working hotkey until "
            "Settings is used to set a new one or the app is relaunched");
    }
    return false;
}

std::uint32_t X11Hotkey::atom(const char* name) {
    const auto cookie = xcb_intern_atom(connection_, 0, std::char_traits<char>::length(name), name);
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection_, cookie, nullptr);
    const std::uint32_t value = reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    std::free(reply);
    return value;
}

void X11Hotkey::noteActiveWindow() {
    previousWindow_ = 0;
    if (!connection_) return;
    const auto cookie =
        xcb_get_property(connection_, 0, root_, atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW, 0, 1);
    xcb_get_property_reply_t* reply = xcb_get_property_reply(connection_, cookie, nullptr);
    if (reply && xcb_get_property_value_length(reply) >= 4)
        previousWindow_ = *static_cast<std::uint32_t*>(xcb_get_property_value(reply));
    std::free(reply);
}

void X11Hotkey::restoreActiveWindow() {
    if (!connection_ || !previousWindow_) return;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = previousWindow_;
    message.type = atom("_NET_ACTIVE_WINDOW");
    message.data.data32[0] = 2;  // asked for by a pager-like tool: the user's own choice
    message.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(connection_, 0, root_,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(connection_);
    previousWindow_ = 0;
}

bool X11Hotkey::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t" || !grabbedKey_) return false;
    auto* event = static_cast<xcb_generic_event_t*>(message);
    if ((event->response_type & 0x7f) != XCB_KEY_PRESS) return false;
    auto* press = reinterpret_cast<xcb_key_press_event_t*>(event);
    const std::uint16_t held = press->state & ~(lockMask | numLockMask) & 0xff;
    if (press->detail != grabbedKey_ || held != grabbedModifiers_) return false;
    if (onPressed_) onPressed_();
    return true;
}

}  // namespace nuvrel::panel
