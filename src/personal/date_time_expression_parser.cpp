#include "personal/date_time_expression_parser.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>

#include "base/regex.h"
#include "base/text.h"
#include "personal/folded_text.h"
#include "personal/weekday_names.h"
#include "pipeline/korean_particle.h"

namespace nuvrel::personal::DateTimeExpressionParser {
namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

constexpr std::array<std::string_view, 4> particles = {"에는 ", "에도 ", "에 ", "에"};

constexpr std::array<std::string_view, 17> trailingRequestVerbs = {
    "라고 알려줘", "라고 알려 줘", "하라고 알려줘",     "알려줘요",      "알려줘",     "알려주세요",
    "알려 줘",     "리마인드해줘", "미리알림 설정해줘", "알림 설정해줘", "추가해줘",   "넣어줘",
    "잡아줘",      "만들어줘",     "설정해줘",          "remind me to ", "remind me ",
};

struct NamedTime {
    std::string_view word;
    int hour;
    int minute;
};

// Longest word first; a stable sort keeps the table order among equal lengths.
const std::vector<NamedTime>& namedTimes() {
    static const std::vector<NamedTime> table = [] {
        std::vector<NamedTime> times = {
            {"점심시간", 12, 0}, {"점심때", 12, 0},   {"정오", 12, 0},    {"noon", 12, 0},
            {"아침", 8, 0},      {"morning", 8, 0},   {"저녁", 19, 0},    {"evening", 19, 0},
            {"밤", 21, 0},       {"자정", 0, 0},      {"midnight", 0, 0}, {"새벽", 5, 0},
            {"퇴근시간", 18, 0}, {"출근시간", 8, 30},
        };
        std::stable_sort(times.begin(), times.end(), [](const auto& a, const auto& b) {
            return base::text::count(a.word) > base::text::count(b.word);
        });
        return times;
    }();
    return table;
}

bool isOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// The value of a run of decimal digits, any script; nothing for anything else.
std::optional<int> digitsValue(std::string_view digits) {
    if (digits.empty()) return std::nullopt;
    long long value = 0;
    for (char32_t c : base::text::toUtf32(digits)) {
        const int digit = u_charDigitValue(static_cast<UChar32>(c));
        if (digit < 0) return std::nullopt;
        value = value * 10 + digit;
        if (value > 1'000'000) return std::nullopt;
    }
    return static_cast<int>(value);
}

int koreanDayPartHour(std::string_view part, int hour) {
    if (isOneOf(part, {"오후", "저녁", "밤", "낮"})) {
        if (hour <= 11) return hour + 12;
        if (hour == 12) return part == "밤" ? 0 : 12;
        return hour;
    }
    if (isOneOf(part, {"오전", "아침", "새벽"})) return hour == 12 ? 0 : hour;
    return hour;
}

int cjkDayPartHour(std::string_view part, int hour) {
    if (isOneOf(part, {"午後", "夕方", "夜", "昼", "下午", "晚上", "中午"})) {
        if (hour <= 11) return hour + 12;
        if (hour == 12) return part == "夜" || part == "晚上" ? 0 : 12;
        return hour;
    }
    if (isOneOf(part, {"午前", "朝", "上午", "早上"})) return hour == 12 ? 0 : hour;
    return hour;
}

std::string withoutRange(std::string_view text, std::size_t begin, std::size_t end) {
    std::string rest(text.substr(0, begin));
    rest.append(text.substr(end));
    return rest;
}

// Drops the first particle of the list that stands at `at`.
std::string withoutParticleAt(std::string text, std::size_t at) {
    for (std::string_view particle : particles) {
        if (std::string_view(text).substr(at).starts_with(particle)) {
            text.erase(at, particle.size());
            break;
        }
    }
    return text;
}

struct Time {
    std::optional<int> hour;
    int minute = 0;
};

// The Korean or CJK reader: day part, hour, "반"/"半" or minutes.
std::optional<Time> readDayPartTime(std::string& text, const base::Regex& pattern,
                                    std::string_view half, int (*dayPart)(std::string_view, int)) {
    const auto match = pattern.firstMatch(text);
    if (!match) return std::nullopt;
    Time time;
    if (const auto hour = digitsValue(match->group(2))) {
        time.hour = dayPart(match->group(1), *hour);
        if (match->group(3) == half)
            time.minute = 30;
        else if (match->matched(4))
            time.minute = digitsValue(match->group(4)).value_or(0);
    }
    text = withoutRange(text, match->begin(), match->end());
    return time;
}

std::optional<Time> readEnglishTime(std::string& text) {
    static const base::Regex pattern(
        R"((?:\bat\s+)?\b(\d{1,2})(:(\d{2}))?\s*(am|pm)\b|(?:\bat\s+)\b(\d{1,2}):(\d{2})\b)",
        base::Regex::caseInsensitive);
    const auto match = pattern.firstMatch(text);
    if (!match) return std::nullopt;
    Time time;
    if (match->matched(1)) {
        const auto hour = digitsValue(match->group(1));
        if (!hour) return time;
        const std::string meridiem = base::text::lower(match->group(4));
        time.hour = *hour;
        if (meridiem == "pm" && *hour < 12) time.hour = *hour + 12;
        if (meridiem == "am" && *hour == 12) time.hour = 0;
        time.minute = match->matched(3) ? digitsValue(match->group(3)).value_or(0) : 0;
    } else {
        const auto hour = digitsValue(match->group(5));
        const auto minute = digitsValue(match->group(6));
        // Only the 24-hour form checks its range; out of range the text keeps its match. A
        // one-digit hour ("at 3:30") is ambiguous without a meridiem and gives no time.
        if (!hour || !minute || *hour > 23 || *minute >= 60 ||
            base::text::count(match->group(5)) < 2)
            return time;
        time.hour = *hour;
        time.minute = *minute;
    }
    text = withoutRange(text, match->begin(), match->end());
    return time;
}

// The first reader that matches decides, even when it produced no valid time.
Time extractTime(std::string& text) {
    static const base::Regex korean(
        R"((오전|오후|아침|저녁|밤|새벽|낮)?\s*(\d{1,2})시\s*(반|(\d{1,2})분)?에?)");
    static const base::Regex cjk(
        R"((午前|午後|朝|夕方|夜|昼|上午|下午|早上|晚上|中午)?\s*(\d{1,2})[時点]\s*(半|(\d{1,2})分)?に?)");
    if (auto time = readDayPartTime(text, korean, "반", koreanDayPartHour)) return *time;
    if (auto time = readDayPartTime(text, cjk, "半", cjkDayPartHour)) return *time;
    if (auto time = readEnglishTime(text)) return *time;
    const FoldedText folded(text);
    for (const NamedTime& named : namedTimes()) {
        if (const auto range = folded.find(named.word)) {
            text = withoutParticleAt(withoutRange(text, range->first, range->second), range->first);
            return Time{named.hour, named.minute};
        }
    }
    return {};
}

std::string withoutTrailingRequestVerb(const std::string& text) {
    for (std::string_view verb : trailingRequestVerbs) {
        if (!std::string_view(text).ends_with(verb)) continue;
        std::string rest =
            base::text::trim(std::string_view(text).substr(0, text.size() - verb.size()));
        return rest.empty() ? text : rest;
    }
    return text;
}

std::string collapsedWhitespace(std::string_view text) {
    std::string joined;
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t blank = std::min(text.find(' ', start), text.size());
        if (blank > start) {
            if (!joined.empty()) joined += ' ';
            joined.append(text.substr(start, blank - start));
        }
        start = blank + 1;
    }
    return base::text::trim(joined);
}

Pairs buildDateTokens() {
    Pairs pairs;
    // All Korean and English weekday phrases stand before the Japanese and Chinese ones.
    for (const WeekdayName& day : weekdayNames) {
        const std::string korean(day.korean), english(day.english);
        for (const char* next : {"다음 주 ", "다음주 ", "담주 "})
            pairs.emplace_back(next + korean, "next_" + english);
        pairs.emplace_back("next " + english, "next_" + english);
        for (const char* thisWeek : {"이번 주 ", "이번주 "})
            pairs.emplace_back(thisWeek + korean, "this_" + english);
        pairs.emplace_back("this " + english, "this_" + english);
    }
    for (const WeekdayName& day : weekdayNames) {
        const std::string japanese(day.japanese), chinese(day.chinese), english(day.english);
        const std::string shortChinese = base::text::replaceAll(chinese, "星期", "");
        pairs.emplace_back("来週" + japanese, "next_" + english);
        pairs.emplace_back("下" + chinese, "next_" + english);
        pairs.emplace_back("下周" + shortChinese, "next_" + english);
        pairs.emplace_back("今週" + japanese, "this_" + english);
        pairs.emplace_back("这" + chinese, "this_" + english);
    }
    const Pairs ranges = {
        {"day after tomorrow", "day_after_tomorrow"},
        {"모레", "day_after_tomorrow"},
        {"이번 주말", "this_weekend"},
        {"이번주말", "this_weekend"},
        {"this weekend", "this_weekend"},
        {"다음 주말", "next_weekend"},
        {"다음주말", "next_weekend"},
        {"next weekend", "next_weekend"},
        {"이번 달", "this_month"},
        {"이번달", "this_month"},
        {"this month", "this_month"},
        {"다음 달", "next_month"},
        {"다음달", "next_month"},
        {"next month", "next_month"},
        {"이번 주", "this_week"},
        {"이번주", "this_week"},
        {"this week", "this_week"},
        {"다음 주", "next_week"},
        {"다음주", "next_week"},
        {"next week", "next_week"},
        {"明後日", "day_after_tomorrow"},
        {"後天", "day_after_tomorrow"},
        {"后天", "day_after_tomorrow"},
        {"今週末", "this_weekend"},
        {"这个周末", "this_weekend"},
        {"这周末", "this_weekend"},
        {"来週末", "next_weekend"},
        {"下个周末", "next_weekend"},
        {"下周末", "next_weekend"},
        {"今月", "this_month"},
        {"这个月", "this_month"},
        {"本月", "this_month"},
        {"来月", "next_month"},
        {"下个月", "next_month"},
        {"下月", "next_month"},
        {"今週", "this_week"},
        {"这周", "this_week"},
        {"这个星期", "this_week"},
        {"本周", "this_week"},
        {"来週", "next_week"},
        {"下周", "next_week"},
        {"下个星期", "next_week"},
    };
    pairs.insert(pairs.end(), ranges.begin(), ranges.end());
    for (const WeekdayName& day : weekdayNames) {
        const std::string thisOne = "this_" + std::string(day.english);
        pairs.emplace_back(day.korean, thisOne);
        pairs.emplace_back(day.english, thisOne);
    }
    for (const WeekdayName& day : weekdayNames) {
        const std::string thisOne = "this_" + std::string(day.english);
        pairs.emplace_back(day.japanese, thisOne);
        pairs.emplace_back(day.chinese, thisOne);
    }
    const Pairs days = {
        {"tomorrow", "tomorrow"}, {"내일", "tomorrow"}, {"yesterday", "yesterday"},
        {"어제", "yesterday"},    {"today", "today"},   {"오늘", "today"},
        {"明日", "tomorrow"},     {"明天", "tomorrow"}, {"昨日", "yesterday"},
        {"昨天", "yesterday"},    {"今日", "today"},    {"今天", "today"},
    };
    pairs.insert(pairs.end(), days.begin(), days.end());
    return pairs;
}

}  // namespace

const Pairs& dateTokens() {
    static const Pairs pairs = buildDateTokens();
    return pairs;
}

std::optional<Result> parse(std::string_view input) {
    std::string text = base::text::trim(input);
    if (text.empty()) return std::nullopt;

    Result result;
    result.dateToken = "today";
    const FoldedText folded(text);
    for (const auto& [word, token] : dateTokens()) {
        if (const auto range = folded.find(word)) {
            result.dateToken = token;
            result.hasExplicitDateWord = true;
            text = withoutParticleAt(withoutRange(text, range->first, range->second), range->first);
            break;
        }
    }

    const Time time = extractTime(text);
    result.hour = time.hour;
    result.minute = time.hour ? time.minute : 0;

    text = withoutTrailingRequestVerb(text);
    result.title = pipeline::KoreanParticle::stripTrailingObjectParticle(collapsedWhitespace(text));
    if (result.title.empty()) return std::nullopt;
    return result;
}

TimePoint rollingPastTimeForward(TimePoint date, bool hasExplicitDateWord, TimePoint now,
                                 const GregorianCalendar& calendar) {
    if (hasExplicitDateWord || date > now) return date;
    return calendar.addingDays(date, 1).value_or(date);
}

}  // namespace nuvrel::personal::DateTimeExpressionParser
