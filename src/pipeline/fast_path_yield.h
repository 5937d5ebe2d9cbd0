#pragma once
// Keeps the early, eager fast paths (timer, currency) from taking queries that belong further
// down the cascade: "remind me in ten minutes" is a reminder, not a timer, and "translate 5
// dollars" is not a conversion.

#include <array>
#include <string_view>

namespace nuvrel::pipeline::FastPathYield {

inline constexpr std::array<std::string_view, 24> downstreamTriggers = {
    "메모",     "적어줘", "남겨줘",    "미리알림",  "리마인드",  "알림 설정",
    "알림설정", "일정",   "번역",      "보내줘",    "검색해줘",  "찾아줘",
    "방법",     "는 법",  "remind me", "translate", "note down", "take a note",
    "翻译",     "翻訳",   "打开",      "開いて",    "起動して",  "メモ",
};

// True when the lower-cased query contains any of downstreamTriggers.
bool shouldYield(std::string_view query);

}  // namespace nuvrel::pipeline::FastPathYield
