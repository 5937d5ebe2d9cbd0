#include "personal/folded_text.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include "base/text.h"

namespace nuvrel::personal {

FoldedText::FoldedText(std::string_view text) : originalSize_(text.size()) {
    folded_.reserve(text.size());
    origin_.reserve(text.size());
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const auto length = static_cast<int32_t>(text.size());
    int32_t i = 0;
    while (i < length) {
        const int32_t start = i;
        UChar32 c;
        U8_NEXT(bytes, i, length, c);
        if (c < 0) {
            // An ill-formed byte stands for itself.
            folded_.append(text.substr(start, i - start));
            origin_.insert(origin_.end(), i - start, start);
            continue;
        }
        uint8_t buffer[U8_MAX_LENGTH];
        int32_t written = 0;
        U8_APPEND_UNSAFE(buffer, written, u_tolower(c));
        folded_.append(reinterpret_cast<const char*>(buffer), written);
        origin_.insert(origin_.end(), written, start);
    }
}

std::optional<std::pair<std::size_t, std::size_t>> FoldedText::find(
    std::string_view lowerNeedle) const {
    if (lowerNeedle.empty()) return std::nullopt;
    const std::size_t at = folded_.find(lowerNeedle);
    if (at == std::string::npos) return std::nullopt;
    const std::size_t end = at + lowerNeedle.size();
    return std::pair{origin_[at], end < origin_.size() ? origin_[end] : originalSize_};
}

std::optional<std::pair<std::string, std::size_t>> removeFirstCaseInsensitive(
    std::string_view text, std::string_view lowerNeedle) {
    const auto range = FoldedText(text).find(lowerNeedle);
    if (!range) return std::nullopt;
    std::string rest(text.substr(0, range->first));
    rest.append(text.substr(range->second));
    return std::pair{std::move(rest), range->first};
}

std::optional<std::string> textAfterPrefix(std::string_view text,
                                           std::span<const std::string_view> lowerPrefixes) {
    const std::string lowered = base::text::lower(text);
    for (std::string_view prefix : lowerPrefixes) {
        if (lowered.starts_with(prefix))
            return base::text::suffix(text, base::text::count(text) - base::text::count(prefix));
    }
    return std::nullopt;
}

}  // namespace nuvrel::personal
