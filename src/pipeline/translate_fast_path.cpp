#include "pipeline/translate_fast_path.h"

#include <unicode/uchar.h>

#include <array>
#include <string>

#include "base/regex.h"
#include "base/text.h"

namespace nuvrel::pipeline::TranslateFastPath {
namespace {

struct Pattern {
    base::Regex regex;
    // Capture groups of the language and the text; no language group for 0.
    int languageGroup;
    int textGroup;
};

const std::array<Pattern, 8>& patterns() {
    static const std::array<Pattern, 8> compiled = {{
        {base::Regex(
             R"(^(중국어간체|중국어번체|중국어|한국어|일본어|영어)\s*로\s*번역\s*[:：]\s*(.+)$)"),
         1, 2},
        {base::Regex(
             R"(^(.*?)\s*(중국어간체|중국어번체|중국어|한국어|일본어|영어)\s*로\s*번역(?:(?:\s*좀)?\s*(?:해\s*주세요|해\s*줘요?|해줄래요?|부탁드려요|부탁해요?|해))?\s*[?!.~…]*$)"),
         2, 1},
        {base::Regex(
             R"((?i)^translate\s+to\s+(english|korean|japanese|chinese|en|ko|ja|zh)\s*[:：]\s*(.+)$)"),
         1, 2},
        {base::Regex(
             R"((?i)^translate\s+(.+)\s+to\s+(english|korean|japanese|chinese|en|ko|ja|zh)\s*[.!?~…]*$)"),
         2, 1},
        {base::Regex(
             R"((?i)^(english|korean|japanese|chinese|en|ko|ja|zh)\s+translation\s+of\s+(.+)$)"),
         1, 2},
        {base::Regex(
             R"(^(.+?)\s*번역(?:\s*좀)?\s*(?:해\s*주세요|해\s*줘요?|해줄래요?|부탁드려요|부탁해요?|해)\s*[?!.~…]*$)"),
         0, 1},
        {base::Regex(R"(^(.+?)を?翻訳して\s*[。！？]*$)"), 0, 1},
        {base::Regex(R"(^(.+?)翻译一?下\s*[。！？]*$)"), 0, 1},
    }};
    return compiled;
}

std::optional<std::string_view> languageCode(std::string_view word) {
    static constexpr std::pair<std::string_view, std::string_view> languageMap[] = {
        {"영어", "en"},    {"english", "en"}, {"en", "en"},         {"한국어", "ko"},
        {"korean", "ko"},  {"ko", "ko"},      {"일본어", "ja"},     {"japanese", "ja"},
        {"ja", "ja"},      {"중국어", "zh"},  {"중국어간체", "zh"}, {"중국어번체", "zh"},
        {"chinese", "zh"}, {"zh", "zh"},
    };
    for (const auto& [key, code] : languageMap) {
        if (key == word) return code;
    }
    return std::nullopt;
}

bool isHangul(char32_t c) {
    return (c >= 0xAC00 && c <= 0xD7A3) || (c >= 0x3130 && c <= 0x318F) ||
           (c >= 0x1100 && c <= 0x11FF);
}

}  // namespace

std::string_view defaultTarget(std::string_view text) {
    std::size_t alphanumerics = 0, hangul = 0;
    for (char32_t c : base::text::toUtf32(text)) {
        // Letters, marks and numbers of every kind: digits tip the ratio too.
        if ((U_GET_GC_MASK(c) & (U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK)) == 0) continue;
        ++alphanumerics;
        if (isHangul(c)) ++hangul;
    }
    if (alphanumerics == 0) return "en";
    return double(hangul) / double(alphanumerics) > 0.3 ? "en" : "ko";
}

std::optional<answers::TranslateCandidate> match(std::string_view text) {
    const std::string trimmed = base::text::trim(text);
    if (trimmed.empty()) return std::nullopt;
    for (const Pattern& pattern : patterns()) {
        const auto found = pattern.regex.firstMatch(trimmed);
        if (!found) continue;
        const std::string body = base::text::trim(found->group(pattern.textGroup));
        if (body.empty()) return std::nullopt;
        if (pattern.languageGroup == 0)
            return answers::TranslateCandidate{body, std::string(defaultTarget(body))};
        const auto code =
            languageCode(base::text::lower(base::text::trim(found->group(pattern.languageGroup))));
        if (!code) continue;
        return answers::TranslateCandidate{body, std::string(*code)};
    }
    return std::nullopt;
}

}  // namespace nuvrel::pipeline::TranslateFastPath
