#include "desktop/application_scoring.h"

#include <algorithm>

#include "base/text.h"

namespace nuvrel::desktop {

std::vector<ScoredTerm> scoredTerms(const std::vector<std::string>& terms) {
    std::vector<ScoredTerm> scored;
    for (const std::string& term : terms)
        scored.push_back({term, base::text::count(term), base::text::splitBlanks(term)});
    return scored;
}

double nameScore(std::string_view name, const ScoredTerm& term) {
    if (name.empty()) return 0;
    if (name == term.text) return 1.0;
    if (term.characters > 2 && (name.starts_with(term.text) || term.text.starts_with(name)))
        return 0.9;
    if (term.characters >= 3 && !term.words.empty()) {
        const std::vector<std::string> words = base::text::splitBlanks(name);
        for (std::size_t start = 0; start + term.words.size() <= words.size(); ++start) {
            if (std::equal(term.words.begin(), term.words.end(), words.begin() + start)) return 0.8;
        }
    }
    return 0;
}

bool isBetter(const ScoredApp& a, const ScoredApp& b) {
    if (a.score != b.score) return a.score > b.score;
    const std::size_t aLength = codePointCount(a.name), bLength = codePointCount(b.name);
    if (aLength != bLength) return aLength < bLength;
    if (a.name != b.name) return a.name < b.name;
    return a.index < b.index;
}

std::size_t codePointCount(std::string_view text) {
    std::size_t count = 0;
    for (const char c : text) {
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) ++count;
    }
    return count;
}

}  // namespace nuvrel::desktop
