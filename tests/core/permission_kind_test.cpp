#include "core/permission_kind.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace nuvrel::core {
namespace {

TEST(PermissionKind, EveryKindButNotificationsLinksToItsOwnPrivacyAnchor) {
    std::set<std::string> links;
    for (PermissionKind kind : allPermissionKinds) {
        const auto link = settingsDeepLink(kind);
        ASSERT_TRUE(link) << rawValue(kind);
        EXPECT_TRUE(link->starts_with("x-apple.systempreferences:com.apple.preference.")) << *link;
        // Notifications have a pane of their own; every other kind a privacy anchor.
        const bool privacy = kind != PermissionKind::notifications;
        EXPECT_EQ(link->find("security?Privacy_") != std::string::npos, privacy) << *link;
        EXPECT_EQ(link->find("security") != std::string::npos, privacy) << *link;
        EXPECT_NE(link->back(), '_') << *link;
        links.insert(*link);
    }
    EXPECT_EQ(links.size(), allPermissionKinds.size());
}

}  // namespace
}  // namespace nuvrel::core
