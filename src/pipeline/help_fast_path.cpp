#include "pipeline/help_fast_path.h"

#include <array>

#include "base/text.h"

namespace nuvrel::pipeline::HelpFastPath {

const std::unordered_set<std::string>& phrases() {
    static const std::unordered_set<std::string> table = [] {
        static constexpr std::array<std::string_view, 20> texts = {
            "도움말",         "사용법",       "기능",        "기능목록",
            "help",           "whatcanyoudo", "whatdoyoudo", "whatcanyouhelpwith",
            "commands",       "features",     "howtouse",    "何ができる",
            "何ができますか", "何ができるの", "使い方",      "ヘルプ",
            "你能做什么",     "你会做什么",   "帮助",        "怎么用",
        };
        std::unordered_set<std::string> normalised;
        for (const std::string_view text : texts) normalised.insert(normalize(text));
        return normalised;
    }();
    return table;
}

const base::Regex& koreanPattern() {
    static const base::Regex pattern(
        "^(너|넌|너는|네가|니가)?(뭐|뭘|머|무엇을)(할수있|해줄수있|할줄알|할줄아)[가-힣]{0,3}$");
    return pattern;
}

std::string normalize(std::string_view text) {
    return base::text::stripTrailing(base::text::removeWhiteSpace(base::text::lower(text)),
                                     trailingPunctuation);
}

bool match(std::string_view query) {
    const std::string form = normalize(query);
    return phrases().contains(form) || koreanPattern().search(form);
}

}  // namespace nuvrel::pipeline::HelpFastPath
