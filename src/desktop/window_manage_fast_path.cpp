#include "desktop/window_manage_fast_path.h"

#include <array>

#include "pipeline/help_fast_path.h"

namespace nuvrel::desktop::WindowManageFastPath {
namespace {

using A = core::WindowAction;

constexpr std::array<Row, 52> rows = {{
    {A::leftHalf, "창 왼쪽으로"},
    {A::leftHalf, "창 왼쪽 절반"},
    {A::leftHalf, "왼쪽 절반"},
    {A::leftHalf, "left half"},
    {A::leftHalf, "move window left"},
    {A::leftHalf, "window left"},
    {A::rightHalf, "창 오른쪽으로"},
    {A::rightHalf, "창 오른쪽 절반"},
    {A::rightHalf, "오른쪽 절반"},
    {A::rightHalf, "right half"},
    {A::rightHalf, "move window right"},
    {A::rightHalf, "window right"},
    {A::topHalf, "창 위쪽으로"},
    {A::topHalf, "창 위 절반"},
    {A::topHalf, "위쪽 절반"},
    {A::topHalf, "top half"},
    {A::topHalf, "window top"},
    {A::bottomHalf, "창 아래쪽으로"},
    {A::bottomHalf, "창 아래 절반"},
    {A::bottomHalf, "아래쪽 절반"},
    {A::bottomHalf, "bottom half"},
    {A::bottomHalf, "window bottom"},
    {A::topLeftQuarter, "왼쪽 위 4분할"},
    {A::topLeftQuarter, "좌상단 4분할"},
    {A::topLeftQuarter, "top left quarter"},
    {A::topLeftQuarter, "top-left quarter"},
    {A::topRightQuarter, "오른쪽 위 4분할"},
    {A::topRightQuarter, "우상단 4분할"},
    {A::topRightQuarter, "top right quarter"},
    {A::topRightQuarter, "top-right quarter"},
    {A::bottomLeftQuarter, "왼쪽 아래 4분할"},
    {A::bottomLeftQuarter, "좌하단 4분할"},
    {A::bottomLeftQuarter, "bottom left quarter"},
    {A::bottomLeftQuarter, "bottom-left quarter"},
    {A::bottomRightQuarter, "오른쪽 아래 4분할"},
    {A::bottomRightQuarter, "우하단 4분할"},
    {A::bottomRightQuarter, "bottom right quarter"},
    {A::bottomRightQuarter, "bottom-right quarter"},
    {A::maximize, "창 최대화"},
    {A::maximize, "창 크게"},
    {A::maximize, "maximize"},
    {A::maximize, "maximize window"},
    {A::center, "창 가운데로"},
    {A::center, "창 가운데"},
    {A::center, "center window"},
    {A::center, "창 중앙으로"},
    {A::nextDisplay, "다음 화면으로"},
    {A::nextDisplay, "다른 화면으로"},
    {A::nextDisplay, "창 다음 화면으로"},
    {A::nextDisplay, "next display"},
    {A::nextDisplay, "move to next display"},
    {A::nextDisplay, "other display"},
}};

}  // namespace

std::span<const Row> table() {
    return rows;
}

const std::unordered_map<std::string, core::WindowAction>& normalizedTable() {
    static const std::unordered_map<std::string, core::WindowAction> normalized = [] {
        std::unordered_map<std::string, core::WindowAction> map;
        for (const Row& row : rows)
            map.insert_or_assign(pipeline::HelpFastPath::normalize(row.phrase), row.action);
        return map;
    }();
    return normalized;
}

std::optional<core::WindowAction> match(std::string_view query) {
    const auto found = normalizedTable().find(pipeline::HelpFastPath::normalize(query));
    if (found == normalizedTable().end()) return std::nullopt;
    return found->second;
}

}  // namespace nuvrel::desktop::WindowManageFastPath
