#include "desktop/finder_search_fast_path.h"

#include <unicode/uchar.h>

#include <array>
#include <string>
#include <unordered_set>

#include "base/text.h"
#include "pipeline/korean_particle.h"

namespace nuvrel::desktop::FinderSearchFastPath {
namespace {

namespace text = base::text;

struct Trigger {
    std::string_view phrase;
    bool ambiguous;  // could as well be a web search or a question
};

constexpr std::array<Trigger, 6> koreanEndings{{
    {"찾아줘", false},
    {"찾아봐", false},
    {"검색해줘", true},
    {"어디있어", true},
    {"어디 있어", true},
    {"어딨어", true},
}};

constexpr std::array<Trigger, 5> englishBeginnings{{
    {"find ", false},
    {"search for ", true},
    {"search ", true},
    {"locate ", false},
    {"where is ", true},
}};

constexpr std::array<std::string_view, 6> leadingArticles{"my ", "the ", "a ", "an ", "내 ", "제 "};

const std::unordered_set<std::string_view>& routerPreferredSoloTokens() {
    static const std::unordered_set<std::string_view> tokens{
        "pdf",    "hwp",    "docx",      "doc",         "xlsx",       "pptx",     "ppt",
        "zip",    "txt",    "excel",     "spreadsheet", "image",      "images",   "photo",
        "photos", "video",  "videos",    "document",    "documents",  "문서",     "사진",
        "이미지", "영상",   "동영상",    "엑셀",        "파워포인트", "압축파일", "폴더",
        "folder", "書類",   "画像",      "写真",        "動画",       "文档",     "图片",
        "照片",   "视频",   "어제",      "오늘",        "내일",       "지난주",   "이번주",
        "지난달", "이번달", "yesterday", "today",       "tomorrow",   "昨日",     "今日",
        "先週",   "今週"};
    return tokens;
}

}  // namespace

bool looksLikeFileName(std::string_view candidate) {
    const std::size_t dot = candidate.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return false;
    const std::string_view extension = candidate.substr(dot + 1);
    std::size_t count = 0;
    for (std::size_t pos = 0; pos < extension.size();) {
        const char32_t c = text::nextCodePoint(extension, pos);
        if (!u_isalnum(static_cast<UChar32>(c))) return false;
        ++count;
    }
    return count >= 1 && count <= 5;
}

std::optional<std::string> match(std::string_view query) {
    const std::string trimmed = text::trim(query);
    if (trimmed.empty()) return std::nullopt;

    std::optional<std::string> body;
    bool ambiguous = false;
    for (const Trigger& ending : koreanEndings) {
        if (std::string_view(trimmed).ends_with(ending.phrase)) {
            body = trimmed.substr(0, trimmed.size() - ending.phrase.size());
            ambiguous = ending.ambiguous;
            break;
        }
    }
    if (!body) {
        const std::string lowered = text::lower(trimmed);
        for (const Trigger& beginning : englishBeginnings) {
            // The English beginnings are ASCII, so the lower-cased prefix has the same length.
            if (lowered.starts_with(beginning.phrase)) {
                body = trimmed.substr(beginning.phrase.size());
                ambiguous = beginning.ambiguous;
                break;
            }
        }
    }
    if (!body) return std::nullopt;

    std::string keyword = text::trim(*body);
    if (keyword.empty()) return std::nullopt;
    if (ambiguous && !looksLikeFileName(keyword)) return std::nullopt;

    for (bool stripped = true; stripped;) {
        stripped = false;
        const std::string lowered = text::lower(keyword);
        for (const std::string_view article : leadingArticles) {
            if (lowered.starts_with(article)) {
                keyword = text::trim(std::string_view(keyword).substr(article.size()));
                stripped = true;
                break;
            }
        }
    }
    keyword = pipeline::KoreanParticle::stripTrailingObjectParticle(keyword);
    if (keyword.empty()) return std::nullopt;

    const std::string lowered = text::lower(keyword);
    if (lowered.starts_with("http://") || lowered.starts_with("https://") ||
        lowered.starts_with("www."))
        return std::nullopt;
    if (text::splitBlanks(keyword).size() != 1) return std::nullopt;
    if (routerPreferredSoloTokens().contains(lowered)) return std::nullopt;
    return keyword;
}

}  // namespace nuvrel::desktop::FinderSearchFastPath
