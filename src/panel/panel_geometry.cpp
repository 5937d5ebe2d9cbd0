#include "panel/panel_geometry.h"

#include <algorithm>

namespace nuvrel::panel {

namespace {
constexpr double maximumColumn = 740;
constexpr double sideMargins = 160;
constexpr double minimumHeight = 204;
}  // namespace

double columnWidth(double screenWidth) {
    return std::min(0.92 * screenWidth, maximumColumn);
}

Rect panelFrame(const Rect& screen, const Rect& visible, double column, double wantedHeight) {
    // The top edge lies 0.82 of the height plus 80 above the screen's bottom.
    const double top = screen.bottom() - (0.82 * screen.height + 80);
    // Whichever of the two bottoms reaches less far down bounds the room (a bottom panel).
    const double room = std::min(screen.bottom(), visible.bottom()) - top;
    double height = std::max(wantedHeight, minimumHeight);
    height = room <= minimumHeight ? minimumHeight : std::min(height, room);
    const double width = column + sideMargins;
    return Rect{screen.x + (screen.width - width) / 2, top, width, height};
}

}  // namespace nuvrel::panel
