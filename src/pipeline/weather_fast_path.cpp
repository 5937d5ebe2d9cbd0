#include "pipeline/weather_fast_path.h"

#include <algorithm>
#include <array>
#include <vector>

#include "base/text.h"
#include "pipeline/korean_particle.h"

namespace nuvrel::pipeline::WeatherFastPath {
namespace {

constexpr std::string_view englishPrefix = "weather in ";
constexpr std::string_view englishSuffix = " weather";
constexpr std::string_view koreanWord = "날씨";
// "어떄" is a common misspelling, kept on purpose.
constexpr std::array<std::string_view, 9> koreanRequestVerbs = {
    "알려주세요", "알려줘", "알려", "어때요", "어떄", "어때", "보여줘", "말해줘", "궁금해"};
constexpr std::array<std::string_view, 5> timeOnlyStems = {"오늘", "지금", "현재", "today", "now"};
constexpr std::string_view edgePunctuation = "?!.？！。";

bool startsWith(std::string_view text, std::string_view head) {
    return text.substr(0, head.size()) == head;
}

bool endsWith(std::string_view text, std::string_view tail) {
    return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

// Drops characters of edgePunctuation from both ends.
std::string trimPunctuation(std::string_view text) {
    std::string rest = base::text::stripTrailing(text, edgePunctuation);
    std::size_t leading = 0;
    for (const std::string& character : base::text::graphemes(rest)) {
        if (!base::text::isOneOf(character, edgePunctuation)) break;
        leading += character.size();
    }
    return rest.substr(leading);
}

WeatherTarget resolveTarget(std::string_view place) {
    const std::string trimmed = base::text::trim(place);
    if (trimmed.empty()) return WeatherTarget::currentLocation();
    std::string stem = base::text::lower(trimmed);
    if (endsWith(stem, "의")) stem.resize(stem.size() - std::string_view("의").size());
    for (std::string_view timeWord : timeOnlyStems) {
        if (stem == timeWord) return WeatherTarget::currentLocation();
    }
    return WeatherTarget::named(trimmed);
}

std::optional<WeatherTarget> matchKorean(std::string_view text) {
    static const std::vector<std::string_view> verbs = [] {
        std::vector<std::string_view> sorted(koreanRequestVerbs.begin(), koreanRequestVerbs.end());
        std::stable_sort(sorted.begin(), sorted.end(), [](std::string_view a, std::string_view b) {
            return base::text::count(a) > base::text::count(b);
        });
        return sorted;
    }();
    std::string rest(text);
    for (std::string_view verb : verbs) {
        if (endsWith(rest, verb)) {
            rest = base::text::trim(std::string_view(rest).substr(0, rest.size() - verb.size()));
            break;
        }
    }
    if (endsWith(rest, "날씨가")) rest.resize(rest.size() - std::string_view("가").size());
    rest = KoreanParticle::stripTrailingObjectParticle(rest);
    if (!endsWith(rest, koreanWord)) return std::nullopt;
    return resolveTarget(std::string_view(rest).substr(0, rest.size() - koreanWord.size()));
}

}  // namespace

std::optional<WeatherTarget> match(std::string_view text) {
    const std::string trimmed = trimPunctuation(base::text::trimView(text));
    if (trimmed.empty()) return std::nullopt;
    // Lower-casing may change byte lengths ("İ"), so the place is cut from the typed text by
    // character counts.
    const std::string lowered = base::text::lower(trimmed);
    if (startsWith(lowered, englishPrefix)) {
        return resolveTarget(base::text::suffix(
            trimmed, base::text::count(trimmed) - base::text::count(englishPrefix)));
    }
    if (endsWith(lowered, englishSuffix)) {
        return resolveTarget(base::text::dropLast(trimmed, base::text::count(englishSuffix)));
    }
    return matchKorean(trimmed);
}

}  // namespace nuvrel::pipeline::WeatherFastPath
