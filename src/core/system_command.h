#pragma once
// The fixed commands that act on the machine.

#include <array>
#include <optional>
#include <string_view>

namespace nuvrel::core {

enum class SystemCommand {
    sleep,
    lockScreen,
    mute,
    unmute,
    volumeUp,
    volumeDown,
    screenshot,
    openWallpaperSettings,
};

inline constexpr std::array<SystemCommand, 8> allSystemCommands{
    SystemCommand::sleep,      SystemCommand::lockScreen,
    SystemCommand::mute,       SystemCommand::unmute,
    SystemCommand::volumeUp,   SystemCommand::volumeDown,
    SystemCommand::screenshot, SystemCommand::openWallpaperSettings,
};

// Raw values equal the case names.
std::string_view rawValue(SystemCommand command);
std::optional<SystemCommand> systemCommandFromRawValue(std::string_view raw);

}  // namespace nuvrel::core
