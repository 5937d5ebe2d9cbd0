#include "personal/delete_request_words.h"

#include <algorithm>
#include <vector>

#include "base/text.h"
#include "personal/folded_text.h"
#include "pipeline/korean_particle.h"

namespace nuvrel::personal {
namespace {

bool containsAny(std::string_view lowered, std::span<const std::string_view> words) {
    return std::any_of(words.begin(), words.end(), [&](std::string_view word) {
        return base::text::contains(lowered, base::text::lower(word));
    });
}

// Every case-insensitive occurrence of `word` replaced by one blank.
std::string blanked(std::string_view text, std::string_view word) {
    const std::string lowered = base::text::lower(word);
    std::string out;
    while (auto range = FoldedText(text).find(lowered)) {
        out.append(text.substr(0, range->first)).push_back(' ');
        text = text.substr(range->second);
    }
    out.append(text);
    return out;
}

}  // namespace

std::optional<std::string> deleteRequestRest(std::string_view query,
                                             const DeleteRequestWords& words) {
    std::string text = base::text::trim(pipeline::KoreanParticle::stripTrailingPunctuation(query));
    if (text.empty()) return std::nullopt;
    const std::string lowered = base::text::lower(text);
    if (!containsAny(lowered, words.nouns) || !containsAny(lowered, words.verbs))
        return std::nullopt;

    std::vector<std::string_view> noise(words.verbs.begin(), words.verbs.end());
    noise.insert(noise.end(), words.nouns.begin(), words.nouns.end());
    std::stable_sort(noise.begin(), noise.end(), [](std::string_view a, std::string_view b) {
        return base::text::count(a) > base::text::count(b);
    });
    for (std::string_view word : noise) text = blanked(text, word);

    std::vector<std::string> kept;
    for (std::string& piece : base::text::splitBlanks(text)) {
        const std::string lower = base::text::lower(piece);
        if (std::find(words.stopTokens.begin(), words.stopTokens.end(), lower) ==
            words.stopTokens.end())
            kept.push_back(std::move(piece));
    }
    if (!kept.empty()) {
        // A last word that is nothing but a verb ending goes whole ("줘" left by "지워줘").
        std::string last = kept.back();
        for (std::string_view ending : words.verbEndings) {
            if (std::string_view(last).ends_with(ending) && last.size() > ending.size()) {
                last.resize(last.size() - ending.size());
                break;
            }
        }
        const bool isEnding = std::find(words.verbEndings.begin(), words.verbEndings.end(), last) !=
                              words.verbEndings.end();
        if (last.empty() || isEnding)
            kept.pop_back();
        else
            kept.back() = std::move(last);
    }
    std::string joined;
    for (const std::string& piece : kept) {
        if (!joined.empty()) joined += ' ';
        joined += piece;
    }
    return base::text::trim(joined);
}

}  // namespace nuvrel::personal
