// The date-time parser with the calendar behind it. A result has a title, a token of the
// vocabulary and a clock time that is never negative; a phrase that points forward ("tomorrow",
// "next friday", or a bare time, which rolls to tomorrow once passed) never gives a moment before
// the query's clock. Input: four bytes of "now", then the text.

#include <cstring>

#include "fuzz_support.h"
#include "personal/calendar_range_resolver.h"
#include "personal/date_time_expression_parser.h"

using namespace nuvrel;
using namespace nuvrel::personal;

namespace {

bool knownToken(const std::string& token) {
    if (token == "today") return true;
    for (const auto& [word, known] : DateTimeExpressionParser::dateTokens()) {
        if (known == token) return true;
    }
    return false;
}

bool pointsForward(std::string_view token) {
    return token == "tomorrow" || token == "day_after_tomorrow" || token.starts_with("next_");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 4) return 0;
    std::uint32_t offset = 0;
    std::memcpy(&offset, data, 4);
    // Some moment of 2026 to 2161 in a zone without daylight saving time.
    const TimePoint now =
        TimePoint(std::chrono::seconds(1767225600) + std::chrono::seconds(offset));
    static const GregorianCalendar calendar("Asia/Seoul", "en_US");

    const auto result = DateTimeExpressionParser::parse(fuzz::text(data + 4, size - 4));
    if (!result) return 0;
    FUZZ_CHECK(!result->title.empty());
    FUZZ_CHECK(knownToken(result->dateToken));
    // The Korean and CJK readers check no range ("3시 75분" is minute 75), nor does the English
    // form with a meridiem ("3:60pm"): what such a time means is the date construction's.
    FUZZ_CHECK(result->minute >= 0);
    FUZZ_CHECK(!result->hour || *result->hour >= 0);
    FUZZ_CHECK(result->hasExplicitDateWord || result->dateToken == "today");

    const auto resolved = CalendarRangeResolver::parse(result->dateToken, now, calendar);
    if (!resolved) return 0;
    FUZZ_CHECK(resolved->start < resolved->end);
    if (pointsForward(result->dateToken)) FUZZ_CHECK(resolved->start > now);
    if (!result->hour || *result->hour > 23) return 0;
    const DateParts day = calendar.parts(resolved->start);
    const auto built = calendar.date(day.year, day.month, day.day, *result->hour, result->minute);
    if (!built) return 0;
    const TimePoint fire = DateTimeExpressionParser::rollingPastTimeForward(
        *built, result->hasExplicitDateWord, now, calendar);
    if (pointsForward(result->dateToken) || !result->hasExplicitDateWord) FUZZ_CHECK(fire > now);
    return 0;
}
