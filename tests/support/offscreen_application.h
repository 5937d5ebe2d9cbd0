#pragma once
// The one QApplication of a panel test process, on Qt's offscreen platform.

#include <QApplication>
#include <cstdlib>

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

}  // namespace nuvrel::test
