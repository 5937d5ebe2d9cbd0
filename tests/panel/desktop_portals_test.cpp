// The desktop portals on a private bus: the colour scheme through the newer ReadOne, the older
// Read with its extra variant, a stated "no preference"; and no portal at all.
#include <gio/gio.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "panel/desktop_color_scheme.h"
#include "panel/global_shortcuts_portal.h"
#include "support/bus_stand_in.h"
#include "support/offscreen_application.h"
#include "support/private_bus.h"

namespace nuvrel::panel {
namespace {

constexpr const char* portalXml =
    "<node><interface name='org.freedesktop.portal.Settings'>"
    "<method name='ReadOne'><arg type='s' direction='in'/><arg type='s' direction='in'/>"
    "<arg type='v' direction='out'/></method>"
    "<method name='Read'><arg type='s' direction='in'/><arg type='s' direction='in'/>"
    "<arg type='v' direction='out'/></method></interface></node>";

TEST(DesktopPortalsTest, ThePortalsAnswerDecidesWhereThereIsOne) {
    test::offscreenApplication();
    const struct {
        bool hasReadOne;
        std::uint32_t scheme;
        std::optional<bool> dark;
    } portals[] = {{true, 1, true}, {false, 2, false}, {true, 0, std::nullopt}};
    for (const auto& portal : portals) {
        test::PrivateBus bus;
        ASSERT_FALSE(bus.address.empty());
        const test::BusStandIn standIn(
            bus.address, "org.freedesktop.portal.Desktop",
            {{"/org/freedesktop/portal/desktop", portalXml}},
            [&](const std::string&, const std::string& method, GVariant* in) -> GVariant* {
                const gchar *nameSpace = nullptr, *key = nullptr;
                g_variant_get(in, "(&s&s)", &nameSpace, &key);
                if (std::string(nameSpace) != "org.freedesktop.appearance" ||
                    std::string(key) != "color-scheme")
                    throw std::runtime_error("no such setting");
                if (method == "ReadOne" && !portal.hasReadOne)
                    throw std::runtime_error("unknown method");
                GVariant* value = g_variant_new_uint32(portal.scheme);
                return g_variant_new("(v)",
                                     method == "Read" ? g_variant_new_variant(value) : value);
            });
        const auto connection =
            QDBusConnection::connectToBus(QString::fromStdString(bus.address), "portal");
        EXPECT_EQ(DesktopColorScheme(connection).portalPrefersDark(), portal.dark);
        QDBusConnection::disconnectFromBus("portal");
    }
    // No portal at all: the palette decides, and the shortcut falls to the X11 grab.
    test::PrivateBus empty;
    const auto connection =
        QDBusConnection::connectToBus(QString::fromStdString(empty.address), "none");
    EXPECT_EQ(DesktopColorScheme(connection).portalPrefersDark(), std::nullopt);
    GlobalShortcutsPortal shortcuts(connection, {}, [] {});
    EXPECT_FALSE(shortcuts.available());
    EXPECT_FALSE(shortcuts.bind(49, 2048));
    QDBusConnection::disconnectFromBus("none");
}

}  // namespace
}  // namespace nuvrel::panel
