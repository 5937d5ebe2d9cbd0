#pragma once
// Ranks the user's contacts against the name a request gave ("철수", "Jamie"): an equal name
// beats one that contains the other, blanks and case never count. Pure; safe from any thread.

#include <string>
#include <string_view>
#include <vector>

namespace nuvrel::personal {

struct ContactMatch {
    std::string name;
    std::string handle;
    std::string avatarInitial;
    bool operator==(const ContactMatch&) const = default;
};

namespace ContactNameMatcher {

struct RawCandidate {
    std::string displayName;
    std::string handle;
    std::vector<std::string> matchNames;  // the display name, and the nickname if any
};

// Trimmed, lower-cased, every blank removed: "김 철수" and "김철수" are one name.
std::string normalize(std::string_view text);
// 1.0 for equal names, 0.6 when either contains the other, else 0.0 (also for empty names).
double score(std::string_view query, std::string_view candidateName);
double bestScore(std::string_view query, const RawCandidate& candidate);
// Best first, then by display name in code-point order; one row per handle; at most 5.
std::vector<ContactMatch> rank(std::string_view query, const std::vector<RawCandidate>& candidates);
// The first character of the trimmed name, upper-cased; "?" for none.
std::string avatarInitial(std::string_view name);

}  // namespace ContactNameMatcher
}  // namespace nuvrel::personal
