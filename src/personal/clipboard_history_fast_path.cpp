#include "personal/clipboard_history_fast_path.h"

#include <array>

#include "pipeline/help_fast_path.h"

namespace nuvrel::personal::ClipboardHistoryFastPath {
namespace {

constexpr std::array<std::string_view, 21> rawPhrases = {"clipboard history",
                                                         "clipboard",
                                                         "show clipboard history",
                                                         "show clipboard",
                                                         "클립보드",
                                                         "클립보드 기록",
                                                         "클립보드 히스토리",
                                                         "클립보드 보여줘",
                                                         "클립보드 기록 보여줘",
                                                         "클립보드 히스토리 보여줘",
                                                         "클립보드 열어줘",
                                                         "クリップボード",
                                                         "クリップボード履歴",
                                                         "クリップボードの履歴",
                                                         "クリップボード履歴を見せて",
                                                         "クリップボードを開いて",
                                                         "剪贴板",
                                                         "剪贴板历史",
                                                         "剪贴板记录",
                                                         "查看剪贴板",
                                                         "打开剪贴板"};

}  // namespace

const std::unordered_set<std::string>& phrases() {
    static const std::unordered_set<std::string> normalized = [] {
        std::unordered_set<std::string> set;
        for (std::string_view phrase : rawPhrases)
            set.insert(pipeline::HelpFastPath::normalize(phrase));
        return set;
    }();
    return normalized;
}

bool match(std::string_view query) {
    return phrases().contains(pipeline::HelpFastPath::normalize(query));
}

}  // namespace nuvrel::personal::ClipboardHistoryFastPath
