#include "pipeline/document_summarize_fast_path.h"

#include <array>

#include "base/text.h"
#include "pipeline/korean_particle.h"

namespace nuvrel::pipeline::DocumentSummarizeFastPath {
namespace {

constexpr std::array<std::string_view, 3> englishPrefixes = {"summarize ", "summarise ",
                                                             "summary of "};
constexpr std::array<std::string_view, 3> koreanSuffixes = {"요약해줘", "요약해줄래", "요약해"};

}  // namespace

std::optional<std::string> match(std::string_view text) {
    const std::string trimmed = base::text::trim(text);
    if (trimmed.empty()) return std::nullopt;
    const std::string lowered = base::text::lower(trimmed);
    for (std::string_view prefix : englishPrefixes) {
        if (lowered.compare(0, prefix.size(), prefix) != 0) continue;
        // Cut by characters: lower-casing may change byte lengths before the name.
        const std::size_t total = base::text::count(trimmed);
        std::string name =
            base::text::trim(base::text::suffix(trimmed, total - base::text::count(prefix)));
        if (name.empty()) return std::nullopt;
        return name;
    }
    for (std::string_view suffix : koreanSuffixes) {
        if (trimmed.size() < suffix.size() ||
            trimmed.compare(trimmed.size() - suffix.size(), suffix.size(), suffix) != 0)
            continue;
        std::string name = KoreanParticle::stripTrailingObjectParticle(
            std::string_view(trimmed).substr(0, trimmed.size() - suffix.size()));
        if (name.empty()) return std::nullopt;
        return name;
    }
    return std::nullopt;
}

}  // namespace nuvrel::pipeline::DocumentSummarizeFastPath
