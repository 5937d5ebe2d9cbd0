#include "personal/notes_fast_path.h"

#include <array>

#include "base/regex.h"
#include "base/text.h"
#include "personal/delete_request_words.h"
#include "personal/folded_text.h"
#include "pipeline/korean_particle.h"

namespace nuvrel::personal {
namespace {

struct ColonPrefix {
    std::string_view prefix;
    bool caseInsensitive;
};

constexpr std::array<ColonPrefix, 8> colonPrefixes = {{
    {"메모해줘:", false},
    {"메모해줘：", false},
    {"note this down:", true},
    {"take a note:", true},
    {"备忘录：", false},
    {"备忘录:", false},
    {"メモ：", false},
    {"メモ:", false},
}};

constexpr std::array<std::string_view, 8> noteNouns = {"메모", "노트",   "note",   "notes",
                                                       "メモ", "ノート", "备忘录", "笔记"};
// Neither "취소" nor "cancel": cancelling a note means nothing, and "cancel the meeting
// note" belongs to the calendar.
constexpr std::array<std::string_view, 11> deleteVerbs = {
    "삭제", "지워", "없애", "빼줘", "delete", "remove", "clear", "削除", "消して", "删除", "删掉"};
constexpr std::array<std::string_view, 22> stopTokens = {
    "에서", "에",  "의", "를", "을", "은",   "는", "좀",    "그", "이", "했던",
    "관련", "the", "a",  "an", "of", "from", "my", "about", "の", "を", "で"};
constexpr std::array<std::string_view, 8> verbEndings = {"해줘요", "해줘", "해 줘", "하세요",
                                                         "해",     "줘요", "줘",    "して"};

const base::Regex& koreanTrigger() {
    static const base::Regex pattern(
        R"(메모\s*(?:에다가|에다|에)?\s*(?:좀\s*)?(?:해\s*주세요|해\s*줘요?|적어\s*주세요|)"
        R"(적어\s*줘요?|저장해\s*주세요|저장해\s*줘요?|남겨\s*주세요|남겨\s*줘요?|남겨|해)\s*[?!.~…]*$)");
    return pattern;
}

std::optional<std::string> afterColonPrefix(std::string_view text) {
    for (const ColonPrefix& entry : colonPrefixes) {
        if (!entry.caseInsensitive) {
            if (text.starts_with(entry.prefix))
                return base::text::trim(text.substr(entry.prefix.size()));
            continue;
        }
        const auto range = FoldedText(text).find(entry.prefix);
        if (range && range->first == 0) return base::text::trim(text.substr(range->second));
    }
    return std::nullopt;
}

}  // namespace

std::optional<NotesCandidate> NotesFastPath::match(std::string_view query) {
    const std::string text = base::text::trim(query);
    if (text.empty()) return std::nullopt;
    if (auto content = afterColonPrefix(text)) return NotesCandidate{std::move(*content)};
    const auto trigger = koreanTrigger().firstMatch(text);
    if (!trigger) return std::nullopt;
    const std::string before = base::text::trim(std::string_view(text).substr(0, trigger->begin()));
    return NotesCandidate{pipeline::KoreanParticle::stripTrailingObjectParticle(before)};
}

std::optional<NoteDeleteCandidate> NoteDeleteFastPath::match(std::string_view query) {
    static const DeleteRequestReader reader(
        DeleteRequestWords{noteNouns, deleteVerbs, stopTokens, verbEndings});
    auto rest = reader.rest(query);
    if (!rest || rest->empty()) return std::nullopt;
    return NoteDeleteCandidate{std::move(*rest)};
}

}  // namespace nuvrel::personal
