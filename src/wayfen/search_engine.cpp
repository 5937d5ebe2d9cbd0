#include "wayfen/search_engine.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <ctime>
#include <map>
#include <numeric>
#include <set>

#include "base/regex.h"
#include "base/text.h"
#include "wayfen/chunk_selector.h"
#include "wayfen/readability_extractor.h"

namespace wayfen::SearchEngine {
namespace {

namespace base = nuvrel::base;
namespace text = nuvrel::base::text;

constexpr std::size_t rankedResultLimit = 5;

// Video sites and social networks whose pages carry little paragraph text to a plain fetch.
const std::set<std::string, std::less<>>& lowExtractionYieldHosts() {
    static const std::set<std::string, std::less<>> hosts = {
        "youtube.com",   "youtu.be",     "reddit.com", "twitter.com",   "x.com",
        "instagram.com", "facebook.com", "tiktok.com", "pinterest.com",
    };
    return hosts;
}

bool isAlphanumeric(char32_t c) {
    constexpr auto mask = U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK;
    return (U_GET_GC_MASK(static_cast<UChar32>(c)) & mask) != 0;
}

std::string joined(const std::vector<std::string>& pieces, std::string_view separator) {
    std::string out;
    for (const auto& piece : pieces) {
        if (!out.empty()) out += separator;
        out += piece;
    }
    return out;
}

struct FetchPlan {
    std::vector<base::Url> urls;
    // By the URL's text: the first result and the first position a URL had.
    std::map<std::string, Result> resultByURL;
    std::map<std::string, std::size_t> positionByURL;
};

FetchPlan fetchPlan(const std::vector<Result>& results, int maxPages) {
    FetchPlan plan;
    const std::size_t pages =
        std::min(results.size(), static_cast<std::size_t>(std::max(maxPages, 0)));
    for (std::size_t i = 0; i < pages; ++i) {
        auto url = base::Url::parse(results[i].url);
        if (!url) continue;
        plan.resultByURL.emplace(url->text(), results[i]);
        plan.positionByURL.emplace(url->text(), plan.urls.size());
        plan.urls.push_back(std::move(*url));
    }
    return plan;
}

// Pages come back in completion order; chunk order must not depend on network timing.
void sortByFetchPosition(std::vector<FetchedPage>& pages, const FetchPlan& plan) {
    const auto key = [&](const FetchedPage& page) {
        const auto found = plan.positionByURL.find(page.url.text());
        return found == plan.positionByURL.end() ? SIZE_MAX : found->second;
    };
    std::stable_sort(pages.begin(), pages.end(),
                     [&](const FetchedPage& a, const FetchedPage& b) { return key(a) < key(b); });
}

std::string sourceHost(const FetchedPage& page, const FetchPlan& plan) {
    const auto found = plan.resultByURL.find(page.url.text());
    if (found != plan.resultByURL.end()) return found->second.host;
    return page.url.host().empty() ? page.url.text() : page.url.host();
}

std::vector<ChunkSelector::SourceChunk> chunksOf(std::vector<FetchedPage> pages,
                                                 const FetchPlan& plan) {
    sortByFetchPosition(pages, plan);
    std::vector<ChunkSelector::SourceChunk> chunks;
    for (const auto& page : pages) {
        const auto paragraphs = ReadabilityExtractor::extract(page.html);
        if (!paragraphs) continue;
        auto pageChunks =
            ChunkSelector::chunk(*paragraphs, sourceHost(page, plan), page.url.text());
        chunks.insert(chunks.end(), std::make_move_iterator(pageChunks.begin()),
                      std::make_move_iterator(pageChunks.end()));
    }
    return chunks;
}

// The passages of each page in page order, whatever their scores.
std::map<std::string, std::string> passagesByURL(std::vector<ChunkSelector::SourceChunk> selected) {
    std::stable_sort(selected.begin(), selected.end(), [](const auto& a, const auto& b) {
        return a.chunkIndexInPage < b.chunkIndexInPage;
    });
    std::map<std::string, std::vector<std::string>> grouped;
    for (auto& chunk : selected) grouped[chunk.sourceURL].push_back(std::move(chunk.text));
    std::map<std::string, std::string> passages;
    for (const auto& [url, texts] : grouped) passages[url] = joined(texts, "\n\n");
    return passages;
}

}  // namespace

std::string recencyEnrichedQuery(const std::string& query,
                                 std::chrono::system_clock::time_point now) {
    static const std::array<std::string_view, 8> keywords = {"최신", "신형", "latest", "newest",
                                                             "요즘", "올해", "最新",   "今年"};
    static const base::Regex namedYear("20[0-9]{2}");
    const std::string lowered = text::lower(query);
    const bool asksForRecent = std::any_of(keywords.begin(), keywords.end(), [&](auto keyword) {
        return text::contains(lowered, keyword);
    });
    if (!asksForRecent || namedYear.search(query)) return query;
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    localtime_r(&seconds, &local);
    return query + " " + std::to_string(local.tm_year + 1900);
}

std::vector<std::string> queryTokensForRanking(std::string_view query) {
    const std::string lowered = text::lower(query);
    std::vector<std::string> tokens;
    std::string token;
    const auto flush = [&] {
        if (text::count(token) > 1) tokens.push_back(token);
        token.clear();
    };
    for (std::size_t pos = 0; pos < lowered.size();) {
        const std::size_t start = pos;
        const char32_t c = text::nextCodePoint(lowered, pos);
        if (isAlphanumeric(c)) {
            token.append(lowered, start, pos - start);
        } else {
            flush();
        }
    }
    flush();
    return tokens;
}

std::vector<Result> rankedForSummary(std::string_view query, const std::vector<Result>& results) {
    const auto tokens = queryTokensForRanking(query);
    std::vector<std::size_t> order(results.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    if (!tokens.empty()) {
        std::vector<std::size_t> scores;
        scores.reserve(results.size());
        for (const auto& result : results) {
            const std::string haystack = text::lower(result.title + " " + result.snippet);
            scores.push_back(static_cast<std::size_t>(std::count_if(
                tokens.begin(), tokens.end(),
                [&](const std::string& token) { return text::contains(haystack, token); })));
        }
        std::stable_sort(order.begin(), order.end(),
                         [&](std::size_t a, std::size_t b) { return scores[a] > scores[b]; });
    }
    std::vector<Result> ranked;
    for (std::size_t i = 0; i < order.size() && i < rankedResultLimit; ++i) {
        ranked.push_back(results[order[i]]);
    }
    return ranked;
}

bool isLowExtractionYieldHost(std::string_view host) {
    std::string lowered = text::lower(host);
    lowered = lowered.substr(0, lowered.find('/'));
    for (const auto& entry : lowExtractionYieldHosts()) {
        if (lowered == entry) return true;
        if (lowered.size() > entry.size() && lowered.ends_with(entry) &&
            lowered[lowered.size() - entry.size() - 1] == '.') {
            return true;
        }
    }
    return false;
}

std::vector<Result> demotingLowExtractionYieldHosts(const std::vector<Result>& results) {
    std::vector<Result> demoted = results;
    std::stable_partition(demoted.begin(), demoted.end(), [](const Result& result) {
        return !isLowExtractionYieldHost(result.host);
    });
    return demoted;
}

std::optional<std::vector<Result>> augmentedWithReadabilityChunks(
    const std::string& query, const std::vector<Result>& results, const PageFetcher& pageFetcher,
    int maxPages, int chunkBudget, const EmbeddingProviderPtr& embeddingProvider) {
    const FetchPlan plan = fetchPlan(results, maxPages);
    if (plan.urls.empty()) return std::nullopt;
    auto pages = pageFetcher.fetchAll(plan.urls);
    if (pages.empty()) return std::nullopt;
    const auto chunks = chunksOf(std::move(pages), plan);
    if (chunks.empty()) return std::nullopt;
    auto selected = ChunkSelector::select(chunks, query, chunkBudget, embeddingProvider);
    if (selected.empty()) return std::nullopt;
    const auto passages = passagesByURL(std::move(selected));

    std::vector<Result> augmented = results;
    bool changed = false;
    for (auto& result : augmented) {
        const auto url = base::Url::parse(result.url);
        if (!url) continue;
        const auto found = passages.find(url->text());
        if (found == passages.end() || found->second.empty()) continue;
        result.snippet = found->second;
        changed = true;
    }
    if (!changed) return std::nullopt;
    return augmented;
}

std::optional<std::string> extractiveSummary(const std::vector<Result>& results, int maxLength) {
    const auto source = std::find_if(results.begin(), results.end(),
                                     [](const Result& result) { return !result.snippet.empty(); });
    if (source == results.end()) return std::nullopt;
    const auto limit = static_cast<std::size_t>(std::max(maxLength, 0));
    const auto sentences = naiveSentences(source->snippet);
    std::string summary;
    if (!sentences.empty() && text::count(sentences[0]) <= limit) {
        summary = sentences[0];
        if (sentences.size() > 1) {
            std::string both = sentences[0] + " " + sentences[1];
            if (text::count(both) <= limit) summary = std::move(both);
        }
    } else {
        summary = text::prefix(source->snippet, limit);
    }
    summary = text::trim(summary);
    if (summary.empty()) return std::nullopt;
    return summary;
}

std::vector<std::string> naiveSentences(std::string_view input) {
    static const std::optional<base::Regex> boundary = []() -> std::optional<base::Regex> {
        try {
            return base::Regex(R"((?<=[.!?。！？])\s+)");
        } catch (const std::exception&) {
            return std::nullopt;
        }
    }();
    std::vector<std::string> pieces;
    std::size_t start = 0;
    if (boundary) {
        for (const auto& match : boundary->allMatches(input)) {
            pieces.push_back(std::string(input.substr(start, match.begin() - start)));
            start = match.end();
        }
    }
    pieces.push_back(std::string(input.substr(start)));
    std::vector<std::string> sentences;
    for (const auto& piece : pieces) {
        std::string trimmed = text::trim(piece);
        if (!trimmed.empty()) sentences.push_back(std::move(trimmed));
    }
    return sentences;
}

}  // namespace wayfen::SearchEngine
