#pragma once
// The panel: one borderless floating window with the text field and, below it, the card of
// what AppState shows. It drives AppState and follows its changes; it owns the keyboard
// outside the text field, hiding on focus loss, and the reopen rules.
//
// Threading: the main (GUI) thread only, which is also the MainQueue's main thread.

#include <QLineEdit>
#include <QPointer>
#include <QScreen>
#include <QWidget>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "app/app_state.h"
#include "panel/card_widget.h"
#include "panel/panel_effects.h"

class QScrollArea;
class QVBoxLayout;

namespace nuvrel::panel {

class PanelWindow : public QWidget {
public:
    struct Options {
        // Focus loss never hides the panel (a debug hook, for looking at it).
        bool keepOnFocusLoss = false;
        // Follow the desktop's palette for dark or light while no appearance is chosen.
        bool followPalette = true;
        // The desktop's own preference (the settings portal), in place of the palette's.
        std::function<bool()> desktopPrefersDark{};
        // Timings ("panel drawn 12.3 ms after the toggle"), when set.
        std::function<void(std::string_view)> latencyLog{};
    };

    PanelWindow(std::shared_ptr<app::AppState> state, PanelEffects effects, Options options);
    ~PanelWindow() override;

    // Shows the panel on the screen that holds the pointer, focus in the field.
    void showPanel();
    // Closes it for a moment: what it shows comes back at the next show.
    void hidePanel();
    // The hotkey and the single-instance toggle.
    void toggle();

    QLineEdit* field() const { return field_; }
    CardWidget* card() const { return card_; }

    // Called when the panel gives up focus on Escape, to give focus back to whoever had it.
    std::function<void()> onDismissed;
    // Called before the panel shows, to note who has focus now.
    std::function<void()> onAboutToShow;
    // Ctrl+, in the field: the settings window.
    std::function<void()> onOpenSettings;
    // After each change of AppState, once the panel has followed it.
    std::function<void()> onStateChanged;

    // The desktop's dark or light preference changed.
    void desktopThemeChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void stateChanged();
    void rebuildCard();
    void perform(const CardAction& action);
    void confirmRow(std::size_t row);
    void layOut();
    void applyTheme();
    void resigned();
    void scheduleDeferredHide(std::chrono::steady_clock::duration after);
    bool handleKey(QKeyEvent* key);

    std::shared_ptr<app::AppState> state_;
    PanelEffects effects_;
    Options options_;
    QLineEdit* field_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    QPointer<CardWidget> card_;
    double columnWidth_ = 0;
    std::uint64_t deferredHideGeneration_ = 0;
    std::optional<bool> darkApplied_;
    QPointer<QScreen> screen_;
    // When the last toggle and the last Return came, until their frame is drawn.
    std::optional<std::chrono::steady_clock::time_point> showStarted_, returnPressed_;
    // A confirmed plan's outcome, shown in place of its card while that run is on show.
    std::optional<std::pair<std::uint64_t, Card>> replacement_;
};

}  // namespace nuvrel::panel
