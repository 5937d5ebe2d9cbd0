#pragma once
// Picks a new global shortcut from the next key pressed with a modifier. A key without one of
// Command (Super), Option (Alt), Control or Shift is refused and recording goes on; a key with
// one ends recording and is offered to `onCapture`, whose refusal (the desktop would not
// register it) is the other issue.
//
// Threading: the GUI thread.

#include <cstdint>
#include <functional>
#include <optional>

namespace nuvrel::panel {

enum class HotkeyRecorderIssue { modifierRequired, registrationFailed };

class HotkeyRecorder {
public:
    // Takes the stored key code and modifier mask; true when the shortcut was registered.
    using Capture = std::function<bool(std::uint32_t keyCode, std::uint32_t modifiers)>;

    void start(Capture onCapture);
    void stop();
    // A key press while recording, as a stored key code (nothing for a modifier alone or a
    // key the shortcut table does not know) and modifier mask. True when it was taken.
    bool keyPressed(std::optional<std::uint32_t> keyCode, std::uint32_t modifiers);

    bool isRecording() const { return isRecording_; }
    std::optional<HotkeyRecorderIssue> issue() const { return issue_; }

    std::function<void(bool recording)> onRecordingStateChange;

private:
    void setRecording(bool recording);

    bool isRecording_ = false;
    std::optional<HotkeyRecorderIssue> issue_;
    Capture onCapture_;
};

}  // namespace nuvrel::panel
