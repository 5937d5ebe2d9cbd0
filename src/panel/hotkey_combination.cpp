#include "panel/hotkey_combination.h"

#include <array>
#include <cctype>
#include <utility>

namespace nuvrel::panel {

namespace {

constexpr std::uint32_t commandMask = 256, shiftMask = 512, optionMask = 2048, controlMask = 4096;
constexpr std::uint16_t xShift = 1, xControl = 4, xAlt = 8, xSuper = 64;

// Key codes of the ANSI layout and the character each stands for.
constexpr std::array<std::pair<std::uint32_t, char>, 48> printableKeys{{
    {0, 'a'},   {1, 's'},  {2, 'd'},  {3, 'f'},  {4, 'h'},  {5, 'g'},   {6, 'z'},  {7, 'x'},
    {8, 'c'},   {9, 'v'},  {11, 'b'}, {12, 'q'}, {13, 'w'}, {14, 'e'},  {15, 'r'}, {16, 'y'},
    {17, 't'},  {18, '1'}, {19, '2'}, {20, '3'}, {21, '4'}, {22, '6'},  {23, '5'}, {24, '='},
    {25, '9'},  {26, '7'}, {27, '-'}, {28, '8'}, {29, '0'}, {30, ']'},  {31, 'o'}, {32, 'u'},
    {33, '['},  {34, 'i'}, {35, 'p'}, {37, 'l'}, {38, 'j'}, {39, '\''}, {40, 'k'}, {41, ';'},
    {42, '\\'}, {43, ','}, {44, '/'}, {45, 'n'}, {46, 'm'}, {47, '.'},  {49, ' '}, {50, '`'},
}};

struct NamedKey {
    std::uint32_t keyCode;
    std::uint32_t keysym;
    const char* name;
};
constexpr std::array<NamedKey, 4> namedKeys{
    {{36, 0xff0d, "Return"}, {48, 0xff09, "Tab"}, {49, 0x20, "Space"}, {53, 0xff1b, "Escape"}}};

}  // namespace

std::optional<X11KeyCombination> x11Combination(std::uint32_t keyCode, std::uint32_t modifiers) {
    std::uint16_t mask = 0;
    if (modifiers & commandMask) mask |= xSuper;
    if (modifiers & shiftMask) mask |= xShift;
    if (modifiers & optionMask) mask |= xAlt;
    if (modifiers & controlMask) mask |= xControl;
    if (mask == 0) return std::nullopt;
    for (const auto& key : namedKeys) {
        if (key.keyCode == keyCode) return X11KeyCombination{key.keysym, mask};
    }
    for (const auto& [code, character] : printableKeys) {
        // Latin-1 key symbols equal the character's code.
        if (code == keyCode) return X11KeyCombination{static_cast<unsigned char>(character), mask};
    }
    return std::nullopt;
}

std::optional<std::uint32_t> keyCodeForKeysym(std::uint32_t keysym) {
    for (const auto& key : namedKeys) {
        if (key.keysym == keysym) return key.keyCode;
    }
    for (const auto& [code, character] : printableKeys) {
        if (static_cast<unsigned char>(character) == keysym) return code;
    }
    return std::nullopt;
}

std::optional<std::string> portalTrigger(std::uint32_t keyCode, std::uint32_t modifiers) {
    const auto combination = x11Combination(keyCode, modifiers);
    if (!combination) return std::nullopt;
    // XKB names of the signs; letters and digits are their own names.
    static constexpr std::array<std::pair<char, const char*>, 11> signs{{{'=', "equal"},
                                                                         {'-', "minus"},
                                                                         {'[', "bracketleft"},
                                                                         {']', "bracketright"},
                                                                         {'\'', "apostrophe"},
                                                                         {';', "semicolon"},
                                                                         {'\\', "backslash"},
                                                                         {',', "comma"},
                                                                         {'/', "slash"},
                                                                         {'.', "period"},
                                                                         {'`', "grave"}}};
    std::string trigger;
    if (combination->modifiers & xControl) trigger += "CTRL+";
    if (combination->modifiers & xAlt) trigger += "ALT+";
    if (combination->modifiers & xShift) trigger += "SHIFT+";
    if (combination->modifiers & xSuper) trigger += "LOGO+";
    for (const auto& key : namedKeys) {
        if (key.keyCode == keyCode) {
            std::string name = key.name;
            if (name == "Space") name = "space";
            return trigger + name;
        }
    }
    const auto character = static_cast<char>(combination->keysym);
    for (const auto& [sign, name] : signs) {
        if (sign == character) return trigger + name;
    }
    return trigger + character;
}

std::string shortcutName(std::uint32_t keyCode, std::uint32_t modifiers) {
    std::string name;
    if (modifiers & controlMask) name += "Ctrl+";
    if (modifiers & optionMask) name += "Alt+";
    if (modifiers & shiftMask) name += "Shift+";
    if (modifiers & commandMask) name += "Super+";
    for (const auto& key : namedKeys) {
        if (key.keyCode == keyCode) return name + key.name;
    }
    for (const auto& [code, character] : printableKeys) {
        if (code == keyCode)
            return name + static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    }
    return name + "#" + std::to_string(keyCode);
}

}  // namespace nuvrel::panel
