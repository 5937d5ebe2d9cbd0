#pragma once
// Cuts a page's paragraphs into chunks of a few hundred characters and picks those most
// relevant to a query up to a character budget: by embedding similarity when a provider is
// given, by term frequency otherwise. Stateless; lengths are counted in characters.

#include <string>
#include <vector>

#include "wayfen/embedding_provider.h"

namespace wayfen::ChunkSelector {

struct SourceChunk {
    std::string text;
    std::string sourceHost;
    std::string sourceURL;
    // From 0 in each page.
    int chunkIndexInPage = 0;
    friend bool operator==(const SourceChunk&, const SourceChunk&) = default;
};

inline constexpr int defaultBudget = 2000;

// Greedy packing of whole paragraphs, joined by a blank line: a chunk is closed before it
// would reach 501 characters once it holds 300. Never cuts a paragraph, so a long one is a
// long chunk.
std::vector<SourceChunk> chunk(const std::vector<std::string>& paragraphs,
                               const std::string& sourceHost, const std::string& sourceURL);

// By term frequency of the query's tokens, best first, filling `budget`. Never empty for a
// non-empty input: when nothing fits, the best chunk alone comes back.
std::vector<SourceChunk> select(const std::vector<SourceChunk>& chunks, const std::string& query,
                                int budget);

// By cosine similarity of embeddings when `embeddingProvider` is set, one request at a time on
// the caller's task. Any failure of the provider falls back to the term-frequency path; only
// base::Cancelled is thrown.
std::vector<SourceChunk> select(const std::vector<SourceChunk>& chunks, const std::string& query,
                                int budget, const EmbeddingProviderPtr& embeddingProvider);

}  // namespace wayfen::ChunkSelector
