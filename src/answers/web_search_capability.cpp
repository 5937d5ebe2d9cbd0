#include "answers/web_search_capability.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "answers/web_search_prompts.h"
#include "base/cancellation.h"
#include "base/diagnostics.h"
#include "base/text.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "llm/json_object_extraction.h"
#include "llm/model_catalog.h"
#include "wayfen/search_engine.h"

namespace nuvrel::answers {
namespace {

namespace SearchEngine = wayfen::SearchEngine;
using Instant = std::chrono::steady_clock::time_point;

std::string fetchPage(const wayfen::WebSearchTransport& transport, const std::string& query,
                      const core::LocalizedStrings& strings) {
    try {
        return transport.fetchResultsHTML(query);
    } catch (...) {
        base::rethrowIfCancelled();
        throw core::UserFacingError(strings.webSearchNetworkFailureMessage,
                                    strings.webSearchNetworkFailureRecovery, true);
    }
}

double millisecondsBetween(Instant from, Instant to) {
    return std::chrono::duration<double, std::milli>(to - from).count();
}

void writeLatencyLine(const base::Diagnostics& diagnostics, Instant start, Instant searched,
                      Instant fetched, Instant summarized) {
    char line[160];
    std::snprintf(line, sizeof line,
                  "websearch: search=%.0fms fetch=%.0fms summarize=%.0fms total=%.0fms",
                  millisecondsBetween(start, searched), millisecondsBetween(searched, fetched),
                  millisecondsBetween(fetched, summarized),
                  millisecondsBetween(start, std::chrono::steady_clock::now()));
    diagnostics.latency(line);
}

std::vector<core::WebSource> webSources(
    const std::vector<wayfen::DuckDuckGoLiteParser::Result>& top) {
    std::vector<core::WebSource> sources;
    sources.reserve(top.size());
    for (const auto& result : top) {
        sources.push_back(
            core::WebSource{.title = result.title, .host = result.host, .url = result.url});
    }
    return sources;
}

// The trimmed "summary" of a reply object; nothing when it is not such an object or is blank.
std::optional<std::string> decodedSummary(const std::string& object) {
    return llm::trimmedStringField(object, "summary");
}

// The card then shows the no-results text.
core::WebAnswer noResults(const std::string& query) {
    return core::WebAnswer{.summary = std::nullopt,
                           .sources = {},
                           .query = query,
                           .fallbackNotice = false,
                           .summaryIsExtractive = false,
                           .summaryModelName = std::nullopt};
}

}  // namespace

core::ActionPlan WebSearchCapability::plan(const core::Slots& slots, std::string_view query) const {
    std::string text = base::text::trim(query);
    if (const auto slot = slots.find("query"); slot != slots.end()) {
        if (const std::string* value = slot->second.asString()) {
            if (std::string trimmed = base::text::trim(*value); !trimmed.empty())
                text = std::move(trimmed);
        }
    }
    bool wantAnswer = true;
    if (const auto slot = slots.find("want_answer"); slot != slots.end()) {
        wantAnswer = slot->second.asBool().value_or(true);
    }
    return core::WebQuery{.query = std::move(text), .wantAnswer = wantAnswer};
}

core::CapabilityResult WebSearchCapability::execute(const core::ActionPlan& plan) {
    const core::LocalizedStrings& strings = core::LocalizedStrings::strings(language);
    const core::WebQuery* webQuery = plan.get<core::WebQuery>();
    if (!webQuery) throw core::UserFacingError(strings.genericErrorMessage);
    const std::string& query = webQuery->query;

    const Instant start = std::chrono::steady_clock::now();
    // Only the transport sees the year; ranking, prompt and answer keep the user's words.
    const std::string html =
        fetchPage(*transport, SearchEngine::recencyEnrichedQuery(query, now()), strings);
    if (wayfen::DuckDuckGoLiteParser::isBotChallenge(html)) {
        throw core::UserFacingError(strings.webSearchBlockedMessage,
                                    strings.webSearchBlockedRecovery, true);
    }
    const auto parsed = wayfen::DuckDuckGoLiteParser::parse(html, parseLimit);
    if (parsed.empty()) return core::CapabilityResult::WebAnswer{.answer = noResults(query)};

    auto top = SearchEngine::demotingLowExtractionYieldHosts(
        SearchEngine::rankedForSummary(query, parsed));
    if (top.size() > static_cast<std::size_t>(sourceCount)) top.resize(sourceCount);

    const bool makesAnswer = webQuery->wantAnswer && summarizer != nullptr;
    const Instant searched = std::chrono::steady_clock::now();

    std::vector<Result> sourceList = top;
    if (makesAnswer && pageFetcher) {
        if (auto augmented = SearchEngine::augmentedWithReadabilityChunks(
                query, top, *pageFetcher, sourceCount, chunkBudget, embeddingBackend)) {
            sourceList = std::move(*augmented);
        }
    }
    const Instant fetched = std::chrono::steady_clock::now();

    core::WebAnswer answer{.summary = std::nullopt,
                           .sources = webSources(top),
                           .query = query,
                           .fallbackNotice = false,
                           .summaryIsExtractive = false,
                           .summaryModelName = std::nullopt};
    if (makesAnswer) {
        if (auto summary = summarize(query, sourceList)) {
            answer.summary = std::move(summary);
            if (auto fileName = summarizer->modelFileName()) {
                answer.summaryModelName = llm::ModelCatalog::attributionName(*fileName);
            }
        } else {
            answer.summary = SearchEngine::extractiveSummary(sourceList, extractiveMaxLength);
            answer.summaryIsExtractive = answer.summary.has_value();
        }
    }
    writeLatencyLine(diagnostics, start, searched, fetched, std::chrono::steady_clock::now());
    return core::CapabilityResult::WebAnswer{.answer = std::move(answer)};
}

std::optional<std::string> WebSearchCapability::summarize(
    const std::string& query, const std::vector<Result>& results) const {
    std::vector<Result> withSnippets;
    for (const auto& result : results) {
        if (result.snippet.empty()) continue;
        withSnippets.push_back(result);
        // The selector's budget is shared by all pages; this bounds each one's share.
        if (base::text::count(result.snippet) > snippetPromptLimit) {
            withSnippets.back().snippet = base::text::prefix(result.snippet, snippetPromptLimit);
        }
    }
    if (withSnippets.empty()) return std::nullopt;

    const std::string_view prefix = WebSearchPrompts::assistantPrefix(language);
    std::string reply;
    try {
        reply = summarizer->complete(WebSearchPrompts::systemPrompt(language),
                                     summaryUserPrompt(query, withSnippets),
                                     WebSearchPrompts::summarySchema, prefix);
    } catch (...) {
        base::rethrowIfCancelled();
        return std::nullopt;
    }

    // The reply normally continues the prefix; a model that ignores the prefix writes the
    // whole object itself, and the token limit may cut either form short.
    std::optional<std::string> object = llm::extractJSONObject(reply);
    if (!object) object = repairedSummaryJSON(reply);
    if (!object) object = llm::extractJSONObject(std::string(prefix) + reply);
    if (!object) return std::nullopt;
    return decodedSummary(*object);
}

std::string WebSearchCapability::summaryUserPrompt(const std::string& query,
                                                   const std::vector<Result>& results) {
    std::string prompt = "Query: " + query + "\n\nSearch results:";
    for (std::size_t i = 0; i < results.size(); ++i) {
        prompt +=
            "\n" + std::to_string(i + 1) + ". " + results[i].title + " — " + results[i].snippet;
    }
    return prompt;
}

std::optional<std::string> WebSearchCapability::repairedSummaryJSON(std::string_view reply) {
    const std::size_t brace = reply.find('{');
    if (brace == std::string_view::npos) return std::nullopt;
    std::string text = base::text::trim(reply.substr(brace));
    if (!text.starts_with("{\"summary\"")) return std::nullopt;
    // A cut inside an escape would otherwise swallow the closing quote added below.
    while (text.ends_with('\\')) text.pop_back();
    if (auto closed = llm::extractJSONObject(text + "}")) return closed;
    return llm::extractJSONObject(text + "\"}");
}

}  // namespace nuvrel::answers
