#pragma once
// Turns a date token ("tomorrow", "next_friday", "this_weekend") into a half-open interval of
// the user's calendar, and names the interval for a card heading. Pure: the calendar and "now"
// are passed in.

#include <optional>
#include <string>
#include <string_view>

#include "core/app_language.h"
#include "core/localized_strings.h"
#include "personal/gregorian_calendar.h"

namespace nuvrel::personal::CalendarRangeResolver {

struct Resolved {
    TimePoint start{};
    TimePoint end{};  // excluded
    bool operator==(const Resolved&) const = default;
};

// Nothing for a token outside the vocabulary or a sum the calendar cannot compute. A weekday
// token is fixed to its calendar week: "this_monday" said on a Friday lies in the past.
std::optional<Resolved> parse(std::string_view token, TimePoint now,
                              const GregorianCalendar& calendar);

// The heading of a calendar card: "Tomorrow, March 3", "This Week", or the weekday and date
// of the interval's start for a weekday token. Korean dates in Korean; every other language
// takes the English date form.
std::string label(std::string_view token, const Resolved& resolved,
                  const GregorianCalendar& calendar, core::AppLanguage language,
                  const core::LocalizedStrings& strings);

}  // namespace nuvrel::personal::CalendarRangeResolver
