#include "personal/contact_name_matcher.h"

#include <algorithm>
#include <set>

#include "base/graphemes.h"
#include "base/text.h"

namespace nuvrel::personal::ContactNameMatcher {

std::string normalize(std::string_view text) {
    return base::text::removeWhiteSpace(base::text::lower(base::text::trim(text)));
}

double score(std::string_view query, std::string_view candidateName) {
    const std::string a = normalize(query);
    const std::string b = normalize(candidateName);
    if (a.empty() || b.empty()) return 0.0;
    if (a == b) return 1.0;
    if (base::text::contains(a, b) || base::text::contains(b, a)) return 0.6;
    return 0.0;
}

double bestScore(std::string_view query, const RawCandidate& candidate) {
    double best = 0.0;
    for (const std::string& name : candidate.matchNames) best = std::max(best, score(query, name));
    return best;
}

std::vector<ContactMatch> rank(std::string_view query,
                               const std::vector<RawCandidate>& candidates) {
    std::vector<std::pair<double, const RawCandidate*>> scored;
    for (const RawCandidate& candidate : candidates) {
        const double value = bestScore(query, candidate);
        if (value > 0.0) scored.push_back({value, &candidate});
    }
    std::stable_sort(scored.begin(), scored.end(), [](const auto& a, const auto& b) {
        if (a.first != b.first) return a.first > b.first;
        return a.second->displayName < b.second->displayName;
    });
    std::vector<ContactMatch> matches;
    std::set<std::string> handles;
    for (const auto& [value, candidate] : scored) {
        if (!handles.insert(candidate->handle).second) continue;
        matches.push_back(
            {candidate->displayName, candidate->handle, avatarInitial(candidate->displayName)});
        if (matches.size() == 5) break;
    }
    return matches;
}

std::string avatarInitial(std::string_view name) {
    const std::string trimmed = base::text::trim(name);
    if (trimmed.empty()) return "?";
    return base::text::upper(base::text::prefix(trimmed, 1));
}

}  // namespace nuvrel::personal::ContactNameMatcher
