#include "core/permission_kind.h"

#include <gtest/gtest.h>

namespace nuvrel::core {
namespace {

TEST(PermissionKind, DeepLinksAddressTheSecurityPaneExceptNotifications) {
    EXPECT_EQ(settingsDeepLink(PermissionKind::calendar),
              "x-apple.systempreferences:com.apple.preference.security?Privacy_Calendars");
    EXPECT_EQ(settingsDeepLink(PermissionKind::fullDiskAccess),
              "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles");
    EXPECT_EQ(settingsDeepLink(PermissionKind::appleMusic),
              "x-apple.systempreferences:com.apple.preference.security?Privacy_Media");
    EXPECT_EQ(settingsDeepLink(PermissionKind::location),
              "x-apple.systempreferences:com.apple.preference.security?Privacy_LocationServices");
    EXPECT_EQ(settingsDeepLink(PermissionKind::notifications),
              "x-apple.systempreferences:com.apple.preference.notifications");
    for (PermissionKind kind : allPermissionKinds) {
        auto link = settingsDeepLink(kind);
        ASSERT_TRUE(link) << rawValue(kind);
        if (kind != PermissionKind::notifications) {
            // Every other kind ends in a non-empty privacy anchor.
            EXPECT_NE(link->find("security?Privacy_"), std::string::npos) << *link;
            EXPECT_NE(link->back(), '_') << *link;
        }
    }
}

}  // namespace
}  // namespace nuvrel::core
