#pragma once
// The one QApplication of a panel test process, on Qt's offscreen platform.

#include <QApplication>
#include <chrono>
#include <cstdlib>
#include <functional>

#include "base/main_queue.h"

namespace nuvrel::test {

inline QApplication& offscreenApplication() {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    // One pixel per pixel whatever the account's scaling: screenshots are compared in pixels.
    for (const char* scaling : {"QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_FONT_DPI"})
        ::unsetenv(scaling);
    static int argc = 1;
    static char name[] = "panel_tests";
    static char* argv[] = {name, nullptr};
    static auto* app = new QApplication(argc, argv);  // lives as long as the process
    return *app;
}

// Turns the program's main queue and Qt's loop until `done`, for at most ten seconds.
inline bool turnLoopsUntil(base::MainQueue& queue, const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        queue.drain();
        QApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

}  // namespace nuvrel::test
