#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "desktop/window_manage_capability.h"
#include "desktop/window_manage_fast_path.h"
#include "support/error_of.h"
#include "support/fake_window_system.h"
#include "support/result_case.h"

namespace nuvrel::desktop {
namespace {

using core::WindowAction;
namespace Capability = WindowManageCapability;
using Result = core::CapabilityResult;
const core::LocalizedStrings& en = core::LocalizedStrings::en();

TEST(WindowManageFastPath, WholeRequestsOnlyWithCaseFolded) {
    for (const auto& row : WindowManageFastPath::table())
        EXPECT_EQ(WindowManageFastPath::match(row.phrase), row.action) << row.phrase;
    EXPECT_EQ(WindowManageFastPath::match("LEFT HALF"), WindowAction::leftHalf);
    EXPECT_FALSE(WindowManageFastPath::match("left half please"));
}

TEST(WindowGeometry, EachLayoutWithinTheVisibleFrame) {
    const Rect frame{100, 50, 1000, 800};
    const std::vector<Rect> expected = {
        {100, 50, 500, 800},  {600, 50, 500, 800},  {100, 450, 1000, 400}, {100, 50, 1000, 400},
        {100, 450, 500, 400}, {600, 450, 500, 400}, {100, 50, 500, 400},   {600, 50, 500, 400},
        {100, 50, 1000, 800}, {250, 170, 700, 560}, {250, 170, 700, 560}};
    for (const WindowAction action : core::allWindowActions)
        EXPECT_EQ(WindowGeometry::targetRect(action, frame), expected[static_cast<int>(action)])
            << core::rawValue(action);
}

// The primary, one display left of it (negative x), one right of it; 30 points of each are
// taken at the top.
const std::vector<Screen> threeScreens = {{{0, 0, 1600, 900}, {0, 0, 1600, 870}},
                                          {{-1000, 0, 1000, 900}, {-1000, 0, 1000, 870}},
                                          {{1600, 0, 1000, 900}, {1600, 0, 1000, 870}}};

TEST(WindowManageCapability, NextDisplayWrapsAndWithoutAPointTakesTheSecond) {
    const auto& screens = threeScreens;
    EXPECT_EQ(Capability::nextScreenVisibleFrame(Point{2000, 10}, screens),
              screens[0].visibleFrame);
    EXPECT_EQ(Capability::nextScreenVisibleFrame(Point{-5, 10}, screens), screens[2].visibleFrame);
    EXPECT_EQ(Capability::nextScreenVisibleFrame(std::nullopt, screens), screens[1].visibleFrame);
    EXPECT_EQ(Capability::nextScreenVisibleFrame(Point{0, 0}, {screens[0]}), std::nullopt);
}

std::optional<std::string> failure(WindowAction action, WindowSystem* windows) {
    const auto error = test::errorOf<core::UserFacingError>(
        [&] { Capability::execute(action, core::AppLanguage::en, windows); });
    return error ? std::optional(error->message) : std::nullopt;
}

TEST(WindowManageCapability, MovesTheFrontWindowOnItsOwnDisplay) {
    test::FakeWindows windows(threeScreens);
    // A window whose top-left lies on the display left of the primary: maximised there, in
    // positions y-down from the primary's top.
    windows.topLeft = Point{-900, 100};
    const auto run = [&](WindowAction action) {
        return Capability::execute(action, core::AppLanguage::en, &windows);
    };
    EXPECT_EQ(test::caseOf<Result::WindowArranged>(run(WindowAction::maximize)),
              (Result::WindowArranged{WindowAction::maximize, "Editor"}));
    EXPECT_EQ(windows.askedFor, 42);
    EXPECT_EQ(windows.moved, (Point{-1000, 30}));
    EXPECT_EQ(windows.sized, (Point{1000, 870}));
    // Unreadable position: the main screen, or the second screen for nextDisplay.
    windows.topLeft.reset();
    run(WindowAction::leftHalf);
    EXPECT_EQ(windows.moved, (Point{0, 30}));
    run(WindowAction::nextDisplay);
    EXPECT_EQ(windows.moved, (Point{-850, 160.5}));
    // A stored process that still runs wins over the one in front.
    Capability::setLastExternalFrontmostPID(77);
    run(WindowAction::center);
    EXPECT_EQ(windows.askedFor, 77);
    Capability::setLastExternalFrontmostPID(std::nullopt);
}

TEST(WindowManageCapability, FailuresEndInTheirOwnMessages) {
    test::FakeWindows windows(threeScreens);
    windows.front = FrontmostApplication{1};  // this process itself
    EXPECT_EQ(failure(WindowAction::leftHalf, &windows), en.windowNoTargetMessage);
    windows.front = FrontmostApplication{};  // a window whose owner is unknown is a target
    windows.all.resize(1);
    EXPECT_EQ(failure(WindowAction::nextDisplay, &windows), en.windowOnlyOneDisplayMessage);
    windows.all.clear();
    EXPECT_EQ(failure(WindowAction::leftHalf, &windows), en.windowMoveFailedMessage);
    EXPECT_EQ(failure(WindowAction::leftHalf, nullptr), en.windowNeedsX11Message);
    windows.trusted = false;
    EXPECT_EQ(test::caseOf<Result::NeedsPermission>(
                  Capability::execute(WindowAction::leftHalf, core::AppLanguage::en, &windows)),
              Result::NeedsPermission{core::PermissionKind::accessibility});
}

}  // namespace
}  // namespace nuvrel::desktop
