#pragma once
// The window layouts; the case number is what the geometry switches on.

#include <array>
#include <optional>
#include <string_view>

namespace nuvrel::core {

enum class WindowAction {
    leftHalf,
    rightHalf,
    topHalf,
    bottomHalf,
    topLeftQuarter,
    topRightQuarter,
    bottomLeftQuarter,
    bottomRightQuarter,
    maximize,
    center,
    nextDisplay,
};

inline constexpr std::array<WindowAction, 11> allWindowActions{
    WindowAction::leftHalf,          WindowAction::rightHalf,
    WindowAction::topHalf,           WindowAction::bottomHalf,
    WindowAction::topLeftQuarter,    WindowAction::topRightQuarter,
    WindowAction::bottomLeftQuarter, WindowAction::bottomRightQuarter,
    WindowAction::maximize,          WindowAction::center,
    WindowAction::nextDisplay,
};

// Raw values equal the case names.
std::string_view rawValue(WindowAction action);
std::optional<WindowAction> windowActionFromRawValue(std::string_view raw);

// The router's "action" slot: a raw value, or the short quarter names "topLeft", "topRight",
// "bottomLeft", "bottomRight". Exact text; anything else gives nothing.
std::optional<WindowAction> windowActionFromRouterSlot(std::string_view slot);

}  // namespace nuvrel::core
