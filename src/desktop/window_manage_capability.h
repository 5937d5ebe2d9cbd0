#pragma once
// Moves the window that the user was working in before the panel opened into one of the
// layouts, on the display it is on (or the next one).

#include <cstdint>
#include <optional>
#include <vector>

#include "core/app_language.h"
#include "core/capability_result.h"
#include "core/window_action.h"
#include "desktop/window_geometry.h"
#include "desktop/window_system.h"

namespace nuvrel::desktop::WindowManageCapability {

// The process that was in front just before the panel opened; written by the panel when it
// opens, read here. Process-wide.
std::optional<std::int32_t> lastExternalFrontmostPID();
void setLastExternalFrontmostPID(std::optional<std::int32_t> pid);

// windowArranged with the action and the application's name, or needsPermission
// (accessibility). Throws core::UserFacingError: no target window, one display for
// nextDisplay, a move that failed; without a window system (no X11 session), the message
// that window control needs one.
core::CapabilityResult execute(core::WindowAction action, core::AppLanguage language,
                               WindowSystem* windows);

// The visible frame of the screen after the one that holds `point` (the first when none
// does), wrapping at the end; the second screen with no point. Nothing with fewer than two
// screens. Pure.
std::optional<Rect> nextScreenVisibleFrame(std::optional<Point> point,
                                           const std::vector<Screen>& screens);

}  // namespace nuvrel::desktop::WindowManageCapability
