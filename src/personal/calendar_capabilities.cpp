#include "personal/calendar_capabilities.h"

#include "base/text.h"
#include "core/localized_strings.h"
#include "core/slot_enums.h"
#include "core/user_facing_error.h"
#include "personal/calendar_range_resolver.h"
#include "personal/date_time_expression_parser.h"
#include "personal/event_item.h"
#include "pipeline/validator.h"

namespace nuvrel::personal {
namespace {

core::UserFacingError unavailable(core::AppLanguage language) {
    return core::UserFacingError(
        core::LocalizedStrings::strings(language).capabilityUnavailableMessage, std::nullopt,
        false);
}

core::CapabilityResult calendarPermission() {
    return core::CapabilityResult::NeedsPermission{core::PermissionKind::calendar};
}

bool titleHolds(const std::string& title, const std::string& loweredKeyword) {
    return loweredKeyword.empty() || base::text::contains(base::text::lower(title), loweredKeyword);
}

}  // namespace

CalendarQueryCapability::CalendarQueryCapability(core::AppLanguage language,
                                                 std::shared_ptr<CalendarStore> store, Clock clock,
                                                 std::size_t maxResults)
    : language_(language),
      store_(std::move(store)),
      clock_(std::move(clock)),
      maxResults_(maxResults) {}

core::ActionPlan CalendarQueryCapability::plan(const core::Slots& slots, std::string_view) const {
    std::string dateRange = "today";
    if (const auto raw = pipeline::Validator::stringSlot(slots, "date_range")) {
        std::string lowered = base::text::lower(*raw);
        if (core::SlotEnums::calendarDateRange().contains(lowered)) dateRange = std::move(lowered);
    }
    return core::CalendarRange{dateRange, pipeline::Validator::stringSlot(slots, "keyword")};
}

core::CapabilityResult CalendarQueryCapability::execute(const core::ActionPlan& plan) {
    const auto* range = plan.get<core::CalendarRange>();
    if (range == nullptr) throw unavailable(language_);
    if (!store_->hasAccess()) return calendarPermission();
    const TimePoint now = clock_.now();
    const GregorianCalendar& calendar = clock_.calendar;
    auto resolved = CalendarRangeResolver::parse(range->dateRange, now, calendar);
    if (!resolved) resolved = CalendarRangeResolver::parse("today", now, calendar);
    if (!resolved) throw unavailable(language_);

    std::vector<StoredEvent> events = store_->events(resolved->start, resolved->end);
    const std::string keyword = base::text::trim(range->keyword.value_or(""));
    if (!keyword.empty()) {
        // Case-insensitive containment, as a localised comparison of the title would do.
        const std::string lowered = base::text::lower(keyword);
        std::erase_if(events, [&](const StoredEvent& e) { return !titleHolds(e.title, lowered); });
    }
    sortByStart(events);
    if (events.size() > maxResults_) events.resize(maxResults_);

    core::CapabilityResult::Events result;
    for (const StoredEvent& event : events) result.events.push_back(eventItem(event, calendar));
    result.dayLabel = CalendarRangeResolver::label(range->dateRange, *resolved, calendar, language_,
                                                   core::LocalizedStrings::strings(language_));
    return result;
}

core::CapabilityResult CalendarAddEventCapability::execute(
    const CalendarAddEventCandidate& candidate) const {
    if (!store->hasAccess()) return calendarPermission();
    const TimePoint now = clock.now();
    const GregorianCalendar& calendar = clock.calendar;
    const auto resolved = CalendarRangeResolver::parse(candidate.dateToken, now, calendar);
    if (!resolved) throw unavailable(language);

    NewEvent event{candidate.title, resolved->start, resolved->end, true};
    if (candidate.hour) {
        const DateParts day = calendar.parts(resolved->start);
        if (const auto start =
                calendar.date(day.year, day.month, day.day, *candidate.hour, candidate.minute)) {
            event.start = DateTimeExpressionParser::rollingPastTimeForward(
                *start, candidate.hasExplicitDateWord, now, calendar);
            event.end = event.start + std::chrono::hours(1);
            event.isAllDay = false;
        }
    }
    const auto saved = store->addEvent(event);
    if (!saved) throw unavailable(language);
    return core::CapabilityResult::Events{
        {eventItem(*saved, calendar)},
        core::LocalizedStrings::strings(language).calendarEventAddedLabel};
}

std::optional<core::CapabilityResult> CalendarDeleteCapability::findCandidates(
    const CalendarDeleteCandidate& candidate) const {
    if (!store->hasAccess()) return calendarPermission();
    const GregorianCalendar& calendar = clock.calendar;
    const auto resolved = CalendarRangeResolver::parse(candidate.dateToken, clock.now(), calendar);
    if (!resolved) return std::nullopt;
    const std::string keyword = base::text::lower(base::text::trim(candidate.keyword));
    std::vector<StoredEvent> events = store->events(resolved->start, resolved->end);
    std::erase_if(events, [&](const StoredEvent& e) { return !titleHolds(e.title, keyword); });
    if (events.empty()) return std::nullopt;
    sortByStart(events);
    core::CapabilityResult::CalendarDeleteConfirmation result;
    for (const StoredEvent& event : events) result.events.push_back(eventItem(event, calendar));
    result.dayLabel =
        CalendarRangeResolver::label(candidate.dateToken, *resolved, calendar, language,
                                     core::LocalizedStrings::strings(language));
    return result;
}

core::CapabilityResult CalendarDeleteCapability::confirmDelete(
    const std::string& eventIdentifier) const {
    if (!store->hasAccess()) return calendarPermission();
    return core::CapabilityResult::CalendarEventDeleted{
        store->removeEvent(eventIdentifier).value_or("")};
}

}  // namespace nuvrel::personal
