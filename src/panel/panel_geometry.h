#pragma once
// Where the panel goes on a screen: a column at most 740 units wide, its window's top edge at
// a fixed share of the screen's height, growing downward with its content. Plain numbers in
// the coordinates of the windowing system (y counted downward), so that no display is needed.

namespace nuvrel::panel {

struct Rect {
    double x = 0, y = 0, width = 0, height = 0;
    double bottom() const { return y + height; }
    bool operator==(const Rect&) const = default;
};

// What a missing screen counts as.
inline constexpr Rect fallbackScreen{0, 0, 1440, 900};

// The smaller of 0.92 times the screen's width and 740.
double columnWidth(double screenWidth);

// The window's frame for content of `wantedHeight` in a column of `column` units, on a screen
// with its full and its usable (panels and docks left out) frames. The window is wider than
// the column by a margin of 80 on each side, at least 204 high, and cut to the room between
// its top edge and the lower of the two bottoms.
Rect panelFrame(const Rect& screen, const Rect& visible, double column, double wantedHeight);

}  // namespace nuvrel::panel
