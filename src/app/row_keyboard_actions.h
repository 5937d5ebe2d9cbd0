#pragma once
// What the card on show wants the keyboard to do. A list card publishes these in
// AppState::activeRowActions and clears them when it goes away. Called on the main thread.

#include <functional>

namespace nuvrel::app {

struct RowKeyboardActions {
    std::function<void()> moveUp{};
    std::function<void()> moveDown{};
    // Open the selected row; false when no row is selected, so that Return searches instead.
    std::function<bool()> activateSelected{};
    // Preview the selected row; false when there is nothing to preview.
    std::function<bool()> previewSelected{};
};

}  // namespace nuvrel::app
