#pragma once
// Notifications held outside the program: a notification scheduled here fires whether or not
// the program still runs, and only its identifier finds it again.
//
// Threading: every operation blocks on the caller's task and may be called from any task.

#include <chrono>
#include <string>
#include <string_view>

namespace nuvrel::personal {

class NotificationCenterProviding {
public:
    virtual ~NotificationCenterProviding() = default;
    // Asks for the right to notify; may throw.
    virtual bool requestAuthorization() = 0;
    virtual bool isAuthorized() = 0;
    // Shows title and body once, `interval` from now. Throws when it cannot be scheduled
    // (a core::UserFacingError where the reason is the user's to fix).
    virtual void scheduleNotification(const std::string& identifier, const std::string& title,
                                      const std::string& body, std::chrono::seconds interval) = 0;
    // Removes every pending notification whose identifier begins with the prefix; gives how
    // many there were. Never fails.
    virtual int cancelPendingNotifications(std::string_view identifierPrefix) = 0;
};

}  // namespace nuvrel::personal
