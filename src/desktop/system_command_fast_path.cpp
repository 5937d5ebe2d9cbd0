#include "desktop/system_command_fast_path.h"

#include <array>

#include "pipeline/help_fast_path.h"

namespace nuvrel::desktop::SystemCommandFastPath {
namespace {

using core::SystemCommand;
using P = std::string_view;

constexpr std::array<P, 11> sleepPhrases = {
    "sleep",
    "go to sleep",
    "put my mac to sleep",
    "put the mac to sleep",
    "잠자기",
    "절전모드",
    "재워줘",
    "スリープ",
    "スリープして",
    "睡眠",
    "休眠",
};
constexpr std::array<P, 11> lockPhrases = {
    "lock screen",  "lock my screen", "lock the screen", "화면 잠가줘", "화면 잠금", "잠금화면",
    "画面をロック", "画面ロック",     "ロック",          "锁屏",        "锁定屏幕",
};
constexpr std::array<P, 11> mutePhrases = {
    "mute",        "mute volume", "mute the volume", "음소거",
    "음소거 해줘", "소리 꺼줘",   "볼륨 꺼줘",       "ミュート",
    "消音",        "静音",        "关闭声音",
};
constexpr std::array<P, 10> unmutePhrases = {
    "unmute",    "unmute volume", "unmute the volume", "음소거 해제", "음소거 해제해줘",
    "소리 켜줘", "ミュート解除",  "消音を解除",        "取消静音",    "打开声音",
};
constexpr std::array<P, 15> volumeUpPhrases = {
    "volume up",    "turn up the volume", "turn the volume up", "볼륨 높여줘", "볼륨 올려줘",
    "볼륨 올려",    "소리 올려줘",        "볼륨 키워줘",        "소리 키워줘", "音量を上げて",
    "音量を上げる", "音量アップ",         "把音量调大",         "调大音量",    "音量调大",
};
constexpr std::array<P, 15> volumeDownPhrases = {
    "volume down",  "turn down the volume", "turn the volume down", "볼륨 낮춰줘", "볼륨 내려줘",
    "볼륨 내려",    "소리 내려줘",          "볼륨 줄여줘",          "소리 줄여줘", "音量を下げて",
    "音量を下げる", "音量ダウン",           "把音量调小",           "调小音量",    "音量调小",
};
constexpr std::array<P, 14> screenshotPhrases = {
    "screenshot",
    "take a screenshot",
    "take screenshot",
    "capture screen",
    "capture the screen",
    "스크린샷",
    "스크린샷 찍어줘",
    "화면 캡처",
    "スクリーンショット",
    "スクショ",
    "画面をキャプチャ",
    "截图",
    "截屏",
    "屏幕截图",
};
constexpr std::array<P, 14> wallpaperPhrases = {
    "wallpaper", "wallpaper settings", "change wallpaper", "desktop background",
    "배경화면",  "배경화면 설정",      "배경화면 바꿔줘",  "바탕화면 설정",
    "壁紙",      "壁紙設定",           "壁紙を変更",       "壁纸",
    "壁纸设置",  "更换壁纸",
};

constexpr std::array<Row, 8> rows = {{
    {SystemCommand::sleep, sleepPhrases},
    {SystemCommand::lockScreen, lockPhrases},
    {SystemCommand::mute, mutePhrases},
    {SystemCommand::unmute, unmutePhrases},
    {SystemCommand::volumeUp, volumeUpPhrases},
    {SystemCommand::volumeDown, volumeDownPhrases},
    {SystemCommand::screenshot, screenshotPhrases},
    {SystemCommand::openWallpaperSettings, wallpaperPhrases},
}};

}  // namespace

std::span<const Row> table() {
    return rows;
}

const std::unordered_map<std::string, SystemCommand>& normalizedTable() {
    static const std::unordered_map<std::string, SystemCommand> normalized = [] {
        std::unordered_map<std::string, SystemCommand> map;
        for (const Row& row : rows)
            for (const std::string_view phrase : row.phrases)
                map.insert_or_assign(pipeline::HelpFastPath::normalize(phrase), row.command);
        return map;
    }();
    return normalized;
}

std::optional<SystemCommand> match(std::string_view query) {
    const std::string key = pipeline::HelpFastPath::normalize(query);
    if (key.empty()) return std::nullopt;
    const auto found = normalizedTable().find(key);
    if (found == normalizedTable().end()) return std::nullopt;
    return found->second;
}

}  // namespace nuvrel::desktop::SystemCommandFastPath
