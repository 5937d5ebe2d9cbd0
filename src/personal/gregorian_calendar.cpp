#include "personal/gregorian_calendar.h"

#include <unicode/calendar.h>
#include <unicode/dtptngen.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <stdexcept>

namespace nuvrel::personal {
namespace {

UDate toUDate(TimePoint date) {
    return static_cast<UDate>(
        std::chrono::duration_cast<std::chrono::milliseconds>(date.time_since_epoch()).count());
}

TimePoint fromUDate(UDate millis) {
    return TimePoint(std::chrono::duration_cast<TimePoint::duration>(
        std::chrono::milliseconds(static_cast<long long>(millis))));
}

std::string utf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

std::optional<TimePoint> timeOf(icu::Calendar& calendar) {
    UErrorCode status = U_ZERO_ERROR;
    const UDate millis = calendar.getTime(status);
    if (U_FAILURE(status)) return std::nullopt;
    return fromUDate(millis);
}

void clearTime(icu::Calendar& calendar) {
    calendar.set(UCAL_HOUR_OF_DAY, 0);
    calendar.set(UCAL_MINUTE, 0);
    calendar.set(UCAL_SECOND, 0);
    calendar.set(UCAL_MILLISECOND, 0);
}

}  // namespace

GregorianCalendar::GregorianCalendar(std::string_view zoneID, std::string_view locale) {
    std::unique_ptr<icu::TimeZone> zone(
        zoneID.empty()
            ? icu::TimeZone::createDefault()
            : icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(
                  icu::StringPiece(zoneID.data(), static_cast<int32_t>(zoneID.size())))));
    icu::UnicodeString id;
    zoneID_ = utf8(zone->getID(id));
    UErrorCode status = U_ZERO_ERROR;
    const icu::Locale where =
        locale.empty() ? icu::Locale::getDefault() : icu::Locale(std::string(locale).c_str());
    auto calendar = std::make_shared<icu::GregorianCalendar>(zone.release(), where, status);
    if (U_FAILURE(status)) throw std::runtime_error("no Gregorian calendar for this locale");
    prototype_ = std::move(calendar);
}

std::unique_ptr<icu::Calendar> GregorianCalendar::at(TimePoint date) const {
    std::unique_ptr<icu::Calendar> calendar(prototype_->clone());
    UErrorCode status = U_ZERO_ERROR;
    calendar->setTime(toUDate(date), status);
    return calendar;
}

TimePoint GregorianCalendar::startOfDay(TimePoint date) const {
    auto calendar = at(date);
    clearTime(*calendar);
    return timeOf(*calendar).value_or(date);
}

std::optional<TimePoint> GregorianCalendar::addingDays(TimePoint date, int days) const {
    auto calendar = at(date);
    UErrorCode status = U_ZERO_ERROR;
    calendar->add(UCAL_DATE, days, status);
    if (U_FAILURE(status)) return std::nullopt;
    return timeOf(*calendar);
}

std::optional<TimePoint> GregorianCalendar::addingMonths(TimePoint date, int months) const {
    auto calendar = at(date);
    UErrorCode status = U_ZERO_ERROR;
    calendar->add(UCAL_MONTH, months, status);
    if (U_FAILURE(status)) return std::nullopt;
    return timeOf(*calendar);
}

std::optional<TimePoint> GregorianCalendar::startOfWeek(TimePoint date) const {
    // Rebuilt from the week-based year and the week of that year, as the week's first day
    // follows the locale.
    auto calendar = at(date);
    UErrorCode status = U_ZERO_ERROR;
    const int yearForWeek = calendar->get(UCAL_YEAR_WOY, status);
    const int week = calendar->get(UCAL_WEEK_OF_YEAR, status);
    if (U_FAILURE(status)) return std::nullopt;
    calendar->clear();
    calendar->set(UCAL_YEAR_WOY, yearForWeek);
    calendar->set(UCAL_WEEK_OF_YEAR, week);
    calendar->set(UCAL_DAY_OF_WEEK, calendar->getFirstDayOfWeek(status));
    return timeOf(*calendar);
}

std::optional<TimePoint> GregorianCalendar::startOfMonth(TimePoint date) const {
    auto calendar = at(date);
    calendar->set(UCAL_DATE, 1);
    clearTime(*calendar);
    return timeOf(*calendar);
}

DateParts GregorianCalendar::parts(TimePoint date) const {
    auto calendar = at(date);
    UErrorCode status = U_ZERO_ERROR;
    return DateParts{.year = calendar->get(UCAL_YEAR, status),
                     .month = calendar->get(UCAL_MONTH, status) + 1,
                     .day = calendar->get(UCAL_DATE, status),
                     .hour = calendar->get(UCAL_HOUR_OF_DAY, status),
                     .minute = calendar->get(UCAL_MINUTE, status),
                     .weekday = calendar->get(UCAL_DAY_OF_WEEK, status)};
}

std::optional<TimePoint> GregorianCalendar::date(int year, int month, int day, int hour,
                                                 int minute) const {
    std::unique_ptr<icu::Calendar> calendar(prototype_->clone());
    calendar->clear();
    calendar->set(year, month - 1, day, hour, minute, 0);
    return timeOf(*calendar);
}

std::string GregorianCalendar::format(TimePoint date, std::string_view pattern,
                                      std::string_view locale) const {
    UErrorCode status = U_ZERO_ERROR;
    icu::SimpleDateFormat formatter(icu::UnicodeString::fromUTF8(icu::StringPiece(
                                        pattern.data(), static_cast<int32_t>(pattern.size()))),
                                    icu::Locale(std::string(locale).c_str()), status);
    if (U_FAILURE(status)) return {};
    formatter.setCalendar(*prototype_);
    icu::UnicodeString out;
    formatter.format(toUDate(date), out);
    return utf8(out);
}

std::string GregorianCalendar::formatSkeleton(TimePoint date, std::string_view skeleton,
                                              std::string_view locale) const {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Locale where(std::string(locale).c_str());
    std::unique_ptr<icu::DateTimePatternGenerator> generator(
        icu::DateTimePatternGenerator::createInstance(where, status));
    if (U_FAILURE(status)) return {};
    const icu::UnicodeString pattern =
        generator->getBestPattern(icu::UnicodeString::fromUTF8(icu::StringPiece(
                                      skeleton.data(), static_cast<int32_t>(skeleton.size()))),
                                  status);
    if (U_FAILURE(status)) return {};
    return format(date, utf8(pattern), locale);
}

}  // namespace nuvrel::personal
