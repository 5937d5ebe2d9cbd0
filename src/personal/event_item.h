#pragma once
// A stored event as a calendar card shows it: clock times as "HH:mm" in the calendar's zone,
// in any language.

#include "core/result_records.h"
#include "personal/calendar_store.h"
#include "personal/gregorian_calendar.h"

namespace nuvrel::personal {

core::EventItem eventItem(const StoredEvent& event, const GregorianCalendar& calendar);

// Sorted by start, stable, so that equal starts keep the store's order.
void sortByStart(std::vector<StoredEvent>& events);

}  // namespace nuvrel::personal
