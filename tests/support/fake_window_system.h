#pragma once
// A desktop for window tests: one window (handle 9) of the front application, screens as the
// test gives them; records what it was asked to do.

#include <optional>
#include <string>
#include <vector>

#include "desktop/window_system.h"

namespace nuvrel::test {

class FakeWindows : public desktop::WindowSystem {
public:
    explicit FakeWindows(std::vector<desktop::Screen> screens) : all(std::move(screens)) {}
    bool isTrusted() override { return trusted; }
    bool isProcessRunning(std::int32_t pid) override { return pid == 77; }
    std::int32_t currentProcessID() override { return 1; }
    std::optional<desktop::FrontmostApplication> frontmostApplication() override { return front; }
    std::optional<desktop::WindowHandle> focusedWindow(std::optional<std::int32_t> pid) override {
        askedFor = pid;
        return desktop::WindowHandle{9};
    }
    std::optional<desktop::Point> position(desktop::WindowHandle) override { return topLeft; }
    std::vector<desktop::Screen> screens() override { return all; }
    std::optional<desktop::Screen> mainScreen() override {
        if (all.empty()) return std::nullopt;
        return all.front();
    }
    bool setPosition(desktop::WindowHandle, desktop::Point point) override {
        moved = point;
        return true;
    }
    bool setSize(desktop::WindowHandle, double w, double h) override {
        sized = desktop::Point{w, h};
        return true;
    }
    std::string applicationName(desktop::WindowHandle) override { return "Editor"; }

    bool trusted = true;
    std::optional<desktop::FrontmostApplication> front = desktop::FrontmostApplication{42};
    std::optional<desktop::Point> topLeft;
    std::vector<desktop::Screen> all;
    std::optional<std::int32_t> askedFor;
    desktop::Point moved, sized;
};

}  // namespace nuvrel::test
