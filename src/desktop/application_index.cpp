#include "desktop/application_index.h"

#include <algorithm>

#include "base/text.h"
#include "desktop/application_scoring.h"

namespace nuvrel::desktop {

ApplicationIndex::ApplicationIndex(std::vector<InstalledApp> apps) : apps_(std::move(apps)) {
    for (std::size_t app = 0; app < apps_.size(); ++app) {
        for (const auto& name :
             {std::optional(apps_[app].displayName), apps_[app].localizedDisplayName}) {
            if (!name) continue;
            std::string comparable = AppLaunchCapability::comparableName(*name);
            if (comparable.empty()) continue;
            const std::size_t index = names_.size();
            exact_[comparable].push_back(index);
            sorted_.emplace_back(comparable, index);
            nameWords_.push_back(base::text::splitBlanks(comparable));
            for (std::size_t position = 0; position < nameWords_.back().size(); ++position)
                words_[nameWords_.back()[position]].push_back({index, position});
            names_.push_back(std::move(comparable));
            nameApp_.push_back(app);
        }
    }
    std::sort(sorted_.begin(), sorted_.end());
}

std::optional<InstalledApp> ApplicationIndex::bestMatch(std::string_view candidate, bool) const {
    const std::vector<ScoredTerm> terms = scoredTerms(AppLaunchCapability::searchTerms(candidate));
    std::optional<ScoredApp> best;
    const auto consider = [&](std::size_t name, double score) {
        const ScoredApp scored{score, names_[name], nameApp_[name]};
        if (!best || isBetter(scored, *best)) best = scored;
    };
    for (const ScoredTerm& term : terms) {
        if (const auto found = exact_.find(term.text); found != exact_.end()) {
            for (const std::size_t name : found->second) consider(name, 1.0);
        }
        if (term.characters > 2) {
            // Names that begin with the term...
            for (auto it = std::lower_bound(sorted_.begin(), sorted_.end(),
                                            std::pair<std::string, std::size_t>(term.text, 0));
                 it != sorted_.end() && std::string_view(it->first).starts_with(term.text); ++it)
                consider(it->second, it->first == term.text ? 1.0 : 0.9);
            // ...and names that the term begins with.
            for (std::size_t end = 1; end < term.text.size(); ++end) {
                if ((static_cast<unsigned char>(term.text[end]) & 0xC0) == 0x80) continue;
                if (const auto found = exact_.find(term.text.substr(0, end)); found != exact_.end())
                    for (const std::size_t name : found->second) consider(name, 0.9);
            }
        }
        if (term.characters >= 3 && !term.words.empty()) {
            const auto found = words_.find(term.words.front());
            if (found == words_.end()) continue;
            for (const WordRef& ref : found->second) {
                const auto& words = nameWords_[ref.name];
                if (ref.position + term.words.size() <= words.size() &&
                    std::equal(term.words.begin(), term.words.end(), words.begin() + ref.position))
                    consider(ref.name, nameScore(names_[ref.name], term));
            }
        }
    }
    if (!best) return std::nullopt;
    return apps_[best->index];
}

}  // namespace nuvrel::desktop
