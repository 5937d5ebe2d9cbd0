#pragma once
// What the calendar can be asked: a listing of a range (the plan-driven query), a new event
// from free text, and the two steps of a delete: candidates for a confirmation card, then the
// one event the user confirmed.
//
// Threading: every call blocks on the caller's task; the store guards its own state.

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "core/app_language.h"
#include "core/capability.h"
#include "personal/calendar_fast_path.h"
#include "personal/calendar_store.h"
#include "personal/gregorian_calendar.h"

namespace nuvrel::personal {

class CalendarQueryCapability : public core::Capability {
public:
    CalendarQueryCapability(core::AppLanguage language, std::shared_ptr<CalendarStore> store,
                            Clock clock, std::size_t maxResults = 5);

    core::IntentID intentID() const override { return core::IntentID::calendarQuery; }
    // "date_range" lower-cased when it is in the calendar vocabulary, else "today";
    // "keyword" as it stands. Never throws.
    core::ActionPlan plan(const core::Slots& slots, std::string_view query) const override;
    // The events of the range (today when the token does not resolve), at most maxResults,
    // earliest first.
    core::CapabilityResult execute(const core::ActionPlan& plan) override;

private:
    core::AppLanguage language_;
    std::shared_ptr<CalendarStore> store_;
    Clock clock_;
    std::size_t maxResults_;
};

struct CalendarAddEventCapability {
    core::AppLanguage language = core::AppLanguage::en;
    std::shared_ptr<CalendarStore> store{};
    Clock clock{};

    // Saves the event (all-day over the interval without a time, one hour at the time with
    // one) and shows it. An unresolvable token or no calendar for new events throws
    // capabilityUnavailableMessage.
    core::CapabilityResult execute(const CalendarAddEventCandidate& candidate) const;
};

struct CalendarDeleteCapability {
    core::AppLanguage language = core::AppLanguage::en;
    std::shared_ptr<CalendarStore> store{};
    Clock clock{};

    // The events of the interval whose title holds the keyword, for a confirmation card;
    // nothing when there are none, so that the cascade goes on.
    std::optional<core::CapabilityResult> findCandidates(
        const CalendarDeleteCandidate& candidate) const;
    // Removes the one event; a vanished event is reported deleted with an empty title.
    core::CapabilityResult confirmDelete(const std::string& eventIdentifier) const;
};

}  // namespace nuvrel::personal
