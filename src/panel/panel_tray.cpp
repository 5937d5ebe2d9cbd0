#include "panel/panel_tray.h"

#include <QSystemTrayIcon>

#include "core/localized_strings.h"

namespace nuvrel::panel {

PanelTray::PanelTray(std::shared_ptr<app::AppState> state, Actions actions)
    : state_(std::move(state)) {
    const auto entry = [this](std::function<void()> action) {
        QAction* added = menu_.addAction(QString());
        QObject::connect(added, &QAction::triggered, [action = std::move(action)] { action(); });
        return added;
    };
    open_ = entry(std::move(actions.open));
    settings_ = entry(std::move(actions.settings));
    menu_.addSeparator();
    quit_ = entry(std::move(actions.quit));
    settings_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    quit_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    refreshTitles();
    if (!QSystemTrayIcon::isSystemTrayAvailable()) return;
    // The program embeds its icon (apps/nuvrel-panel); an installed theme's copy comes first.
    icon_ =
        std::make_unique<QSystemTrayIcon>(QIcon::fromTheme("nuvrel", QIcon(":/nuvrel/nuvrel.svg")));
    icon_->setToolTip("Nuvrel");
    icon_->setContextMenu(&menu_);
    // A click on the item itself opens the panel, as the menu's first entry does.
    QObject::connect(icon_.get(), &QSystemTrayIcon::activated,
                     [this](QSystemTrayIcon::ActivationReason reason) {
                         if (reason == QSystemTrayIcon::Trigger) open_->trigger();
                     });
    icon_->show();
}

PanelTray::~PanelTray() = default;

void PanelTray::refreshTitles() {
    // Every state change calls this; the desktop hears of new titles only when they change.
    if (titlesLanguage_ == state_->lang()) return;
    titlesLanguage_ = state_->lang();
    const auto& strings = core::LocalizedStrings::strings(*titlesLanguage_);
    // "Ask Nuvrel", the field's own invitation, names the entry that opens the panel.
    open_->setText(QString::fromStdString(strings.placeholder));
    settings_->setText(QString::fromStdString(strings.settingsLabel));
    quit_->setText(QString::fromStdString(strings.quitMenuItemLabel));
}

}  // namespace nuvrel::panel
