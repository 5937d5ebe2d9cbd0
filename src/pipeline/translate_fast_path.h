#pragma once
// Recognises an explicit translation request in Korean, English, Japanese or Chinese:
// "translate good morning to Korean", "영어로 번역: 안녕", "이거 번역해줘", "これを翻訳して".
//
// Pure; safe from any thread. The patterns are compiled once per process.

#include <optional>
#include <string_view>

#include "answers/translate_capability.h"

namespace nuvrel::pipeline::TranslateFastPath {

// The text to translate and the target's code. Without a language word, a Korean text goes
// to English and any other to Korean. Nothing when there is nothing to translate.
std::optional<answers::TranslateCandidate> match(std::string_view text);

// "en" when more than 30% of the alphanumeric code points are Hangul (or there are none),
// else "ko".
std::string_view defaultTarget(std::string_view text);

}  // namespace nuvrel::pipeline::TranslateFastPath
