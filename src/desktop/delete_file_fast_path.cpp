#include "desktop/delete_file_fast_path.h"

#include <algorithm>
#include <array>

#include "base/text.h"
#include "desktop/finder_search_fast_path.h"
#include "pipeline/korean_particle.h"

namespace nuvrel::desktop::DeleteFileFastPath {
namespace {

namespace text = base::text;

constexpr std::array<std::string_view, 9> koreanSuffixes{"삭제해줘요", "삭제해줘", "삭제할래",
                                                         "삭제해",     "삭제",     "지워줘요",
                                                         "지워 줘",    "지워줘",   "지워"};
constexpr std::array<std::string_view, 1> ambiguousKoreanSuffixes{"삭제"};
constexpr std::array<std::string_view, 5> desktopLocationPrefixPhrases{
    "바탕화면에 있는 ", "바탕화면의 ", "바탕화면에서 ", "데스크탑에 있는 ", "데스크탑의 "};
constexpr std::array<std::string_view, 5> englishLocationEndings{
    " on my desktop", " on the desktop", " from my desktop", " from the desktop", " in desktop"};
constexpr std::array<std::string_view, 3> englishBeginnings{"delete ", "remove ", "trash "};

// The body in front of a Korean suffix, with a desktop phrase taken off its front.
std::optional<Candidate> korean(const std::string& text) {
    for (const std::string_view suffix : koreanSuffixes) {
        if (!std::string_view(text).ends_with(suffix)) continue;
        std::string body =
            text::trim(std::string_view(text).substr(0, text.size() - suffix.size()));
        if (body.empty()) return std::nullopt;
        const bool ambiguous =
            std::find(ambiguousKoreanSuffixes.begin(), ambiguousKoreanSuffixes.end(), suffix) !=
            ambiguousKoreanSuffixes.end();
        if (ambiguous &&
            (text::splitBlanks(body).size() != 1 || !FinderSearchFastPath::looksLikeFileName(body)))
            return std::nullopt;
        std::optional<std::string> location;
        for (const std::string_view phrase : desktopLocationPrefixPhrases) {
            if (std::string_view(body).starts_with(phrase)) {
                body = text::trim(std::string_view(body).substr(phrase.size()));
                location = "desktop";
                break;
            }
        }
        // "보고서.pdf를" names "보고서.pdf".
        body = pipeline::KoreanParticle::stripTrailingObjectParticle(body);
        if (body.empty()) return std::nullopt;
        return Candidate{body, location};
    }
    return std::nullopt;
}

}  // namespace

std::optional<Candidate> match(std::string_view query) {
    const std::string text = pipeline::KoreanParticle::stripTrailingPunctuation(query);
    if (text.empty()) return std::nullopt;
    for (const std::string_view suffix : koreanSuffixes) {
        if (std::string_view(text).ends_with(suffix)) return korean(text);
    }
    const std::string lowered = text::lower(text);
    for (const std::string_view beginning : englishBeginnings) {
        if (!lowered.starts_with(beginning)) continue;
        // The triggers are ASCII: the lower-cased text has the same offsets at the front.
        std::string body(std::string_view(text).substr(beginning.size()));
        std::optional<std::string> location;
        for (const std::string_view ending : englishLocationEndings) {
            if (text::lower(body).ends_with(ending)) {
                body.resize(body.size() - ending.size());
                location = "desktop";
                break;
            }
        }
        // The desktop phrases apply to both languages.
        if (!location) {
            for (const std::string_view phrase : desktopLocationPrefixPhrases) {
                if (std::string_view(body).starts_with(phrase)) {
                    body = body.substr(phrase.size());
                    location = "desktop";
                    break;
                }
            }
        }
        body = text::trim(body);
        if (body.empty()) return std::nullopt;
        return Candidate{body, location};
    }
    return std::nullopt;
}

}  // namespace nuvrel::desktop::DeleteFileFastPath
