#include "personal/reminder_fast_path.h"

#include <algorithm>
#include <array>

#include "base/text.h"
#include "personal/date_time_expression_parser.h"
#include "personal/delete_request_words.h"
#include "personal/folded_text.h"
#include "pipeline/korean_particle.h"

namespace nuvrel::personal {
namespace {

// In table order; matching tries them longest first (see orderedKoreanSuffixes).
constexpr std::array<std::string_view, 13> koreanSuffixes = {
    "미리알림 추가해줘",
    "미리알림추가해줘",
    "미리알림 등록해줘",
    "미리알림등록해줘",
    "미리알림 설정해줘",
    "미리알림설정해줘",
    "알림 설정해줘",
    "알림설정해줘",
    "리마인드 해줘",
    "리마인드해줘",
    "알림",
    "리마인드",
    "미리알림",
};
constexpr std::array<std::string_view, 5> ambiguousKoreanSuffixes = {
    "알림 설정해줘", "알림설정해줘", "알림", "리마인드", "미리알림"};
constexpr std::array<std::string_view, 4> englishPrefixes = {
    "remind me to ", "set a reminder to ", "set a reminder ", "add a reminder to "};

constexpr std::array<std::string_view, 10> reminderNouns = {
    "미리알림",  "미리 알림",    "리마인더",   "리마인드", "reminder",
    "reminders", "リマインダー", "リマインド", "提醒事项", "提醒"};
constexpr std::array<std::string_view, 15> deleteVerbs = {
    "삭제",  "지워", "취소",       "없애",   "빼줘", "delete", "remove", "cancel",
    "clear", "削除", "キャンセル", "消して", "删除", "取消",   "删掉"};
constexpr std::array<std::string_view, 19> stopTokens = {
    "에서", "에", "의", "를", "을",   "은", "는", "좀", "그", "이",
    "the",  "a",  "an", "of", "from", "my", "の", "を", "で"};
constexpr std::array<std::string_view, 8> verbEndings = {"해줘요", "해줘", "해 줘", "하세요",
                                                         "해",     "줘요", "줘",    "して"};

// A longer suffix is tried before its own tail ("미리알림" before "알림"): in table order
// "알림" would cut "약 먹기 미리알림" into the title "약 먹기 미리".
const std::array<std::string_view, 13>& orderedKoreanSuffixes() {
    static const std::array<std::string_view, 13> ordered = [] {
        auto suffixes = koreanSuffixes;
        std::stable_sort(suffixes.begin(), suffixes.end(),
                         [](std::string_view a, std::string_view b) {
                             return base::text::count(a) > base::text::count(b);
                         });
        return suffixes;
    }();
    return ordered;
}

}  // namespace

std::optional<ReminderCandidate> ReminderFastPath::match(std::string_view query) {
    std::string text = pipeline::KoreanParticle::stripTrailingPunctuation(query);
    if (std::string_view(text).ends_with("줘요")) text = base::text::dropLast(text);
    if (text.empty()) return std::nullopt;

    std::optional<std::string> body;
    bool strong = true;
    for (std::string_view suffix : orderedKoreanSuffixes()) {
        if (!std::string_view(text).ends_with(suffix)) continue;
        body = text.substr(0, text.size() - suffix.size());
        strong = std::find(ambiguousKoreanSuffixes.begin(), ambiguousKoreanSuffixes.end(),
                           suffix) == ambiguousKoreanSuffixes.end();
        break;
    }
    if (!body) body = textAfterPrefix(text, englishPrefixes);
    if (!body) return std::nullopt;

    const auto parsed = DateTimeExpressionParser::parse(*body);
    if (!parsed) return std::nullopt;
    if (!strong && !parsed->hasExplicitDateWord && !parsed->hour) return std::nullopt;
    return ReminderCandidate{parsed->title, parsed->dateToken, parsed->hour, parsed->minute,
                             parsed->hasExplicitDateWord};
}

std::optional<ReminderDeleteCandidate> ReminderDeleteFastPath::match(std::string_view query) {
    static const DeleteRequestReader reader(
        DeleteRequestWords{reminderNouns, deleteVerbs, stopTokens, verbEndings});
    const auto rest = reader.rest(query);
    if (!rest) return std::nullopt;
    return ReminderDeleteCandidate{*rest};
}

}  // namespace nuvrel::personal
