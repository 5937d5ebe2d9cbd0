#include "personal/timer_fast_path.h"

#include <unicode/uchar.h>

#include <array>
#include <cstdint>

#include "base/regex.h"
#include "base/text.h"
#include "personal/folded_text.h"
#include "pipeline/fast_path_yield.h"
#include "pipeline/korean_particle.h"

namespace nuvrel::personal::TimerFastPath {
namespace {

constexpr std::array<std::string_view, 6> keywords = {"타이머", "타임머", "タイマー",
                                                      "计时器", "定时器", "倒计时"};

constexpr std::array<std::string_view, 18> cancelVerbs = {
    "취소",  "꺼줘",       "꺼 줘",  "멈춰", "중지",   "없애", "cancel", "stop", "turn off",
    "clear", "キャンセル", "止めて", "停止", "消して", "取消", "停止",   "关掉", "关闭"};

// Any of these turns a cancel into something else: "cancel and set a timer for 5 minutes".
constexpr std::array<std::string_view, 15> setVerbs = {"맞춰",   "설정",   "세팅", "재줘", "걸어",
                                                       "set ",   "start ", "for ", "in ",  "セット",
                                                       "かけて", "設定",   "设置", "设个", "定个"};

bool hasTimerWord(std::string_view query) {
    static const base::Regex englishWord(R"((?<![A-Za-z0-9-])timer(?![A-Za-z0-9-]))",
                                         base::Regex::caseInsensitive);
    for (std::string_view keyword : keywords) {
        if (base::text::contains(query, keyword)) return true;
    }
    return englishWord.search(query);
}

std::string expandingEnglishQuantityWords(std::string_view text) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 9> words = {{
        {"quarter of an hour", "15 minutes"},
        {"quarter hour", "15 minutes"},
        {"half an hour", "30 minutes"},
        {"half hour", "30 minutes"},
        {"an hour", "1 hour"},
        {"a hour", "1 hour"},
        {"a minute", "1 minute"},
        {"a min ", "1 min "},
        {"a second", "1 second"},
    }};
    std::string expanded(text);
    for (const auto& [from, to] : words) {
        // Every occurrence, case-insensitively.
        std::string out;
        std::string_view rest = expanded;
        while (auto range = FoldedText(rest).find(from)) {
            out.append(rest.substr(0, range->first)).append(to);
            rest = rest.substr(range->second);
        }
        out.append(rest);
        expanded = std::move(out);
    }
    return expanded;
}

std::optional<std::int64_t> integerValue(std::string_view digits) {
    std::int64_t value = 0;
    for (char32_t c : base::text::toUtf32(digits)) {
        const int digit = u_charDigitValue(static_cast<UChar32>(c));
        if (digit < 0) return std::nullopt;
        if (__builtin_mul_overflow(value, 10, &value) ||
            __builtin_add_overflow(value, digit, &value))
            return std::nullopt;
    }
    return value;
}

std::optional<DurationComponent> classified(std::int64_t value, std::string_view unitText) {
    const std::string unit = base::text::lower(unitText);
    const auto is = [&](std::initializer_list<std::string_view> words) {
        for (std::string_view word : words) {
            if (unit == word) return true;
        }
        return false;
    };
    if (unit == "시간") return DurationComponent{value, Unit::hour, true};
    if (unit == "분") return DurationComponent{value, Unit::minute, true};
    if (unit == "초") return DurationComponent{value, Unit::second, true};
    if (is({"時間", "小时", "小時"})) return DurationComponent{value, Unit::hour, false};
    if (is({"分", "分鐘", "分钟"})) return DurationComponent{value, Unit::minute, false};
    if (is({"秒", "秒鐘", "秒钟"})) return DurationComponent{value, Unit::second, false};
    if (unit.starts_with("hour") || unit == "hr" || unit == "hrs")
        return DurationComponent{value, Unit::hour, false};
    if (unit.starts_with("minute") || unit.starts_with("min"))
        return DurationComponent{value, Unit::minute, false};
    return DurationComponent{value, Unit::second, false};
}

std::int64_t secondsPer(Unit unit) {
    switch (unit) {
        case Unit::hour:
            return 3600;
        case Unit::minute:
            return 60;
        case Unit::second:
            return 1;
    }
    return 1;
}

std::optional<core::TimerRequest> requestFrom(const std::vector<DurationComponent>& components) {
    std::int64_t total = 0;
    for (const DurationComponent& component : components) {
        // A typed number can be of any length: a sum beyond 64 bits is no timer, never a crash.
        std::int64_t seconds = 0;
        if (__builtin_mul_overflow(component.value, secondsPer(component.unit), &seconds) ||
            __builtin_add_overflow(total, seconds, &total))
            return std::nullopt;
    }
    if (total <= 0) return std::nullopt;
    return core::TimerRequest{total, formatDisplayText(components)};
}

}  // namespace

std::vector<DurationComponent> parseDurationComponents(std::string_view text) {
    static const base::Regex duration(
        R"((\d+)\s*(時間|小时|小時|시간|分鐘|分钟|分|초(?!과)|분(?![기의])|秒鐘|秒钟|秒|(?:hours?|hrs?|hr|minutes?|mins?|min|seconds?|secs?|sec)(?![A-Za-z-])))",
        base::Regex::caseInsensitive);
    const std::string expanded = expandingEnglishQuantityWords(text);
    std::vector<DurationComponent> components;
    for (const auto& match : duration.allMatches(expanded)) {
        if (match.groupCount() < 2) continue;
        const auto value = integerValue(match.group(1));
        if (!value) continue;
        if (auto component = classified(*value, match.group(2))) components.push_back(*component);
    }
    return components;
}

std::string formatDisplayText(const std::vector<DurationComponent>& components) {
    std::int64_t sums[3] = {0, 0, 0};
    bool korean = false;
    for (const DurationComponent& component : components) {
        auto& sum = sums[static_cast<int>(component.unit)];
        // Saturates: the display of a sum past 64 bits is no timer anyway.
        if (__builtin_add_overflow(sum, component.value, &sum)) sum = INT64_MAX;
        korean = korean || component.isKoreanUnit;
    }
    static constexpr std::array<std::string_view, 3> koreanSuffixes = {"시간", "분", "초"};
    static constexpr std::array<std::string_view, 3> englishWords = {"hour", "minute", "second"};
    std::string text;
    for (int unit = 0; unit < 3; ++unit) {
        if (sums[unit] < 1) continue;
        if (!text.empty()) text += ' ';
        text += std::to_string(sums[unit]);
        if (korean) {
            text += koreanSuffixes[unit];
        } else {
            text += ' ';
            text += englishWords[unit];
            if (sums[unit] != 1) text += 's';
        }
    }
    return text;
}

std::optional<core::TimerRequest> match(std::string_view query) {
    if (pipeline::FastPathYield::shouldYield(query)) return std::nullopt;
    if (!hasTimerWord(query)) return std::nullopt;
    return requestFrom(parseDurationComponents(query));
}

bool matchCancel(std::string_view query) {
    const std::string text =
        base::text::lower(pipeline::KoreanParticle::stripTrailingPunctuation(query));
    if (!hasTimerWord(text)) return false;
    const auto holdsAny = [&](const auto& words) {
        for (std::string_view word : words) {
            if (base::text::contains(text, base::text::lower(word))) return true;
        }
        return false;
    };
    return holdsAny(cancelVerbs) && !holdsAny(setVerbs);
}

std::optional<core::TimerRequest> request(std::string_view durationText) {
    return requestFrom(parseDurationComponents(durationText));
}

}  // namespace nuvrel::personal::TimerFastPath
