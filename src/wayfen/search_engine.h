#pragma once
// The stages that turn a raw results list into the few results, with the best passages of
// their pages, that a small model can answer from. Stateless; no network of its own. All
// functions are pure but augmentedWithReadabilityChunks, which blocks in the page fetcher
// and the selector and throws only base::Cancelled.

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "wayfen/duckduckgo_lite_parser.h"
#include "wayfen/embedding_provider.h"
#include "wayfen/page_fetcher.h"

namespace wayfen::SearchEngine {

using Result = DuckDuckGoLiteParser::Result;

// The query with the current year behind it when it asks for the latest and names no year.
std::string recencyEnrichedQuery(const std::string& query,
                                 std::chrono::system_clock::time_point now);

std::vector<std::string> queryTokensForRanking(std::string_view query);
std::vector<Result> rankedForSummary(std::string_view query, const std::vector<Result>& results);
bool isLowExtractionYieldHost(std::string_view host);
std::vector<Result> demotingLowExtractionYieldHosts(const std::vector<Result>& results);

// Nothing means "keep the results as they are".
std::optional<std::vector<Result>> augmentedWithReadabilityChunks(
    const std::string& query, const std::vector<Result>& results, const PageFetcher& pageFetcher,
    int maxPages, int chunkBudget, const EmbeddingProviderPtr& embeddingProvider);

std::optional<std::string> extractiveSummary(const std::vector<Result>& results, int maxLength);
std::vector<std::string> naiveSentences(std::string_view text);

}  // namespace wayfen::SearchEngine
