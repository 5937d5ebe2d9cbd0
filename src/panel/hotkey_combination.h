#pragma once
// The stored shortcut (a key code and a modifier mask in the values the settings keep, the
// default being 49 and 2048) in the terms of an X11 key grab: a key symbol and the X modifier
// mask. Command is the Super key on Linux, Option is Alt.

#include <cstdint>
#include <optional>
#include <string>

namespace nuvrel::panel {

struct X11KeyCombination {
    std::uint32_t keysym = 0;
    std::uint16_t modifiers = 0;  // ShiftMask, ControlMask, Mod1Mask (Alt), Mod4Mask (Super)
    bool operator==(const X11KeyCombination&) const = default;
};

// Nothing for a key this table does not know, or with none of the four modifiers.
std::optional<X11KeyCombination> x11Combination(std::uint32_t keyCode, std::uint32_t modifiers);

// The stored key code of an X11 key symbol (a lower-case letter, a digit, a sign of the ANSI
// layout, Return, Tab, Space, Escape); nothing for any other key.
std::optional<std::uint32_t> keyCodeForKeysym(std::uint32_t keysym);

// The shortcut as the global-shortcuts portal takes a preferred trigger ("ALT+space",
// "CTRL+SHIFT+k": modifiers, then the key's XKB name); nothing for a key the table does not
// know or with no modifier.
std::optional<std::string> portalTrigger(std::uint32_t keyCode, std::uint32_t modifiers);

// "Alt+Space", "Ctrl+Shift+K": the shortcut as Linux desktops name it.
std::string shortcutName(std::uint32_t keyCode, std::uint32_t modifiers);

}  // namespace nuvrel::panel
