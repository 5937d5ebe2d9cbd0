#pragma once
// One card on screen: the header, the selectable texts, the keyboard rows and the buttons of
// a Card. Selection starts on no row, so that Return on an unchanged query runs it again
// until the user moves into the list.

#include <QFrame>
#include <QPointer>
#include <functional>
#include <optional>
#include <vector>

#include "app/row_keyboard_actions.h"
#include "panel/card_model.h"

class QLabel;
class QPushButton;

namespace nuvrel::panel {

class CardWidget : public QFrame {
public:
    // `perform` carries out a row's or a button's action; `statusOf` is filled in later by
    // setRowStatus.
    CardWidget(Card card, const core::LocalizedStrings& strings,
               std::function<void(const CardAction&)> perform, QWidget* parent = nullptr);

    const Card& card() const { return card_; }
    std::optional<std::size_t> selectedIndex() const { return selected_; }

    // The keyboard behaviour for AppState::activeRowActions; none when the card has no rows.
    // The functions hold a guarded pointer: once the card is gone they do nothing.
    std::optional<app::RowKeyboardActions> rowActions();

    void moveUp();
    void moveDown();
    // Return: the selected row's action; false when no row is selected or it has none.
    bool activateSelected();
    // Ctrl+Return: the selected row's second action.
    bool alternateSelected();
    // The selected row's text to copy; empty when none.
    std::string selectedCopyText() const;

    // A confirmed row's line: "Deleting…" while it runs, then what it became. A busy or done
    // row takes no second press; a failed one may be tried again.
    enum class RowState { busy, done, failed };
    void setRowStatus(std::size_t row, const std::string& text, RowState state);

    // Every text on the card, in reading order, one per line.
    QString plainText() const;

private:
    void select(std::optional<std::size_t> index);

    Card card_;
    std::function<void(const CardAction&)> perform_;
    std::optional<std::size_t> selected_;
    std::vector<QWidget*> rowWidgets_;
    std::vector<QLabel*> rowDetails_;
    std::vector<QPushButton*> rowButtons_;
    std::vector<bool> rowLocked_;
};

}  // namespace nuvrel::panel
