#include "answers/web_search_capability.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "answers/web_search_prompts.h"
#include "base/cancellation.h"
#include "base/task.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "llm/llm_error.h"
#include "llm/model_catalog.h"
#include "support/error_of.h"
#include "support/recording_sink.h"
#include "support/scripted_backend.h"
#include "wayfen/searxng_transport.h"

namespace nuvrel::answers {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;

using ScriptedSummarizer = nuvrel::testing::ScriptedBackend;
using nuvrel::testing::failWith;
using nuvrel::testing::reply;

// A search provider that answers every query with one page, or throws, and notes the queries.
class ScriptedTransport : public wayfen::WebSearchTransport {
public:
    explicit ScriptedTransport(std::function<std::string()> answer) : answer_(std::move(answer)) {}

    std::string fetchResultsHTML(const std::string& query) const override {
        {
            std::lock_guard lock(mutex_);
            queries_.push_back(query);
        }
        return answer_();
    }
    std::vector<std::string> queries() const {
        std::lock_guard lock(mutex_);
        return queries_;
    }

private:
    std::function<std::string()> answer_;
    mutable std::mutex mutex_;
    mutable std::vector<std::string> queries_;
};

// Pages by URL; an unknown URL is a 404. Notes every URL asked for.
class ScriptedPages : public wayfen::PageTransport {
public:
    explicit ScriptedPages(std::map<std::string, std::string> pages) : pages_(std::move(pages)) {}

    wayfen::RawPageResponse fetchPage(const base::Url& url) const override {
        std::lock_guard lock(mutex_);
        requested.push_back(url.text());
        const auto page = pages_.find(url.text());
        if (page == pages_.end())
            return {.statusCode = 404, .contentType = "text/html", .data = ""};
        return {.statusCode = 200, .contentType = "text/html; charset=utf-8", .data = page->second};
    }

    mutable std::vector<std::string> requested;

private:
    std::map<std::string, std::string> pages_;
    mutable std::mutex mutex_;
};

wayfen::SearXNGResultItem item(std::string title, std::string url, std::string snippet) {
    return {.title = std::move(title), .url = std::move(url), .snippet = std::move(snippet)};
}

std::string resultsPage(const std::vector<wayfen::SearXNGResultItem>& items) {
    return wayfen::SearXNGTransport::reserialize(items);
}

const std::string challengePage =
    R"(<form id="challenge-form"><div data-testid="anomaly-modal"></div><script src="/anomaly.js"></script>)";

std::chrono::system_clock::time_point inYear2031() {
    return std::chrono::sys_days(std::chrono::year{2031} / 6 / 15);
}

struct Fixture {
    std::shared_ptr<ScriptedTransport> transport;
    std::shared_ptr<ScriptedSummarizer> summarizer;
    WebSearchCapability capability;
};

Fixture fixture(std::function<std::string()> page, std::vector<ScriptedSummarizer::Step> script,
                std::optional<std::string> modelFile = {}) {
    Fixture f{std::make_shared<ScriptedTransport>(std::move(page)),
              std::make_shared<ScriptedSummarizer>(std::move(script), std::move(modelFile)),
              {}};
    f.capability.transport = f.transport;
    f.capability.summarizer = f.summarizer;
    f.capability.now = inYear2031;
    return f;
}

wayfen::PageFetcher fetcherOf(std::shared_ptr<ScriptedPages> pages) {
    return {.transport = std::move(pages),
            .timeout = 3.5,
            .maxBytes = 1'572'864,
            .concurrencyLimit = 3,
            .sleepFn = base::liveSleep};
}

std::function<std::string()> serving(std::string html) {
    return [html = std::move(html)] { return html; };
}

core::WebAnswer answerOf(WebSearchCapability& capability, std::string query,
                         bool wantAnswer = true) {
    const core::CapabilityResult result =
        capability.execute(core::WebQuery{.query = std::move(query), .wantAnswer = wantAnswer});
    const auto* web = result.get<core::CapabilityResult::WebAnswer>();
    if (!web) throw std::logic_error("not a web answer");
    return web->answer;
}

const std::vector<wayfen::SearXNGResultItem> fourResults = {
    item("Tallest mountain", "https://peaks.example/everest",
         "Everest is the tallest mountain on Earth."),
    item("Mountain list", "https://lists.example/mountains", "K2 is the second tallest mountain."),
    item("Hiking blog", "https://blog.example/hike", "Our trip to the Alps."),
    item("Geology", "https://geo.example/rocks", "Rocks and mountain formation."),
};

TEST(WebSearchCapabilityPlan, TakesTrimmedQuerySlotAndWantAnswerFlag) {
    const WebSearchCapability capability;
    auto web = [&](const core::Slots& slots, std::string_view query) {
        return *capability.plan(slots, query).get<core::WebQuery>();
    };
    EXPECT_EQ(web({}, "  who won\n"), (core::WebQuery{.query = "who won", .wantAnswer = true}));
    EXPECT_EQ(web({{"query", " world cup 2018 "}}, "who won the cup"),
              (core::WebQuery{.query = "world cup 2018", .wantAnswer = true}));
    // A blank or non-text query slot leaves the user's own words.
    EXPECT_EQ(web({{"query", " \n"}}, " who won ").query, "who won");
    EXPECT_EQ(web({{"query", 42}}, "who won").query, "who won");
    EXPECT_FALSE(web({{"want_answer", false}}, "q").wantAnswer);
    // Only a real boolean counts.
    EXPECT_TRUE(web({{"want_answer", "false"}}, "q").wantAnswer);
    EXPECT_TRUE(web({{"want_answer", 0}}, "q").wantAnswer);
}

TEST(WebSearchCapabilityExecute, AsksTheModelWithPromptSchemaAndPrefixAndKeepsTopThreeSources) {
    auto f = fixture(serving(resultsPage(fourResults)),
                     {reply("{\"summary\": \"  Everest is the tallest.\\n \"}")},
                     "Qwen3-1.7B-Q4_K_M.gguf");
    const core::WebAnswer answer = answerOf(f.capability, "tallest mountain");

    ASSERT_EQ(f.summarizer->calls.size(), 1u);
    const auto& call = f.summarizer->calls[0];
    EXPECT_EQ(call.system, WebSearchPrompts::systemPrompt(core::AppLanguage::en));
    EXPECT_EQ(call.schema, WebSearchPrompts::summarySchema);
    EXPECT_EQ(call.prefix,
              std::optional<std::string>("{\"summary\": \"According to the search results,"));
    EXPECT_EQ(call.user,
              "Query: tallest mountain\n\nSearch results:\n"
              "1. Tallest mountain — Everest is the tallest mountain on Earth.\n"
              "2. Mountain list — K2 is the second tallest mountain.\n"
              "3. Geology — Rocks and mountain formation.");

    EXPECT_EQ(answer.summary, std::optional<std::string>("Everest is the tallest."));
    EXPECT_FALSE(answer.summaryIsExtractive);
    EXPECT_FALSE(answer.fallbackNotice);
    EXPECT_EQ(answer.summaryModelName,
              llm::ModelCatalog::attributionName("Qwen3-1.7B-Q4_K_M.gguf"));
    EXPECT_EQ(answer.query, "tallest mountain");
    // Ranked by the query's words: the hiking blog, matching none, falls out.
    ASSERT_EQ(answer.sources.size(), 3u);
    EXPECT_EQ(answer.sources[0], (core::WebSource{.title = "Tallest mountain",
                                                  .host = "peaks.example/everest",
                                                  .url = "https://peaks.example/everest"}));
    EXPECT_EQ(answer.sources[1].url, "https://lists.example/mountains");
    EXPECT_EQ(answer.sources[2].url, "https://geo.example/rocks");
}

TEST(WebSearchCapabilityExecute, PromptLeavesOutTitleOnlyResultsAndClipsLongSnippets) {
    const std::string longSnippet = std::string(600, 'x');
    auto f = fixture(serving(resultsPage({item("Only a title", "https://a.example/", ""),
                                          item("Long one", "https://b.example/", longSnippet),
                                          item("Korean", "https://c.example/", "한국어 요약")})),
                     {reply("{\"summary\": \"ok\"}")});
    const core::WebAnswer answer = answerOf(f.capability, "q");

    ASSERT_EQ(f.summarizer->calls.size(), 1u);
    EXPECT_EQ(f.summarizer->calls[0].user, "Query: q\n\nSearch results:\n1. Long one — " +
                                               std::string(500, 'x') + "\n2. Korean — 한국어 요약");
    // The title-only result is still a source.
    EXPECT_EQ(answer.sources.size(), 3u);
    EXPECT_EQ(answer.summaryModelName, std::nullopt);
}

TEST(WebSearchCapabilityExecute, RecencyYearReachesOnlyTheTransport) {
    auto f =
        fixture(serving(resultsPage({item("Phones", "https://p.example/", "The latest phone.")})),
                {reply("{\"summary\": \"A phone.\"}")});
    const core::WebAnswer answer = answerOf(f.capability, "latest phone");

    EXPECT_EQ(f.transport->queries(), std::vector<std::string>{"latest phone 2031"});
    EXPECT_THAT(f.summarizer->calls.at(0).user, StartsWith("Query: latest phone\n"));
    EXPECT_THAT(f.summarizer->calls.at(0).user, Not(HasSubstr("2031")));
    EXPECT_EQ(answer.query, "latest phone");

    // A query that names its year, or does not ask for the latest, goes out as it is.
    auto g = fixture(serving(resultsPage({})), {});
    answerOf(g.capability, "latest phone 2024");
    answerOf(g.capability, "phone");
    EXPECT_EQ(g.transport->queries(), (std::vector<std::string>{"latest phone 2024", "phone"}));
}

TEST(WebSearchCapabilityExecute, WithoutWantAnswerNeitherFetchesNorAsksButLogsLatency) {
    auto f = fixture(serving(resultsPage(fourResults)), {});
    auto pages = std::make_shared<ScriptedPages>(std::map<std::string, std::string>{});
    f.capability.pageFetcher = fetcherOf(pages);
    const nuvrel::test::RecordedDiagnostics recorded;
    f.capability.diagnostics = recorded.diagnostics;
    const core::WebAnswer answer = answerOf(f.capability, "tallest mountain", false);
    const std::string log = recorded.sink->text();

    EXPECT_TRUE(f.summarizer->calls.empty());
    EXPECT_TRUE(pages->requested.empty());
    EXPECT_EQ(answer.summary, std::nullopt);
    EXPECT_FALSE(answer.summaryIsExtractive);
    EXPECT_EQ(answer.summaryModelName, std::nullopt);
    EXPECT_EQ(answer.sources.size(), 3u);
    EXPECT_THAT(log, MatchesRegex("\\[nuvrel-latency\\] websearch: search=[0-9]+ms fetch=[0-9]+ms "
                                  "summarize=[0-9]+ms total=[0-9]+ms\n"));
}

TEST(WebSearchCapabilityExecute, RepairsSummariesCutOffByTheTokenLimit) {
    const std::string page =
        resultsPage({item("Answer", "https://a.example/", "The answer is 42.")});
    struct Case {
        std::string reply;
        std::string summary;
    };
    const std::vector<Case> cases = {
        // The closing quote and brace lost.
        {"{\"summary\": \"The answer is 42", "The answer is 42"},
        // Cut inside an escape: the lone backslash goes, the quote is restored.
        {"{\"summary\": \"The answer is 42 \\", "The answer is 42"},
        // Only the brace lost.
        {"{\"summary\": \"The answer is 42\"", "The answer is 42"},
        // The reply continues the prefix, as a server that honours it answers.
        {" the answer is 42.\"}", "According to the search results, the answer is 42."},
        // Text around a whole object.
        {"Sure: {\"summary\": \"Forty-two.\"} done", "Forty-two."},
    };
    for (const auto& c : cases) {
        auto f = fixture(serving(page), {reply(c.reply)});
        const core::WebAnswer answer = answerOf(f.capability, "answer");
        EXPECT_EQ(answer.summary, std::optional<std::string>(c.summary)) << c.reply;
        EXPECT_FALSE(answer.summaryIsExtractive) << c.reply;
    }
}

TEST(WebSearchCapabilityExecute, UnusableSummaryGivesWayToTheTopExcerpt) {
    const std::string page = resultsPage(
        {item("First", "https://a.example/", "First sentence. Second sentence. Third sentence."),
         item("Second", "https://b.example/", "Other text.")});
    const std::vector<ScriptedSummarizer::Step> failures = {
        reply("{\"summary\": \"\"}"),       reply("{\"summary\": \"   \"}"),
        reply("{\"other\": \"x\"}"),        reply("no json at all"),
        failWith(llm::LLMError::http(500)), failWith(std::runtime_error("connection refused")),
    };
    for (std::size_t i = 0; i < failures.size(); ++i) {
        auto f = fixture(serving(page), {failures[i]}, "Qwen3-1.7B-Q4_K_M.gguf");
        const core::WebAnswer answer = answerOf(f.capability, "first sentence");
        EXPECT_EQ(answer.summary, std::optional<std::string>("First sentence. Second sentence."))
            << i;
        EXPECT_TRUE(answer.summaryIsExtractive) << i;
        EXPECT_EQ(answer.summaryModelName, std::nullopt) << i;
        EXPECT_EQ(answer.sources.size(), 2u) << i;
    }
}

TEST(WebSearchCapabilityExecute, WithoutModelOrSnippetsOnlySourcesRemain) {
    const std::string page = resultsPage(
        {item("A", "https://a.example/", "Some text."), item("B", "https://b.example/", "")});
    auto noModel = fixture(serving(page), {});
    noModel.capability.summarizer = nullptr;
    const core::WebAnswer withoutModel = answerOf(noModel.capability, "a");
    EXPECT_EQ(withoutModel.summary, std::nullopt);
    EXPECT_FALSE(withoutModel.summaryIsExtractive);
    EXPECT_EQ(withoutModel.sources.size(), 2u);

    // Titles alone are never shown to the model, and leave nothing to excerpt.
    auto titlesOnly = fixture(serving(resultsPage({item("A", "https://a.example/", ""),
                                                   item("B", "https://b.example/", "")})),
                              {});
    const core::WebAnswer bare = answerOf(titlesOnly.capability, "a");
    EXPECT_TRUE(titlesOnly.summarizer->calls.empty());
    EXPECT_EQ(bare.summary, std::nullopt);
    EXPECT_FALSE(bare.summaryIsExtractive);
    EXPECT_EQ(bare.sources.size(), 2u);
}

TEST(WebSearchCapabilityExecute, PromptsAndPrefixFollowTheLanguage) {
    const std::string page = resultsPage({item("서울", "https://a.example/", "서울은 수도이다.")});
    for (const auto language : core::allAppLanguages) {
        auto f = fixture(serving(page), {reply("x\"}")});
        f.capability.language = language;
        const core::WebAnswer answer = answerOf(f.capability, "서울");
        ASSERT_EQ(f.summarizer->calls.size(), 1u);
        EXPECT_EQ(f.summarizer->calls[0].system, WebSearchPrompts::systemPrompt(language));
        const std::string prefix(WebSearchPrompts::assistantPrefix(language));
        EXPECT_EQ(f.summarizer->calls[0].prefix, prefix);
        // The continuation is read behind the prefix.
        EXPECT_EQ(answer.summary, prefix.substr(prefix.find(": \"") + 3) + "x");
    }
}

TEST(WebSearchCapabilityExecute, FetchedPassagesFeedThePromptWhileSourcesStayAsFound) {
    const std::string passage =
        "The tallest mountain on Earth is Mount Everest, which rises 8,849 metres above sea "
        "level on the border of Nepal and China.";
    auto pages = std::make_shared<ScriptedPages>(std::map<std::string, std::string>{
        {"https://peaks.example/everest",
         "<html><body><article><p>" + passage + "</p></article></body></html>"}});
    auto f = fixture(serving(resultsPage(fourResults)), {reply("{\"summary\": \"Everest.\"}")});
    f.capability.pageFetcher = fetcherOf(pages);
    const core::WebAnswer answer = answerOf(f.capability, "tallest mountain");

    // The pages of the top three are asked for, the page of the one ranked out never.
    EXPECT_EQ(pages->requested.size(), 3u);
    EXPECT_THAT(pages->requested, Not(::testing::Contains("https://blog.example/hike")));
    EXPECT_THAT(f.summarizer->calls.at(0).user, HasSubstr("1. Tallest mountain — " + passage));
    // Pages that could not be had keep their search snippet, and stay among the sources.
    EXPECT_THAT(f.summarizer->calls.at(0).user,
                HasSubstr("2. Mountain list — K2 is the second tallest mountain."));
    ASSERT_EQ(answer.sources.size(), 3u);
    EXPECT_EQ(answer.sources[0].title, "Tallest mountain");
    EXPECT_EQ(answer.sources[1].url, "https://lists.example/mountains");
}

TEST(WebSearchCapabilityExecute, ChallengeNetworkFailureAndEmptyPageReachTheCard) {
    const auto& en = core::LocalizedStrings::en();
    const auto errorOf = [](Fixture f) {
        return nuvrel::test::errorOf<core::UserFacingError>([&] { answerOf(f.capability, "q"); });
    };
    EXPECT_EQ(errorOf(fixture(serving(challengePage), {})),
              core::UserFacingError(en.webSearchBlockedMessage, en.webSearchBlockedRecovery, true));
    EXPECT_EQ(errorOf(fixture([]() -> std::string { throw std::runtime_error("offline"); }, {})),
              core::UserFacingError(en.webSearchNetworkFailureMessage,
                                    en.webSearchNetworkFailureRecovery, true));

    // A page of no results: an answer with nothing in it and no latency line.
    auto empty = fixture(serving("<html>nothing here</html>"), {});
    const nuvrel::test::RecordedDiagnostics recorded;
    empty.capability.diagnostics = recorded.diagnostics;
    const core::WebAnswer answer = answerOf(empty.capability, "  q");
    EXPECT_EQ(recorded.sink->text(), "");
    EXPECT_EQ(answer, (core::WebAnswer{.summary = std::nullopt,
                                       .sources = {},
                                       .query = "  q",
                                       .fallbackNotice = false,
                                       .summaryIsExtractive = false,
                                       .summaryModelName = std::nullopt}));
    EXPECT_TRUE(empty.summarizer->calls.empty());

    // A plan of another intent is refused before anything is sent.
    auto other = fixture(serving(resultsPage(fourResults)), {});
    const auto refused = nuvrel::test::errorOf<core::UserFacingError>(
        [&] { other.capability.execute(core::FinderQuery{}); });
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->recoverySuggestion, std::nullopt);
    EXPECT_FALSE(refused->retryable);
    EXPECT_TRUE(other.transport->queries().empty());
}

TEST(WebSearchCapabilityExecute, CancellationEndsAsCancelledNeverAsACard) {
    auto cancelledSearch = fixture([]() -> std::string { throw base::Cancelled(); }, {});
    EXPECT_THROW(answerOf(cancelledSearch.capability, "q"), base::Cancelled);

    // A cancelled model call is not a failed one: no excerpt stands in.
    auto cancelledSummary =
        fixture(serving(resultsPage(fourResults)), {failWith(base::Cancelled())});
    EXPECT_THROW(answerOf(cancelledSummary.capability, "tallest mountain"), base::Cancelled);

    // A stop request of the running task reaches a transport that waits for it.
    std::atomic<bool> waiting = false;
    auto blocked = fixture(
        [&]() -> std::string {
            waiting = true;
            while (!base::isCancelled()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
            base::checkCancellation();
            return "";
        },
        {});
    base::Task<core::WebAnswer> task([&] { return answerOf(blocked.capability, "q"); });
    while (!waiting) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    task.cancel();
    EXPECT_THROW(task.value(), base::Cancelled);
}

}  // namespace
}  // namespace nuvrel::answers
