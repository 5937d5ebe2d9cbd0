#include "pipeline/korean_particle.h"

#include <algorithm>

#include "base/text.h"

namespace nuvrel::pipeline::KoreanParticle {

std::string stripTrailingObjectParticle(std::string_view text) {
    namespace t = base::text;
    std::string word = t::trim(text);
    for (bool removed = true; removed;) {
        removed = false;
        if (!word.empty()) {
            const std::string last = t::lastGrapheme(word);
            if (std::find(trailingParticles.begin(), trailingParticles.end(), last) !=
                trailingParticles.end()) {
                word = t::trim(t::dropLast(word));
                removed = true;
            }
        }
        for (const std::string_view filler : trailingFillers) {
            if (std::string_view(word).ends_with(filler)) {
                word = t::trim(std::string_view(word).substr(0, word.size() - filler.size()));
                removed = true;
                break;
            }
        }
    }
    return word;
}

std::string stripTrailingPunctuation(std::string_view text) {
    namespace t = base::text;
    return t::trim(t::stripTrailing(t::trimView(text), trailingPunctuation));
}

}  // namespace nuvrel::pipeline::KoreanParticle
