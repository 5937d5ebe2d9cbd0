#include "personal/calendar_fast_path.h"

#include <array>

#include "base/text.h"
#include "personal/date_time_expression_parser.h"
#include "personal/delete_request_words.h"
#include "personal/folded_text.h"

namespace nuvrel::personal {
namespace {

constexpr std::array<std::string_view, 10> koreanSuffixes = {
    "일정 추가해줘", "일정추가해줘", "일정 잡아줘", "일정잡아줘",        "일정 등록해줘",
    "일정등록해줘",  "약속 잡아줘",  "약속잡아줘",  "캘린더에 추가해줘", "캘린더에 등록해줘",
};
constexpr std::array<std::string_view, 3> englishPrefixes = {"add event ", "schedule event ",
                                                             "create event "};

constexpr std::array<std::string_view, 14> calendarNouns = {
    "일정",        "캘린더", "스케줄",     "event",        "events", "calendar", "schedule",
    "appointment", "予定",   "カレンダー", "スケジュール", "日程",   "日历",     "行程"};
constexpr std::array<std::string_view, 15> deleteVerbs = {
    "삭제",  "지워", "취소",       "빼줘",   "없애", "delete", "remove", "cancel",
    "clear", "削除", "キャンセル", "消して", "删除", "取消",   "删掉"};
constexpr std::array<std::string_view, 24> stopTokens = {
    "에서", "에", "의",   "를", "을", "은",  "는", "좀", "그",   "이", "the", "a",
    "an",   "of", "from", "in", "on", "for", "の", "を", "から", "で", "は",  "が"};
// "해" before "줘요" and "して" before "してください", deliberately: an ending is tested on the
// end of the word, so the longer Japanese form is reached only when the shorter does not fit.
constexpr std::array<std::string_view, 9> verbEndings = {
    "해줘요", "해줘", "해 줘", "하세요", "해", "줘요", "줘", "して", "してください"};

// Stands in for a title when only date words are left, since parse refuses a text without one.
constexpr std::string_view sentinel = "·";

}  // namespace

std::optional<CalendarAddEventCandidate> CalendarAddEventFastPath::match(std::string_view query) {
    const std::string text = base::text::trim(query);
    if (text.empty()) return std::nullopt;
    std::optional<std::string> body;
    for (std::string_view suffix : koreanSuffixes) {
        if (std::string_view(text).ends_with(suffix)) {
            body = text.substr(0, text.size() - suffix.size());
            break;
        }
    }
    if (!body) body = textAfterPrefix(text, englishPrefixes);
    if (!body) return std::nullopt;
    const auto parsed = DateTimeExpressionParser::parse(*body);
    if (!parsed) return std::nullopt;
    return CalendarAddEventCandidate{parsed->title, parsed->dateToken, parsed->hour, parsed->minute,
                                     parsed->hasExplicitDateWord};
}

std::optional<CalendarDeleteCandidate> CalendarDeleteFastPath::match(std::string_view query) {
    static const DeleteRequestReader reader(
        DeleteRequestWords{calendarNouns, deleteVerbs, stopTokens, verbEndings});
    std::optional<std::string> rest = reader.rest(query);
    if (!rest) return std::nullopt;
    if (rest->empty()) *rest = sentinel;
    auto parsed = DateTimeExpressionParser::parse(*rest);
    if (!parsed) parsed = DateTimeExpressionParser::parse(*rest + " " + std::string(sentinel));
    if (!parsed) return CalendarDeleteCandidate{"today", "", false};
    return CalendarDeleteCandidate{
        parsed->dateToken, base::text::trim(base::text::replaceAll(parsed->title, sentinel, "")),
        parsed->hasExplicitDateWord};
}

}  // namespace nuvrel::personal
