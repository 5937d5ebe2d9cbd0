#include "personal/delete_request_words.h"

#include <algorithm>

#include "base/text.h"
#include "personal/folded_text.h"
#include "pipeline/korean_particle.h"

namespace nuvrel::personal {
namespace {

std::vector<std::string> lowered(std::span<const std::string_view> words) {
    std::vector<std::string> out;
    for (std::string_view word : words) out.push_back(base::text::lower(word));
    return out;
}

bool containsAny(std::string_view text, const std::vector<std::string>& words) {
    return std::any_of(words.begin(), words.end(),
                       [&](const std::string& word) { return base::text::contains(text, word); });
}

// Every case-insensitive occurrence of `lowered` replaced by one blank.
std::string blanked(std::string_view text, std::string_view lowered) {
    std::string out;
    while (auto range = FoldedText(text).find(lowered)) {
        out.append(text.substr(0, range->first)).push_back(' ');
        text = text.substr(range->second);
    }
    out.append(text);
    return out;
}

}  // namespace

DeleteRequestReader::DeleteRequestReader(const DeleteRequestWords& words)
    : words_(words), nouns_(lowered(words.nouns)), verbs_(lowered(words.verbs)) {
    std::vector<std::string_view> noise(words.verbs.begin(), words.verbs.end());
    noise.insert(noise.end(), words.nouns.begin(), words.nouns.end());
    std::stable_sort(noise.begin(), noise.end(), [](std::string_view a, std::string_view b) {
        return base::text::count(a) > base::text::count(b);
    });
    noise_ = lowered(noise);
}

std::optional<std::string> DeleteRequestReader::rest(std::string_view query) const {
    std::string text = base::text::trim(pipeline::KoreanParticle::stripTrailingPunctuation(query));
    if (text.empty()) return std::nullopt;
    const std::string lower = base::text::lower(text);
    if (!containsAny(lower, nouns_) || !containsAny(lower, verbs_)) return std::nullopt;

    // The folded copy is made again only when a word was cut out of the text.
    FoldedText folded(text);
    for (const std::string& word : noise_) {
        if (!folded.find(word)) continue;
        text = blanked(text, word);
        folded = FoldedText(text);
    }

    std::vector<std::string> kept;
    for (std::string& piece : base::text::splitBlanks(text)) {
        const std::string lowerPiece = base::text::lower(piece);
        if (std::find(words_.stopTokens.begin(), words_.stopTokens.end(), lowerPiece) ==
            words_.stopTokens.end())
            kept.push_back(std::move(piece));
    }
    if (!kept.empty()) {
        // A last word that is nothing but a verb ending goes whole ("줘" left by "지워줘").
        std::string last = kept.back();
        for (std::string_view ending : words_.verbEndings) {
            if (std::string_view(last).ends_with(ending) && last.size() > ending.size()) {
                last.resize(last.size() - ending.size());
                break;
            }
        }
        const bool isEnding = std::find(words_.verbEndings.begin(), words_.verbEndings.end(),
                                        last) != words_.verbEndings.end();
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
