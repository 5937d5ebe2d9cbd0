#pragma once
// Reminders: one is created at once from a candidate; deletion has two steps, candidates for
// a confirmation card, then the one reminder the user confirmed. A reminder always has a due
// day ("today" when none was said) and rings only when a time was said; its ring is a
// notification held outside the program, like a timer's.
//
// Threading: every call blocks on the caller's task.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/diagnostics.h"
#include "core/app_language.h"
#include "core/capability_result.h"
#include "personal/gregorian_calendar.h"
#include "personal/notification_center_providing.h"
#include "personal/reminder_fast_path.h"
#include "personal/reminder_store.h"

namespace nuvrel::personal {

// The identifier of a reminder's notification is this followed by the reminder's identifier.
inline constexpr std::string_view reminderIdentifierPrefix = "nuvrel.reminder.";

struct ReminderCapability {
    core::AppLanguage language = core::AppLanguage::en;
    std::shared_ptr<ReminderStore> store{};
    Clock clock{};
    // Rings reminders with a time; may be null, and then nothing rings.
    std::shared_ptr<NotificationCenterProviding> notificationCenter{};
    base::Diagnostics diagnostics{};

    // reminderSet with the time it rings, if any. An unresolvable token or no list for new
    // reminders throws capabilityUnavailableMessage; a failed save throws the store's error.
    core::CapabilityResult execute(const ReminderCandidate& candidate) const;
    // Incomplete reminders whose title holds the keyword, due first, for a confirmation card;
    // nothing when there are none.
    std::optional<core::CapabilityResult> findCandidates(
        const ReminderDeleteCandidate& candidate) const;
    // Removes the one reminder and its pending ring; a vanished one is reported deleted with
    // an empty title.
    core::CapabilityResult confirmDelete(const std::string& identifier) const;
};

}  // namespace nuvrel::personal
