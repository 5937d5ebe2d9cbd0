#pragma once
// The settings window: general (language, appearance, the shortcut and its recorder, the
// network, memory and update switches), the model (the installed files to switch between and
// the curated ones to install, with progress), search (the SearXNG address and the Firecrawl
// key), privacy (the network activity log) and About (version and licences). Every change
// goes through AppState and the key store, the same stores `nuvrel settings` and `nuvrel key`
// write.
//
// Threading: the GUI thread, which is the AppState's main thread.

#include <QWidget>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "app/app_state.h"
#include "app/network_activity_log.h"

class QTabWidget;

namespace nuvrel::panel {

class ModelInstallation;
class GeneralSettingsTab;
class ModelSettingsTab;
class SearchSettingsTab;
class PrivacySettingsTab;

// The tabs in order, by their raw values "general", "model", "search", "permissions",
// "credits"; "permissions" is the privacy tab here, since this desktop asks no permissions of
// its own, and "credits" is the About tab.
enum class SettingsTab { general, model, search, permissions, credits };
std::optional<SettingsTab> settingsTabFromRawValue(std::string_view raw);

class SettingsWindow : public QWidget {
public:
    struct Services {
        // The network activity log, read again each time the privacy tab shows.
        std::filesystem::path networkLogFile;
        std::shared_ptr<ModelInstallation> installation;  // may be null: nothing to install
        std::function<void(const std::string& path)> revealFile;
    };

    SettingsWindow(std::shared_ptr<app::AppState> state, Services services);
    ~SettingsWindow() override;

    void showTab(SettingsTab tab);
    SettingsTab currentTab() const;
    // Shows the general tab with the recorder waiting for a key.
    void startHotkeyRecording();
    // Follows AppState: call after each of its changes.
    void refresh();

protected:
    void hideEvent(QHideEvent* event) override;

private:
    // Every text in the window's language: made again when the language changes.
    void build();

    std::shared_ptr<app::AppState> state_;
    Services services_;
    core::AppLanguage builtLanguage_ = core::AppLanguage::en;
    bool rebuildPending_ = false;
    QTabWidget* tabs_ = nullptr;
    GeneralSettingsTab* general_ = nullptr;
    ModelSettingsTab* model_ = nullptr;
    SearchSettingsTab* search_ = nullptr;
    PrivacySettingsTab* privacy_ = nullptr;
};

}  // namespace nuvrel::panel
