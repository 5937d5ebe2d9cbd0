#pragma once
// The shared reading of "delete the dentist event" and "우유 사기 미리알림 지워줘": a noun
// and a delete verb must both occur; they and the stop words go, and the last word loses its
// verb ending. What is left names the item.

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nuvrel::personal {

struct DeleteRequestWords {
    std::span<const std::string_view> nouns;
    std::span<const std::string_view> verbs;
    std::span<const std::string_view> stopTokens;
    std::span<const std::string_view> verbEndings;  // tried in order
};

// The tables prepared once (lower-cased, nouns and verbs in the order they are removed), so
// that a query costs no case mapping of the tables. Build one per table set, as a static.
class DeleteRequestReader {
public:
    explicit DeleteRequestReader(const DeleteRequestWords& words);
    // Nothing unless the query holds a noun and a verb; otherwise the remaining words joined
    // by one blank, possibly empty. Safe from any thread.
    std::optional<std::string> rest(std::string_view query) const;

private:
    DeleteRequestWords words_;
    std::vector<std::string> nouns_;  // lower-cased
    std::vector<std::string> verbs_;  // lower-cased
    std::vector<std::string> noise_;  // verbs then nouns, lower-cased, longest first (stable)
};

}  // namespace nuvrel::personal
