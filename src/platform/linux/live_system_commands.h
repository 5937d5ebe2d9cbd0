#pragma once
// The system commands on a Linux desktop: sleep and lock through logind, volume and mute
// through `wpctl` (PipeWire), else `pactl` (PulseAudio), screen captures through the desktop
// portal, else the first of gnome-screenshot, spectacle, grim and import, and the wallpaper
// settings of GNOME or KDE. What the machine lacks ends in a core::UserFacingError that names it.
//
// Threading: the operations block on the caller's task while their tool runs.

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "core/app_language.h"
#include "desktop/system_command_capability.h"
#include "platform/linux/session_bus.h"

namespace nuvrel::platform {

struct LiveSystemCommandSettings {
    // The language of the error cards.
    core::AppLanguage language = core::AppLanguage::en;
    // logind's bus; none: the system bus.
    std::optional<std::string> logindBusAddress{};
    // Where screen captures go; empty: the folder "Desktop" of the home directory.
    std::filesystem::path screenshotFolder{};
    // The session bus of the desktop portal, asked for captures before the tools; none: the
    // tools only.
    SessionBusSource sessionBus{};
};

desktop::SystemCommandOperations liveSystemCommandOperations(
    const LiveSystemCommandSettings& settings);

// The output volume, 0 to 100, in the answer of `wpctl get-volume` ("Volume: 0.40 [MUTED]")
// or `pactl get-sink-volume` (the first channel's "40%").
std::optional<int> parseWpctlVolume(std::string_view output);
std::optional<int> parsePactlVolume(std::string_view output);

}  // namespace nuvrel::platform
