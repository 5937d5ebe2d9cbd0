#pragma once
// Reads a timer request ("5분 타이머", "set a 5 minute timer", "タイマー3分") or a cancel
// request ("타이머 취소", "cancel timer") out of a query. Pure; safe from any thread.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/result_records.h"

namespace nuvrel::personal::TimerFastPath {

enum class Unit { hour, minute, second };

struct DurationComponent {
    std::int64_t value = 0;
    Unit unit = Unit::second;
    bool isKoreanUnit = false;
    bool operator==(const DurationComponent&) const = default;
};

// A query with a timer keyword and a positive duration; nothing when the query belongs to a
// later step of the cascade ("remind me in 5 minutes").
std::optional<core::TimerRequest> match(std::string_view query);
// A timer keyword with a cancel verb and no set verb.
bool matchCancel(std::string_view query);
// The duration of a text without the keyword requirement, for the router's duration slot.
std::optional<core::TimerRequest> request(std::string_view durationText);

// Every duration in the text, left to right; "an hour" and "half an hour" count.
std::vector<DurationComponent> parseDurationComponents(std::string_view text);
// "1시간 30분" when any unit was Korean, else "1 hour 30 minutes".
std::string formatDisplayText(const std::vector<DurationComponent>& components);

}  // namespace nuvrel::personal::TimerFastPath
