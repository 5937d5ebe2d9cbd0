#include "desktop/window_manage_capability.h"

#include <atomic>
#include <limits>

#include "core/localized_strings.h"
#include "core/user_facing_error.h"

namespace nuvrel::desktop::WindowManageCapability {
namespace {

constexpr std::int64_t noPID = std::numeric_limits<std::int64_t>::min();
std::atomic<std::int64_t> storedFrontmostPID{noPID};

struct Target {
    std::optional<std::int32_t> pid;
};

std::optional<Target> targetApplication(WindowSystem& windows) {
    if (const auto stored = lastExternalFrontmostPID(); stored && windows.isProcessRunning(*stored))
        return Target{stored};
    const auto front = windows.frontmostApplication();
    if (front && front->pid != windows.currentProcessID()) return Target{front->pid};
    return std::nullopt;
}

}  // namespace

std::optional<std::int32_t> lastExternalFrontmostPID() {
    const std::int64_t pid = storedFrontmostPID.load();
    if (pid == noPID) return std::nullopt;
    return static_cast<std::int32_t>(pid);
}

void setLastExternalFrontmostPID(std::optional<std::int32_t> pid) {
    storedFrontmostPID.store(pid ? *pid : noPID);
}

core::CapabilityResult execute(core::WindowAction action, core::AppLanguage language,
                               WindowSystem* windows) {
    const core::LocalizedStrings& strings = core::LocalizedStrings::strings(language);
    const auto fail = [](const std::string& message) { return core::UserFacingError(message); };
    if (!windows) throw fail(strings.windowNeedsX11Message);
    if (!windows->isTrusted())
        return core::CapabilityResult::NeedsPermission{core::PermissionKind::accessibility};

    const auto target = targetApplication(*windows);
    if (!target) throw fail(strings.windowNoTargetMessage);
    const auto window = windows->focusedWindow(target->pid);
    if (!window) throw fail(strings.windowNoTargetMessage);

    const std::vector<Screen> screens = windows->screens();
    if (screens.empty()) throw fail(strings.windowMoveFailedMessage);
    // Every conversion flips around the primary display's height.
    const double primaryHeight = screens.front().frame.height;
    std::optional<Point> probe;
    if (const auto topLeft = windows->position(*window))
        probe = Point{topLeft->x + 1, primaryHeight - topLeft->y - 1};

    std::optional<Rect> visibleFrame;
    if (action == core::WindowAction::nextDisplay) {
        if (screens.size() < 2) throw fail(strings.windowOnlyOneDisplayMessage);
        visibleFrame = nextScreenVisibleFrame(probe, screens);
    } else {
        if (const auto main = windows->mainScreen()) visibleFrame = main->visibleFrame;
        if (probe) {
            for (const Screen& screen : screens) {
                if (!screen.frame.contains(*probe)) continue;
                visibleFrame = screen.visibleFrame;
                break;
            }
        }
    }
    if (!visibleFrame) throw fail(strings.windowMoveFailedMessage);

    const Rect rect = WindowGeometry::targetRect(action, *visibleFrame);
    if (!windows->setPosition(*window, Point{rect.minX(), primaryHeight - rect.maxY()}) ||
        !windows->setSize(*window, rect.width, rect.height))
        throw fail(strings.windowMoveFailedMessage);
    return core::CapabilityResult::WindowArranged{action, windows->applicationName(*window)};
}

std::optional<Rect> nextScreenVisibleFrame(std::optional<Point> point,
                                           const std::vector<Screen>& screens) {
    if (screens.size() < 2) return std::nullopt;
    if (!point) return screens[1].visibleFrame;
    std::size_t index = 0;
    for (std::size_t i = 0; i < screens.size(); ++i) {
        if (screens[i].frame.contains(*point)) {
            index = i;
            break;
        }
    }
    return screens[(index + 1) % screens.size()].visibleFrame;
}

}  // namespace nuvrel::desktop::WindowManageCapability
