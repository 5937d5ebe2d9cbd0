#include "core/permission_kind.h"

#include "core/raw_value.h"

namespace nuvrel::core {
namespace {

constexpr std::string_view settingsScheme = "x-apple.systempreferences:";

// The anchor of the privacy section inside the security pane.
std::string_view privacyAnchor(PermissionKind kind) {
    switch (kind) {
        case PermissionKind::calendar:
            return "Privacy_Calendars";
        case PermissionKind::contacts:
            return "Privacy_Contacts";
        case PermissionKind::automation:
            return "Privacy_Automation";
        case PermissionKind::fullDiskAccess:
            return "Privacy_AllFiles";
        case PermissionKind::appleMusic:
            return "Privacy_Media";
        case PermissionKind::accessibility:
            return "Privacy_Accessibility";
        case PermissionKind::reminders:
            return "Privacy_Reminders";
        case PermissionKind::location:
            return "Privacy_LocationServices";
        case PermissionKind::notifications:
            break;
    }
    return {};
}

}  // namespace

std::string_view rawValue(PermissionKind kind) {
    switch (kind) {
        case PermissionKind::calendar:
            return "calendar";
        case PermissionKind::contacts:
            return "contacts";
        case PermissionKind::automation:
            return "automation";
        case PermissionKind::fullDiskAccess:
            return "fullDiskAccess";
        case PermissionKind::appleMusic:
            return "appleMusic";
        case PermissionKind::accessibility:
            return "accessibility";
        case PermissionKind::notifications:
            return "notifications";
        case PermissionKind::reminders:
            return "reminders";
        case PermissionKind::location:
            return "location";
    }
    return {};
}

std::optional<PermissionKind> permissionKindFromRawValue(std::string_view raw) {
    return caseWithRawValue(allPermissionKinds, raw);
}

std::optional<std::string> settingsDeepLink(PermissionKind kind) {
    std::string link(settingsScheme);
    // Notifications have a pane of their own and no privacy anchor.
    if (kind == PermissionKind::notifications) {
        return link.append("com.apple.preference.notifications");
    }
    return link.append("com.apple.preference.security?").append(privacyAnchor(kind));
}

}  // namespace nuvrel::core
