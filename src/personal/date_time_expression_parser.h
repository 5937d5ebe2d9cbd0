#pragma once
// Reads a title, a symbolic date token and a clock time out of free text in Korean, Japanese,
// Chinese and English at once: "내일 오후 3시에 치과 예약 추가해줘", "dentist tomorrow at
// 3pm". It computes no date: CalendarRangeResolver turns the token into an interval.
//
// Pure functions over tables built once; safe from any thread.

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "personal/gregorian_calendar.h"

namespace nuvrel::personal::DateTimeExpressionParser {

struct Result {
    // The text left after the date word, the time and the request verb are removed.
    std::string title{};
    // One token of the date vocabulary ("tomorrow", "next_friday", ...); "today" when the text
    // named no date.
    std::string dateToken{};
    // On a 24-hour clock; absent when no time was found. The Korean and CJK forms check no
    // range: "25시" is hour 25.
    std::optional<int> hour{};
    // 0 when no time was found or none was said.
    int minute = 0;
    bool hasExplicitDateWord = false;

    bool operator==(const Result&) const = default;
};

// The (word, token) pairs in search order: the first word that the lower-cased text contains
// wins, so specific phrases stand first.
const std::vector<std::pair<std::string, std::string>>& dateTokens();

// Nothing when the text is empty after trimming or nothing remains for a title.
std::optional<Result> parse(std::string_view text);

// A time said without a date word that has already passed today means the same time
// tomorrow: with no explicit date word and `date` at or before `now`, one calendar day later;
// otherwise (or when the day cannot be added) `date` unchanged.
TimePoint rollingPastTimeForward(TimePoint date, bool hasExplicitDateWord, TimePoint now,
                                 const GregorianCalendar& calendar);

}  // namespace nuvrel::personal::DateTimeExpressionParser
