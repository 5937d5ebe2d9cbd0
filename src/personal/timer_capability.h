#pragma once
// A timer is one pending notification and nothing else: no table, no countdown in the
// program. It outlives the program because the notification centre holds it; only the
// identifier prefix finds it again.

#include <memory>
#include <string_view>

#include "core/app_language.h"
#include "core/capability_result.h"
#include "core/result_records.h"
#include "personal/notification_center_providing.h"

namespace nuvrel::personal {

// Every timer notification's identifier begins with this, followed by a fresh UUID.
inline constexpr std::string_view timerIdentifierPrefix = "nuvrel.timer.";

struct TimerCapability {
    core::AppLanguage language = core::AppLanguage::en;
    std::shared_ptr<NotificationCenterProviding> notificationCenter{};

    // Schedules the notification; timerSet with the time it fires. Without the right to
    // notify, needsPermission(notifications). A scheduling failure is thrown. Blocks.
    core::CapabilityResult execute(const core::TimerRequest& request) const;
    // Removes every pending timer; timerCancelled with how many there were. Blocks.
    core::CapabilityResult cancelAll() const;
};

// A random (version 4) UUID in upper-case text form.
std::string makeUUIDString();

}  // namespace nuvrel::personal
