#pragma once
// The status item of the resident program: an icon in the desktop's tray with the menu open,
// settings, quit. Qt speaks the StatusNotifierItem protocol (with its menu over
// com.canonical.dbusmenu) where a host is registered with the session's watcher, and the X11
// tray protocol otherwise; with neither the item is simply not made, which is no error.
//
// Threading: the GUI thread.

#include <QMenu>
#include <functional>
#include <memory>
#include <optional>

#include "app/app_state.h"

class QSystemTrayIcon;

namespace nuvrel::panel {

class PanelTray {
public:
    struct Actions {
        std::function<void()> open;
        std::function<void()> settings;
        std::function<void()> quit;
    };

    PanelTray(std::shared_ptr<app::AppState> state, Actions actions);
    ~PanelTray();
    PanelTray(const PanelTray&) = delete;
    PanelTray& operator=(const PanelTray&) = delete;

    // The desktop shows the item.
    bool shown() const { return icon_ != nullptr; }
    // The titles in the language AppState has now: call after each of its changes.
    void refreshTitles();

private:
    std::shared_ptr<app::AppState> state_;
    QMenu menu_;
    QAction* open_;
    QAction* settings_;
    QAction* quit_;
    std::unique_ptr<QSystemTrayIcon> icon_;
    std::optional<core::AppLanguage> titlesLanguage_;
};

}  // namespace nuvrel::panel
