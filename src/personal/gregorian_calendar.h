#pragma once
// Calendar arithmetic in one time zone: start of a day, adding calendar days and months (a day
// across a daylight-saving change is a calendar day, not 24 hours), the week by the locale's
// first weekday, and dates built from their parts. Injected wherever "now" and "the user's
// calendar" matter, so that tests fix both.
//
// Immutable after construction; every call works on its own copy of the ICU calendar, so one
// value may be used from any thread.

#include <unicode/uversion.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

U_NAMESPACE_BEGIN
class Calendar;
U_NAMESPACE_END

namespace nuvrel::personal {

using TimePoint = std::chrono::system_clock::time_point;

struct DateParts {
    int year = 0;
    int month = 0;  // 1 to 12
    int day = 0;
    int hour = 0;
    int minute = 0;
    int weekday = 0;  // 1 Sunday to 7 Saturday, as in a Gregorian weekday component
};

class GregorianCalendar {
public:
    // `zoneID` is an IANA zone ("Asia/Seoul"); empty takes the process's zone (TZ). `locale`
    // ("en_US", "de_DE") decides the first day of the week; empty takes the process's locale.
    explicit GregorianCalendar(std::string_view zoneID = {}, std::string_view locale = {});

    TimePoint startOfDay(TimePoint date) const;
    // Nothing when the calendar cannot compute the sum.
    std::optional<TimePoint> addingDays(TimePoint date, int days) const;
    std::optional<TimePoint> addingMonths(TimePoint date, int months) const;
    // The first instant of the week that holds the date, by the locale's first weekday.
    std::optional<TimePoint> startOfWeek(TimePoint date) const;
    std::optional<TimePoint> startOfMonth(TimePoint date) const;
    DateParts parts(TimePoint date) const;
    // A date from its parts, leniently: hour 25 is 1 o'clock the next day, as Foundation's
    // calendars do. Nothing when the parts cannot make a date at all.
    std::optional<TimePoint> date(int year, int month, int day, int hour = 0, int minute = 0) const;
    // The date as an ICU pattern ("HH:mm", "M월 d일 EEEE") in this zone and `locale`.
    std::string format(TimePoint date, std::string_view pattern, std::string_view locale) const;
    // A localised form made from a skeleton ("Mdjm": month, day, hour, minute) for the locale.
    std::string formatSkeleton(TimePoint date, std::string_view skeleton,
                               std::string_view locale) const;
    const std::string& zoneID() const { return zoneID_; }

private:
    std::unique_ptr<icu::Calendar> at(TimePoint date) const;

    std::string zoneID_;
    std::shared_ptr<const icu::Calendar> prototype_;
};

// "Now" and the calendar of the user, injected together.
struct Clock {
    std::function<TimePoint()> now = [] { return std::chrono::system_clock::now(); };
    GregorianCalendar calendar{};
};

}  // namespace nuvrel::personal
