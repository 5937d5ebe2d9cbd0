#pragma once
// Where a window goes for each layout. Rectangles are in the desktop's y-up coordinates
// (minY at the bottom), as screens report them.

#include <optional>
#include <vector>

#include "core/window_action.h"

namespace nuvrel::desktop {

struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double minX() const { return x; }
    double minY() const { return y; }
    double maxX() const { return x + width; }
    double maxY() const { return y + height; }
    double midX() const { return x + width * 0.5; }
    double midY() const { return y + height * 0.5; }
    // Half-open: the right and top edges belong to the neighbour.
    bool contains(Point point) const {
        return point.x >= minX() && point.x < maxX() && point.y >= minY() && point.y < maxY();
    }
    bool operator==(const Rect&) const = default;
};

// A display: its whole area, and the part that windows may use (without panels and docks).
struct Screen {
    Rect frame{};
    Rect visibleFrame{};
};

namespace WindowGeometry {

// The window's rectangle for the layout within the visible frame. center and nextDisplay
// centre a window at 70 percent of the frame. Pure.
Rect targetRect(core::WindowAction action, const Rect& visibleFrame);

}  // namespace WindowGeometry
}  // namespace nuvrel::desktop
