#include "personal/event_item.h"

#include <algorithm>

#include "base/text.h"

namespace nuvrel::personal {

core::EventItem eventItem(const StoredEvent& event, const GregorianCalendar& calendar) {
    std::optional<std::string> location;
    if (event.location) {
        std::string trimmed = base::text::trim(*event.location);
        if (!trimmed.empty()) location = std::move(trimmed);
    }
    return core::EventItem{.title = event.title,
                           .location = std::move(location),
                           .startTime = calendar.format(event.start, "HH:mm", "en_US_POSIX"),
                           .endTime = calendar.format(event.end, "HH:mm", "en_US_POSIX"),
                           .calendarName = event.calendarName,
                           .colorHex = event.colorHex,
                           .isAllDay = event.isAllDay,
                           .eventIdentifier = event.identifier};
}

void sortByStart(std::vector<StoredEvent>& events) {
    std::stable_sort(events.begin(), events.end(),
                     [](const StoredEvent& a, const StoredEvent& b) { return a.start < b.start; });
}

}  // namespace nuvrel::personal
