#include "core/window_action.h"

#include "core/raw_value.h"

namespace nuvrel::core {

std::string_view rawValue(WindowAction action) {
    switch (action) {
        case WindowAction::leftHalf:
            return "leftHalf";
        case WindowAction::rightHalf:
            return "rightHalf";
        case WindowAction::topHalf:
            return "topHalf";
        case WindowAction::bottomHalf:
            return "bottomHalf";
        case WindowAction::topLeftQuarter:
            return "topLeftQuarter";
        case WindowAction::topRightQuarter:
            return "topRightQuarter";
        case WindowAction::bottomLeftQuarter:
            return "bottomLeftQuarter";
        case WindowAction::bottomRightQuarter:
            return "bottomRightQuarter";
        case WindowAction::maximize:
            return "maximize";
        case WindowAction::center:
            return "center";
        case WindowAction::nextDisplay:
            return "nextDisplay";
    }
    return {};
}

std::optional<WindowAction> windowActionFromRawValue(std::string_view raw) {
    return caseWithRawValue(allWindowActions, raw);
}

std::optional<WindowAction> windowActionFromRouterSlot(std::string_view slot) {
    if (auto action = windowActionFromRawValue(slot)) return action;
    // The router's schema offers the quarters under shorter names.
    if (slot == "topLeft") return WindowAction::topLeftQuarter;
    if (slot == "topRight") return WindowAction::topRightQuarter;
    if (slot == "bottomLeft") return WindowAction::bottomLeftQuarter;
    if (slot == "bottomRight") return WindowAction::bottomRightQuarter;
    return std::nullopt;
}

}  // namespace nuvrel::core
