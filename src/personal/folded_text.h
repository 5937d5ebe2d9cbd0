#pragma once
// Case-insensitive search that answers in byte offsets of the original text, so that a word
// found in the lower-cased copy can be cut out of the text as the user typed it.

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nuvrel::personal {

class FoldedText {
public:
    // Lower-cases code point by code point (simple case mapping).
    explicit FoldedText(std::string_view text);
    const std::string& folded() const { return folded_; }
    // The byte range in the original text of the first occurrence of `lowerNeedle` (already
    // lower-case) in the folded copy; nothing when it does not occur.
    std::optional<std::pair<std::size_t, std::size_t>> find(std::string_view lowerNeedle) const;

private:
    std::size_t originalSize_;
    std::string folded_;
    std::vector<std::size_t> origin_;  // for each byte of folded_, its code point's offset
};

// The text with the first case-insensitive occurrence of `lowerNeedle` cut out, and where the
// cut was; nothing when it does not occur.
std::optional<std::pair<std::string, std::size_t>> removeFirstCaseInsensitive(
    std::string_view text, std::string_view lowerNeedle);

// The text behind the first of `lowerPrefixes` (lower-case) that it begins with, ignoring
// case, as typed; nothing when none begins it. Counted in characters, since lower-casing may
// change byte lengths.
std::optional<std::string> textAfterPrefix(std::string_view text,
                                           std::span<const std::string_view> lowerPrefixes);

}  // namespace nuvrel::personal
