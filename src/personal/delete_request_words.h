#pragma once
// The shared reading of "delete the dentist event" and "우유 사기 미리알림 지워줘": a noun
// and a delete verb must both occur; they and the stop words go, and the last word loses its
// verb ending. What is left names the item.

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace nuvrel::personal {

struct DeleteRequestWords {
    std::span<const std::string_view> nouns;
    std::span<const std::string_view> verbs;
    std::span<const std::string_view> stopTokens;
    std::span<const std::string_view> verbEndings;  // tried in order
};

// Nothing unless the query holds a noun and a verb; otherwise the remaining words joined by
// one blank, possibly empty.
std::optional<std::string> deleteRequestRest(std::string_view query,
                                             const DeleteRequestWords& words);

}  // namespace nuvrel::personal
