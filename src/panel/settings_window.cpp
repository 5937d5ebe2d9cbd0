#include "panel/settings_window.h"

#include <QHideEvent>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <array>

#include "core/localized_strings.h"
#include "panel/model_installation.h"
#include "panel/settings_tabs.h"

namespace nuvrel::panel {

namespace {
constexpr std::array<std::string_view, 5> tabRawValues{"general", "model", "search", "permissions",
                                                       "credits"};
}

std::optional<SettingsTab> settingsTabFromRawValue(std::string_view raw) {
    for (std::size_t i = 0; i < tabRawValues.size(); ++i) {
        if (tabRawValues[i] == raw) return static_cast<SettingsTab>(i);
    }
    return std::nullopt;
}

SettingsWindow::SettingsWindow(std::shared_ptr<app::AppState> state, Services services)
    : QWidget(nullptr, Qt::Window), state_(std::move(state)), services_(std::move(services)) {
    setObjectName("settings");
    new QVBoxLayout(this);
    build();
    resize(560, 520);
}

SettingsWindow::~SettingsWindow() = default;

void SettingsWindow::build() {
    const int tab = tabs_ ? tabs_->currentIndex() : 0;
    if (tabs_) {
        search_->commitAll();
        tabs_->hide();
        tabs_->deleteLater();  // a control of the old tabs may be the sender of this change
    }
    builtLanguage_ = state_->lang();
    const auto& strings = core::LocalizedStrings::strings(builtLanguage_);
    setWindowTitle(QString::fromStdString(strings.settingsTitle));
    tabs_ = new QTabWidget(this);
    general_ = new GeneralSettingsTab(state_);
    model_ = new ModelSettingsTab(state_, services_.installation);
    search_ = new SearchSettingsTab(state_);
    privacy_ = new PrivacySettingsTab(state_, services_);
    tabs_->addTab(general_, QString::fromStdString(strings.settingsTabGeneralLabel));
    tabs_->addTab(model_, QString::fromStdString(strings.settingsTabModelLabel));
    tabs_->addTab(search_, QString::fromStdString(strings.settingsTabSearchLabel));
    tabs_->addTab(privacy_, QString::fromStdString(strings.networkActivitySectionTitle));
    tabs_->addTab(new AboutSettingsTab(builtLanguage_),
                  QString::fromStdString(strings.settingsTabCreditsLabel));
    tabs_->setCurrentIndex(tab);
    QObject::connect(tabs_, &QTabWidget::currentChanged, this, [this](int index) {
        search_->commitAll();
        if (index == static_cast<int>(SettingsTab::permissions)) privacy_->refresh();
    });
    layout()->addWidget(tabs_);
}

void SettingsWindow::showTab(SettingsTab tab) {
    tabs_->setCurrentIndex(static_cast<int>(tab));
    if (services_.installation) services_.installation->refreshInstalled();
    privacy_->refresh();
    show();
    raise();
    activateWindow();
}

SettingsTab SettingsWindow::currentTab() const {
    return static_cast<SettingsTab>(tabs_->currentIndex());
}

void SettingsWindow::startHotkeyRecording() {
    showTab(SettingsTab::general);
    general_->startRecording();
}

void SettingsWindow::refresh() {
    if (state_->lang() != builtLanguage_) {
        if (rebuildPending_) return;
        rebuildPending_ = true;
        QTimer::singleShot(0, this, [this] {
            rebuildPending_ = false;
            build();
        });
        return;
    }
    general_->refresh();
    model_->refresh();
    search_->refresh();
}

void SettingsWindow::hideEvent(QHideEvent* event) {
    search_->commitAll();
    QWidget::hideEvent(event);
}

}  // namespace nuvrel::panel
