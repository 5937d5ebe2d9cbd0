#include "desktop/app_launch_fast_path.h"

#include <array>

#include "base/text.h"
#include "pipeline/korean_particle.h"

namespace nuvrel::desktop::AppLaunchFastPath {
namespace {

namespace text = base::text;

constexpr std::array<std::string_view, 3> englishPrefixes{"launch ", "switch to ", "open "};
constexpr std::array<std::string_view, 11> koreanSuffixes{
    "실행시켜줘", "실행시켜", "실행해줘", "실행해", "띄워줘", "켜줄래",
    "켜줘",       "켜봐",     "열어줘",   "열어",   "켜"};
constexpr std::array<std::string_view, 2> chinesePrefixes{"打开", "启动"};
constexpr std::array<std::string_view, 4> japaneseSuffixes{"を開いて", "を起動して", "開いて",
                                                           "起動して"};
constexpr std::array<std::string_view, 3> englishArticles{"the ", "a ", "an "};
// "app" is a generic noun too, so that "open the chrome app" names "chrome".
constexpr std::array<std::string_view, 7> genericAppNouns{
    "어플리케이션", "애플리케이션", "프로그램", "어플", "앱", "application", "app"};

std::string normalizedCandidate(std::string_view raw) {
    std::string candidate = text::trim(raw);
    const std::string lowered = text::lower(candidate);
    for (const std::string_view article : englishArticles) {
        if (lowered.starts_with(article)) {
            candidate = text::trim(std::string_view(candidate).substr(article.size()));
            break;
        }
    }
    for (const std::string_view noun : genericAppNouns) {
        if (!text::lower(candidate).ends_with(noun)) continue;
        const std::string_view rest =
            std::string_view(candidate).substr(0, candidate.size() - noun.size());
        std::size_t end = rest.size();
        if (!rest.empty() && !text::isWhiteSpace(text::previousCodePoint(rest, end))) continue;
        candidate = text::trim(rest);
    }
    return candidate;
}

std::optional<Match> explicitMatch(std::string_view raw) {
    std::string candidate = normalizedCandidate(raw);
    if (candidate.empty()) return std::nullopt;
    return Match{std::move(candidate), true};
}

}  // namespace

const std::unordered_set<std::string>& danglingTriggerWords() {
    static const std::unordered_set<std::string> words = [] {
        std::unordered_set<std::string> all;
        const auto add = [&](const auto& table) {
            for (const std::string_view entry : table) all.insert(text::trim(entry));
        };
        add(englishPrefixes);
        add(koreanSuffixes);
        add(chinesePrefixes);
        add(japaneseSuffixes);
        return all;
    }();
    return words;
}

std::optional<Match> match(std::string_view query) {
    std::string request = pipeline::KoreanParticle::stripTrailingPunctuation(query);
    // The polite "켜줘요" meets the table as "켜줘".
    if (std::string_view(request).ends_with("줘요")) request.resize(request.size() - 3);
    if (request.empty()) return std::nullopt;
    const std::string_view view(request);

    // A launch word with nothing usable after it names nothing: the first trigger that fits
    // decides.
    // The prefixes are ASCII, so the lower-cased text has the same offsets at the front.
    const std::string lowered = text::lower(request);
    for (const std::string_view prefix : englishPrefixes) {
        if (lowered.starts_with(prefix)) return explicitMatch(view.substr(prefix.size()));
    }
    for (const std::string_view suffix : koreanSuffixes) {
        if (view.ends_with(suffix))
            return explicitMatch(pipeline::KoreanParticle::stripTrailingObjectParticle(
                view.substr(0, view.size() - suffix.size())));
    }
    for (const std::string_view prefix : chinesePrefixes) {
        if (view.starts_with(prefix)) return explicitMatch(view.substr(prefix.size()));
    }
    for (const std::string_view suffix : japaneseSuffixes) {
        if (view.ends_with(suffix))
            return explicitMatch(view.substr(0, view.size() - suffix.size()));
    }
    if (danglingTriggerWords().contains(text::trim(request))) return std::nullopt;
    if (text::splitBlanks(request).size() >= 4) return std::nullopt;
    std::string candidate = normalizedCandidate(request);
    if (candidate.empty()) return std::nullopt;
    return Match{std::move(candidate), false};
}

}  // namespace nuvrel::desktop::AppLaunchFastPath
