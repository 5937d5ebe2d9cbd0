#pragma once
// Carries out a system command through injected operations. A platform without AppleScript
// runs the scripts' effects as the operations below; the script texts are still built, for
// the platform that runs them.
//
// Threading: every operation blocks on the caller's task (a screenshot waits for its tool).

#include <ctime>
#include <functional>
#include <optional>
#include <string>

#include "core/capability_result.h"
#include "core/system_command.h"

namespace nuvrel::desktop {

// What a command does to the machine. An operation that cannot be carried out throws; a
// core::UserFacingError names what is missing.
struct SystemCommandOperations {
    std::function<void()> sleep{};
    std::function<void()> lockScreen{};
    std::function<void(bool muted)> setOutputMuted{};
    // The output volume on a scale of 0 to 100; nothing when the device has no readable one.
    std::function<std::optional<int>()> outputVolume{};
    std::function<void(int volume)> setOutputVolume{};
    // Writes a screen capture and gives the file's path.
    std::function<std::string()> takeScreenshot{};
    std::function<void()> openWallpaperSettings{};
};

namespace SystemCommandCapability {

// The script of a command; none for lockScreen, screenshot and openWallpaperSettings.
std::optional<std::string> appleScriptSource(core::SystemCommand command);

// The volume script's arithmetic: `step` added to the current volume (50 when unreadable),
// clamped to 0...100.
int targetVolume(std::optional<int> current, int step);

// The volume step of volumeUp and volumeDown.
inline constexpr int volumeStep = 10;

// Runs the command: screenshotTaken with the file's path for a screenshot,
// systemCommandExecuted for every other. Errors of the operations pass through.
core::CapabilityResult execute(core::SystemCommand command,
                               const SystemCommandOperations& operations);

// "Screenshot 2026-03-05 at 4.07.09 PM.png": the capture's file name for a local time.
std::string screenshotFileName(const std::tm& localTime);

}  // namespace SystemCommandCapability
}  // namespace nuvrel::desktop
