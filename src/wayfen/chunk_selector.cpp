#include "wayfen/chunk_selector.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <optional>
#include <string_view>

#include "base/cancellation.h"
#include "base/text.h"
#include "wayfen/search_engine.h"

namespace wayfen::ChunkSelector {
namespace {

namespace text = nuvrel::base::text;

constexpr std::size_t closeChunkAtLength = 501;
constexpr std::size_t minimumClosedChunkLength = 300;
constexpr std::string_view paragraphSeparator = "\n\n";

std::size_t occurrences(std::string_view haystack, std::string_view needle) {
    std::size_t found = 0;
    for (auto at = haystack.find(needle); at != std::string_view::npos;
         at = haystack.find(needle, at + needle.size())) {
        ++found;
    }
    return found;
}

double lexicalScore(const SourceChunk& chunk, const std::vector<std::string>& tokens) {
    if (tokens.empty()) return 0;
    const std::string lowered = text::lower(chunk.text);
    std::size_t score = 0;
    for (const auto& token : tokens) score += occurrences(lowered, token);
    return static_cast<double>(score);
}

double cosineSimilarity(const std::vector<float>& a, const std::vector<float>& b) {
    if (a.size() != b.size() || a.empty()) return 0;
    double dot = 0, squaresA = 0, squaresB = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        dot += static_cast<double>(a[i]) * static_cast<double>(b[i]);
        squaresA += static_cast<double>(a[i]) * static_cast<double>(a[i]);
        squaresB += static_cast<double>(b[i]) * static_cast<double>(b[i]);
    }
    if (!(squaresA > 0) || !(squaresB > 0)) return 0;
    return dot / (std::sqrt(squaresA) * std::sqrt(squaresB));
}

// Best first; equal scores keep the order of the given list.
std::vector<std::size_t> rankedPositions(const std::vector<double>& scores) {
    std::vector<std::size_t> positions(scores.size());
    std::iota(positions.begin(), positions.end(), std::size_t{0});
    std::stable_sort(positions.begin(), positions.end(),
                     [&](std::size_t a, std::size_t b) { return scores[a] > scores[b]; });
    return positions;
}

// Passes over a chunk that does not fit and goes on, since a later, shorter one may.
std::vector<SourceChunk> fillBudget(const std::vector<SourceChunk>& chunks,
                                    const std::vector<double>& scores, int budget) {
    const auto ranked = rankedPositions(scores);
    std::vector<SourceChunk> taken;
    long long used = 0;
    for (const auto position : ranked) {
        const auto length = static_cast<long long>(text::count(chunks[position].text));
        if (used + length <= budget) {
            taken.push_back(chunks[position]);
            used += length;
        }
    }
    if (taken.empty() && !ranked.empty()) taken.push_back(chunks[ranked.front()]);
    return taken;
}

// Every vector or none: a provider that fails part-way leaves no scores to mix with others.
std::optional<std::vector<double>> embeddingScores(const std::vector<SourceChunk>& chunks,
                                                   const std::string& query,
                                                   const EmbeddingProvider& provider) {
    try {
        const auto queryVector = provider.embed(query, true);
        std::vector<double> scores;
        scores.reserve(chunks.size());
        for (const auto& chunk : chunks) {
            scores.push_back(cosineSimilarity(queryVector, provider.embed(chunk.text, false)));
        }
        return scores;
    } catch (...) {
        nuvrel::base::rethrowIfCancelled();
        return std::nullopt;
    }
}

}  // namespace

std::vector<SourceChunk> chunk(const std::vector<std::string>& paragraphs,
                               const std::string& sourceHost, const std::string& sourceURL) {
    std::vector<SourceChunk> chunks;
    std::string buffer;
    std::size_t bufferLength = 0;
    const std::size_t separatorLength = text::count(paragraphSeparator);
    const auto emit = [&] {
        chunks.push_back(SourceChunk{.text = std::move(buffer),
                                     .sourceHost = sourceHost,
                                     .sourceURL = sourceURL,
                                     .chunkIndexInPage = static_cast<int>(chunks.size())});
        buffer.clear();
        bufferLength = 0;
    };
    for (const auto& paragraph : paragraphs) {
        const std::string trimmed = text::trim(paragraph);
        if (trimmed.empty()) continue;
        const std::size_t length = text::count(trimmed);
        if (!buffer.empty()) {
            const std::size_t candidateLength = bufferLength + separatorLength + length;
            if (candidateLength >= closeChunkAtLength && bufferLength >= minimumClosedChunkLength) {
                emit();
            } else {
                buffer += paragraphSeparator;
                bufferLength += separatorLength;
            }
        }
        buffer += trimmed;
        bufferLength += length;
    }
    if (!buffer.empty()) emit();
    return chunks;
}

std::vector<SourceChunk> select(const std::vector<SourceChunk>& chunks, const std::string& query,
                                int budget) {
    if (chunks.empty()) return {};
    const auto tokens = SearchEngine::queryTokensForRanking(query);
    std::vector<double> scores;
    scores.reserve(chunks.size());
    for (const auto& chunk : chunks) scores.push_back(lexicalScore(chunk, tokens));
    return fillBudget(chunks, scores, budget);
}

std::vector<SourceChunk> select(const std::vector<SourceChunk>& chunks, const std::string& query,
                                int budget, const EmbeddingProviderPtr& embeddingProvider) {
    if (chunks.empty()) return {};
    if (embeddingProvider) {
        if (auto scores = embeddingScores(chunks, query, *embeddingProvider)) {
            return fillBudget(chunks, *scores, budget);
        }
    }
    return select(chunks, query, budget);
}

}  // namespace wayfen::ChunkSelector
