#pragma once
// The one QApplication of a panel test process, on Qt's offscreen platform.

#include <QApplication>
#include <cstdlib>

namespace nuvrel::test {

inline QApplication& offscreenApplication() {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static int argc = 1;
    static char name[] = "panel_tests";
    static char* argv[] = {name, nullptr};
    static auto* app = new QApplication(argc, argv);  // lives as long as the process
    return *app;
}

}  // namespace nuvrel::test
