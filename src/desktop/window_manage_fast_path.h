#pragma once
// Eleven window layouts as whole requests in English and Korean ("left half", "창 최대화");
// Chinese and Japanese requests go through the router.

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "core/window_action.h"

namespace nuvrel::desktop::WindowManageFastPath {

struct Row {
    core::WindowAction action;
    std::string_view phrase;
};

// The phrases as a user types them, in table order.
std::span<const Row> table();
// Every phrase in the pipeline's normal form, to its action; built on first use. Of two
// phrases that normalise alike, the later wins.
const std::unordered_map<std::string, core::WindowAction>& normalizedTable();

// The layout that the whole query names. Pure; microseconds.
std::optional<core::WindowAction> match(std::string_view query);

}  // namespace nuvrel::desktop::WindowManageFastPath
