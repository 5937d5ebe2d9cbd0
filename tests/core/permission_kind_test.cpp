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
        EXPECT_EQ(link->find("security?Privacy_") != std::string::npos,
                  kind != PermissionKind::notifications)
            << *link;
        EXPECT_NE(link->back(), '_') << *link;
        links.insert(*link);
    }
    EXPECT_EQ(links.size(), allPermissionKinds.size());
}

}  // namespace
}  // namespace nuvrel::core
