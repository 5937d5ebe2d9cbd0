#include "panel/hotkey_recorder.h"

#include <utility>

namespace nuvrel::panel {

namespace {
constexpr std::uint32_t anyModifier = 256 | 512 | 2048 | 4096;  // Command, Shift, Option, Control
}

void HotkeyRecorder::start(Capture onCapture) {
    onCapture_ = std::move(onCapture);
    issue_.reset();
    setRecording(true);
}

void HotkeyRecorder::stop() {
    setRecording(false);
}

bool HotkeyRecorder::keyPressed(std::optional<std::uint32_t> keyCode, std::uint32_t modifiers) {
    if (!isRecording_) return false;
    if (!keyCode) return true;  // a modifier on its own: the combination is still being typed
    if ((modifiers & anyModifier) == 0) {
        issue_ = HotkeyRecorderIssue::modifierRequired;
        if (onRecordingStateChange) onRecordingStateChange(true);
        return true;
    }
    issue_.reset();
    isRecording_ = false;
    if (onCapture_ && !onCapture_(*keyCode, modifiers))
        issue_ = HotkeyRecorderIssue::registrationFailed;
    if (onRecordingStateChange) onRecordingStateChange(false);
    return true;
}

void HotkeyRecorder::setRecording(bool recording) {
    isRecording_ = recording;
    if (onRecordingStateChange) onRecordingStateChange(recording);
}

}  // namespace nuvrel::panel
