#pragma once
// The five tabs of the settings window; each builds its rows from AppState and writes every
// change back at once. `refresh` follows AppState after a change made elsewhere.
//
// Threading: the GUI thread.

#include <QWidget>
#include <memory>
#include <string>

#include "app/app_state.h"
#include "panel/hotkey_recorder.h"
#include "panel/search_settings_draft.h"
#include "panel/settings_window.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTreeWidget;
class QVBoxLayout;

namespace nuvrel::panel {

class GeneralSettingsTab : public QWidget {
public:
    explicit GeneralSettingsTab(std::shared_ptr<app::AppState> state);
    void refresh();
    void startRecording();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showRecorder();

    std::shared_ptr<app::AppState> state_;
    HotkeyRecorder recorder_;
    QComboBox* language_;
    QComboBox* appearance_;
    QPushButton* hotkey_;
    QLabel* hotkeyIssue_;
    QCheckBox* network_;
    QCheckBox* memorySaving_;
    QCheckBox* updateCheck_;
};

class ModelSettingsTab : public QWidget {
public:
    ModelSettingsTab(std::shared_ptr<app::AppState> state,
                     std::shared_ptr<ModelInstallation> installation);
    void refresh();

private:
    std::shared_ptr<app::AppState> state_;
    std::shared_ptr<ModelInstallation> installation_;
    QVBoxLayout* rows_;
    QProgressBar* progress_;
    QLabel* error_;
    std::string shown_;  // what the rows were built from, to rebuild only on a change
};

class SearchSettingsTab : public QWidget {
public:
    explicit SearchSettingsTab(std::shared_ptr<app::AppState> state);
    void refresh();
    // Both fields, as leaving them does (the window closing, say).
    void commitAll();

private:
    void commitEndpoint();
    void commitKey();

    std::shared_ptr<app::AppState> state_;
    SearchSettingsDraft draft_;
    QLabel* notice_;
    QLineEdit* endpoint_;
    QLabel* endpointError_;
    QLineEdit* key_;
    QLabel* keyError_;
};

class PrivacySettingsTab : public QWidget {
public:
    PrivacySettingsTab(std::shared_ptr<app::AppState> state,
                       const SettingsWindow::Services& services);
    // Reads the log again.
    void refresh();

private:
    std::shared_ptr<app::AppState> state_;
    SettingsWindow::Services services_;
    QLabel* summary_;
    QTreeWidget* entries_;
};

// The product's version, the model's origin, and the licences of what it ships.
class AboutSettingsTab : public QWidget {
public:
    explicit AboutSettingsTab(core::AppLanguage language);
};

}  // namespace nuvrel::panel
