#include "desktop/system_command_capability.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace nuvrel::desktop::SystemCommandCapability {
namespace {

std::string volumeScript(int step) {
    return "set currentVolume to output volume of (get volume settings)\n"
           "if currentVolume is missing value then set currentVolume to 50\n"
           "set targetVolume to currentVolume + (" +
           std::to_string(step) +
           ")\nif targetVolume > 100 then set targetVolume to 100\n"
           "if targetVolume < 0 then set targetVolume to 0\n"
           "set volume output volume targetVolume";
}

template <class Operation>
const Operation& required(const Operation& operation) {
    if (!operation) throw std::logic_error("system command operation not wired");
    return operation;
}

}  // namespace

std::optional<std::string> appleScriptSource(core::SystemCommand command) {
    using core::SystemCommand;
    switch (command) {
        case SystemCommand::sleep:
            return "tell application \"System Events\" to sleep";
        case SystemCommand::mute:
            return "set volume output muted true";
        case SystemCommand::unmute:
            return "set volume output muted false";
        case SystemCommand::volumeUp:
            return volumeScript(volumeStep);
        case SystemCommand::volumeDown:
            return volumeScript(-volumeStep);
        case SystemCommand::lockScreen:
        case SystemCommand::screenshot:
        case SystemCommand::openWallpaperSettings:
            return std::nullopt;
    }
    return std::nullopt;
}

int targetVolume(std::optional<int> current, int step) {
    return std::clamp(current.value_or(50) + step, 0, 100);
}

core::CapabilityResult execute(core::SystemCommand command,
                               const SystemCommandOperations& operations) {
    using core::SystemCommand;
    using Result = core::CapabilityResult;
    switch (command) {
        case SystemCommand::screenshot:
            return Result::ScreenshotTaken{required(operations.takeScreenshot)()};
        case SystemCommand::sleep:
            required(operations.sleep)();
            break;
        case SystemCommand::lockScreen:
            required(operations.lockScreen)();
            break;
        case SystemCommand::mute:
        case SystemCommand::unmute:
            required(operations.setOutputMuted)(command == SystemCommand::mute);
            break;
        case SystemCommand::volumeUp:
        case SystemCommand::volumeDown: {
            const int step = command == SystemCommand::volumeUp ? volumeStep : -volumeStep;
            required(operations.setOutputVolume)(
                targetVolume(required(operations.outputVolume)(), step));
            break;
        }
        case SystemCommand::openWallpaperSettings:
            required(operations.openWallpaperSettings)();
            break;
    }
    return Result::SystemCommandExecuted{command};
}

std::string screenshotFileName(const std::tm& localTime) {
    // "yyyy-MM-dd 'at' h.mm.ss a": the hour on the 12-hour clock without padding.
    const int hour12 = localTime.tm_hour % 12 == 0 ? 12 : localTime.tm_hour % 12;
    char text[64];
    std::snprintf(text, sizeof text, "Screenshot %04d-%02d-%02d at %d.%02d.%02d %s.png",
                  localTime.tm_year + 1900, localTime.tm_mon + 1, localTime.tm_mday, hour12,
                  localTime.tm_min, localTime.tm_sec, localTime.tm_hour < 12 ? "AM" : "PM");
    return text;
}

}  // namespace nuvrel::desktop::SystemCommandCapability
