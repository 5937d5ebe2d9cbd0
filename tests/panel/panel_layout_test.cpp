#include <gtest/gtest.h>

#include "base/files.h"
#include "base/paths.h"
#include "panel/autostart_entry.h"
#include "panel/hotkey_combination.h"
#include "panel/panel_geometry.h"
#include "support/temporary_home.h"

namespace nuvrel::panel {
namespace {

TEST(PanelGeometry, TheColumnAndTheWindowFollowTheScreen) {
    EXPECT_DOUBLE_EQ(columnWidth(1024), 740);
    EXPECT_DOUBLE_EQ(columnWidth(700), 644);
    const struct {
        Rect screen, visible;
        double wanted;
        Rect expected;
    } cases[] = {
        // The top edge 0.82 of the height plus 80 above the bottom; at least 204 high.
        {fallbackScreen, fallbackScreen, 100, {270, 82, 900, 204}},
        {fallbackScreen, fallbackScreen, 500, {270, 82, 900, 500}},
        // Cut to the room above a bottom panel of 100.
        {fallbackScreen, {0, 0, 1440, 800}, 5000, {270, 82, 900, 718}},
        // A second screen to the right, 150 high: the room is under 204, the window 204.
        {{1440, 0, 1000, 150}, {1440, 0, 1000, 150}, 500, {1490, -53, 900, 204}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(panelFrame(c.screen, c.visible, 740, c.wanted), c.expected)
            << c.screen.width << "x" << c.screen.height << " wanting " << c.wanted;
    }
}

TEST(HotkeyCombination, StoredShortcutsBecomeX11Grabs) {
    // The default, Option+Space: Alt (Mod1) and the space key.
    EXPECT_EQ(x11Combination(49, 2048), (X11KeyCombination{0x20, 8}));
    EXPECT_EQ(x11Combination(40, 256 | 512 | 4096), (X11KeyCombination{'k', 64 | 1 | 4}));
    EXPECT_EQ(x11Combination(49, 0), std::nullopt);      // no modifier: no shortcut
    EXPECT_EQ(x11Combination(999, 2048), std::nullopt);  // a key the table lacks
    EXPECT_EQ(shortcutName(49, 2048), "Alt+Space");
    EXPECT_EQ(shortcutName(40, 4096 | 512), "Ctrl+Shift+K");
    EXPECT_EQ(portalTrigger(49, 2048), "ALT+space");
    EXPECT_EQ(portalTrigger(43, 256 | 4096), "CTRL+LOGO+comma");
    EXPECT_EQ(portalTrigger(40, 0), std::nullopt);
    EXPECT_EQ(keyCodeForKeysym('k'), 40u);  // what the recorder stores for the K key
}

TEST(AutostartEntry, StartsTheProgramInTheBackgroundAtLogin) {
    test::TemporaryHome home;
    const auto paths = base::XdgPaths::fromEnvironment();
    const auto written = installAutostartEntry(paths, "/opt/My Apps/nuvrel-panel");
    EXPECT_EQ(written, paths.configHome / "autostart" / "nuvrel-panel.desktop");
    const std::string text = base::readFile(written).value_or("");
    EXPECT_NE(text.find("[Desktop Entry]\nType=Application\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nExec=\"/opt/My Apps/nuvrel-panel\" --background\n"), std::string::npos)
        << text;
    // Inside quotes a dollar is escaped, and the escape doubled as a key's value.
    EXPECT_NE(autostartEntryText("/a$b/p").find("Exec=\"/a\\\\$b/p\" --background"),
              std::string::npos);
}

}  // namespace
}  // namespace nuvrel::panel
