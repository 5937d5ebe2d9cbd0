#include "core/system_command.h"

#include "core/raw_value.h"

namespace nuvrel::core {

std::string_view rawValue(SystemCommand command) {
    switch (command) {
        case SystemCommand::sleep:
            return "sleep";
        case SystemCommand::lockScreen:
            return "lockScreen";
        case SystemCommand::mute:
            return "mute";
        case SystemCommand::unmute:
            return "unmute";
        case SystemCommand::volumeUp:
            return "volumeUp";
        case SystemCommand::volumeDown:
            return "volumeDown";
        case SystemCommand::screenshot:
            return "screenshot";
        case SystemCommand::openWallpaperSettings:
            return "openWallpaperSettings";
    }
    return {};
}

std::optional<SystemCommand> systemCommandFromRawValue(std::string_view raw) {
    return caseWithRawValue(allSystemCommands, raw);
}

}  // namespace nuvrel::core
