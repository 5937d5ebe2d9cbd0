#include "desktop/window_geometry.h"

namespace nuvrel::desktop::WindowGeometry {

Rect targetRect(core::WindowAction action, const Rect& frame) {
    using core::WindowAction;
    const double w = frame.width;
    const double h = frame.height;
    switch (action) {
        case WindowAction::leftHalf:
            return {frame.minX(), frame.minY(), w * 0.5, h};
        case WindowAction::rightHalf:
            return {frame.midX(), frame.minY(), w * 0.5, h};
        case WindowAction::topHalf:
            return {frame.minX(), frame.midY(), w, h * 0.5};
        case WindowAction::bottomHalf:
            return {frame.minX(), frame.minY(), w, h * 0.5};
        case WindowAction::topLeftQuarter:
            return {frame.minX(), frame.midY(), w * 0.5, h * 0.5};
        case WindowAction::topRightQuarter:
            return {frame.midX(), frame.midY(), w * 0.5, h * 0.5};
        case WindowAction::bottomLeftQuarter:
            return {frame.minX(), frame.minY(), w * 0.5, h * 0.5};
        case WindowAction::bottomRightQuarter:
            return {frame.midX(), frame.minY(), w * 0.5, h * 0.5};
        case WindowAction::maximize:
            return frame;
        case WindowAction::center:
        case WindowAction::nextDisplay: {
            const double width = w * 0.7;
            const double height = h * 0.7;
            return {frame.midX() - width * 0.5, frame.midY() - height * 0.5, width, height};
        }
    }
    return frame;
}

}  // namespace nuvrel::desktop::WindowGeometry
