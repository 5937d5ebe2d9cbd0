#pragma once
// A desktop for window tests: one window of the front application (process 42; process 77
// runs too, this process is 1) on the screens the test gives; records the moves.

#include <optional>
#include <string>
#include <vector>

#include "desktop/window_system.h"

namespace nuvrel::test {

class FakeWindows : public desktop::WindowSystem {
public:
    using Point = desktop::Point;
    explicit FakeWindows(std::vector<desktop::Screen> screens) : all(std::move(screens)) {}
    bool isTrusted() override { return trusted; }
    bool isProcessRunning(std::int32_t pid) override { return pid == 77; }
    std::int32_t currentProcessID() override { return 1; }
    std::optional<desktop::FrontmostApplication> frontmostApplication() override { return front; }
    std::optional<desktop::WindowHandle> focusedWindow(std::optional<std::int32_t> pid) override {
        askedFor = pid;
        return 9;
    }
    std::optional<Point> position(desktop::WindowHandle) override { return topLeft; }
    std::vector<desktop::Screen> screens() override { return all; }
    std::optional<desktop::Screen> mainScreen() override {
        return all.empty() ? std::nullopt : std::optional(all.front());
    }
    bool setPosition(desktop::WindowHandle, Point point) override { return (moved = point), true; }
    bool setSize(desktop::WindowHandle, double w, double h) override {
        return (sized = Point{w, h}), true;
    }
    std::string applicationName(desktop::WindowHandle) override { return "Editor"; }

    bool trusted = true;
    std::optional<desktop::FrontmostApplication> front = desktop::FrontmostApplication{42};
    std::optional<Point> topLeft, moved, sized;
    std::vector<desktop::Screen> all;
    std::optional<std::int32_t> askedFor;
};

}  // namespace nuvrel::test
