#pragma once
// The capability behind the web search intent: fetches a results page through the transport,
// ranks it, enriches the top results with passages of their pages and has the summary model
// answer from them. When the model gives nothing, a plain excerpt of the top result stands in.
//
// Threading: a value with no mutable state. execute() blocks on the caller's task; its only
// concurrency is the page fetcher's. A stop request ends it with base::Cancelled, at once.

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/diagnostics.h"
#include "core/app_language.h"
#include "core/capability.h"
#include "llm/llm_backend.h"
#include "wayfen/duckduckgo_lite_parser.h"
#include "wayfen/embedding_provider.h"
#include "wayfen/page_fetcher.h"
#include "wayfen/web_search_transport.h"

namespace nuvrel::answers {

class WebSearchCapability : public core::Capability {
public:
    using Result = wayfen::DuckDuckGoLiteParser::Result;
    using Clock = std::function<std::chrono::system_clock::time_point()>;

    // Results parsed from the page, of which the first `sourceCount` after ranking are the
    // sources; pages are fetched for as many, and the passages of all pages share one budget.
    static constexpr int parseLimit = 8;
    static constexpr int sourceCount = 3;
    static constexpr int chunkBudget = 2000;
    static constexpr int extractiveMaxLength = 160;
    // No result brings more than this many characters of snippet into the prompt.
    static constexpr std::size_t snippetPromptLimit = 500;

    core::AppLanguage language = core::AppLanguage::en;
    wayfen::WebSearchTransportPtr transport;
    // The summary model; none means sources only, with no summary and no excerpt.
    std::shared_ptr<llm::LLMBackend> summarizer;
    // None means the model answers from the search snippets alone.
    std::optional<wayfen::PageFetcher> pageFetcher;
    // Ranks passages by meaning; none, or a failing one, means lexical scoring.
    wayfen::EmbeddingProviderPtr embeddingBackend;
    // The wall clock, for the year that a query asking for the latest gains.
    Clock now = std::chrono::system_clock::now;
    base::Diagnostics diagnostics{};

    core::IntentID intentID() const override { return core::IntentID::webSearch; }

    // The trimmed "query" slot when it holds text, else the trimmed query; "want_answer" when
    // it holds a bool, else true.
    core::ActionPlan plan(const core::Slots& slots, std::string_view query) const override;

    // A webAnswer, or a UserFacingError: network failure or blocked (both retryable), or a
    // plan of another intent. Writes one "[nuvrel-latency] websearch: ..." line unless the
    // page held no results.
    core::CapabilityResult execute(const core::ActionPlan& plan) override;

private:
    std::optional<std::string> summarize(const std::string& query,
                                         const std::vector<Result>& results) const;
    static std::string summaryUserPrompt(const std::string& query,
                                         const std::vector<Result>& results);
    // Closes a reply that the token limit cut off inside the summary text.
    static std::optional<std::string> repairedSummaryJSON(std::string_view reply);
};

}  // namespace nuvrel::answers
