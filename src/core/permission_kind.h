#pragma once
// The system permissions a capability may find missing.

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::core {

enum class PermissionKind {
    calendar,
    contacts,
    automation,
    fullDiskAccess,
    appleMusic,
    accessibility,
    notifications,
    reminders,
    location,
};

inline constexpr std::array<PermissionKind, 9> allPermissionKinds{
    PermissionKind::calendar,       PermissionKind::contacts,   PermissionKind::automation,
    PermissionKind::fullDiskAccess, PermissionKind::appleMusic, PermissionKind::accessibility,
    PermissionKind::notifications,  PermissionKind::reminders,  PermissionKind::location,
};

// Raw values equal the case names.
std::string_view rawValue(PermissionKind kind);
std::optional<PermissionKind> permissionKindFromRawValue(std::string_view raw);

// The address that opens the platform's settings pane for this permission.
std::optional<std::string> settingsDeepLink(PermissionKind kind);

}  // namespace nuvrel::core
