#pragma once
// Recognises a request for the clipboard history ("clipboard", "클립보드 보여줘"): the whole
// query, in the normal form of the phrase tables. Pure; safe from any thread.

#include <string>
#include <string_view>
#include <unordered_set>

namespace nuvrel::personal::ClipboardHistoryFastPath {

// The phrases in normal form, built on first use.
const std::unordered_set<std::string>& phrases();
bool match(std::string_view query);

}  // namespace nuvrel::personal::ClipboardHistoryFastPath
