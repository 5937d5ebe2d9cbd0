#include "wayfen/search_engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "base/sleep.h"
#include "base/text.h"

namespace wayfen {
namespace {

namespace text = nuvrel::base::text;
using Result = SearchEngine::Result;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

std::chrono::system_clock::time_point midYear(int year) {
    std::tm date{};
    date.tm_year = year - 1900;
    date.tm_mon = 5;
    date.tm_mday = 15;
    date.tm_hour = 12;
    return std::chrono::system_clock::from_time_t(timegm(&date));
}

Result result(const std::string& title, const std::string& snippet = "",
              const std::string& host = "example.org", const std::string& url = "") {
    return Result{.title = title,
                  .snippet = snippet,
                  .host = host,
                  .url = url.empty() ? "https://" + host + "/" : url};
}

std::vector<std::string> titles(const std::vector<Result>& results) {
    std::vector<std::string> out;
    for (const auto& r : results) out.push_back(r.title);
    return out;
}

TEST(SearchEngineRecency, AddsTheCurrentYearOnlyWhenAskedForTheLatestWithoutAYear) {
    const auto now = midYear(2026);
    EXPECT_EQ(SearchEngine::recencyEnrichedQuery("latest phone", now), "latest phone 2026");
    EXPECT_EQ(SearchEngine::recencyEnrichedQuery("latest phone", midYear(2031)),
              "latest phone 2031");
    EXPECT_EQ(SearchEngine::recencyEnrichedQuery("latest phone 2024", now), "latest phone 2024");
    EXPECT_EQ(SearchEngine::recencyEnrichedQuery("phone", now), "phone");
    // Only the test is lower-cased; the query keeps its case.
    EXPECT_EQ(SearchEngine::recencyEnrichedQuery("NEWEST Pixel", now), "NEWEST Pixel 2026");
    EXPECT_EQ(SearchEngine::recencyEnrichedQuery("今年の天気", now), "今年の天気 2026");
    EXPECT_EQ(SearchEngine::recencyEnrichedQuery("최신 아이폰 가격", now), "최신 아이폰 가격 2026");
    EXPECT_EQ(SearchEngine::recencyEnrichedQuery("最新のニュース", now), "最新のニュース 2026");
    // Any "20" and two digits counts as a year, wherever it stands.
    EXPECT_EQ(SearchEngine::recencyEnrichedQuery("latest 2050 rate", now), "latest 2050 rate");
    EXPECT_EQ(SearchEngine::recencyEnrichedQuery("latest rtx2080 driver", now),
              "latest rtx2080 driver");
    EXPECT_EQ(SearchEngine::recencyEnrichedQuery("latest 1999 rate", now), "latest 1999 rate 2026");
}

TEST(SearchEngineTokens, SplitsAtNonAlphanumericsAndKeepsEveryTokenOfTwoOrMoreCharacters) {
    EXPECT_THAT(SearchEngine::queryTokensForRanking("What's the iPhone-15 price? the"),
                ElementsAre("what", "the", "iphone", "15", "price", "the"));
    // Runs of Hangul, Han and Kana are single tokens; full-width digits are digits.
    EXPECT_THAT(SearchEngine::queryTokensForRanking("서울 날씨, 今日の天気 ２０２６年"),
                ElementsAre("서울", "날씨", "今日の天気", "２０２６年"));
    EXPECT_THAT(SearchEngine::queryTokensForRanking("a b c ! 가"), IsEmpty());
    // A combining accent belongs to its letter: "é" written as two code points is still one
    // character, and does not split "café".
    EXPECT_THAT(SearchEngine::queryTokensForRanking("cafe\u0301 e\u0301 Ü"),
                ElementsAre("cafe\u0301"));
}

TEST(SearchEngineRanking, ScoresByTokensPresentAndKeepsTheFirstFiveStably) {
    const std::vector<Result> results = {
        result("News", "pier pier pier pier"),        // "pier" present: 1
        result("Weather", "sunny"),                   // 0
        result("Pier repairs", "harbour authority"),  // 3
        result("Harbour", "pier"),                    // 2
        result("Piers", "of the harbour"),            // "pier" inside "piers": 2
        result("Unrelated", "cats"),                  // 0
        result("Jetty pi", "er and harbour")};        // the blank between title and snippet: 1
    EXPECT_THAT(titles(SearchEngine::rankedForSummary("harbour pier repairs", results)),
                ElementsAre("Pier repairs", "Harbour", "Piers", "News", "Jetty pi"));
    // A token repeated in the query counts each time it stands there.
    EXPECT_THAT(titles(SearchEngine::rankedForSummary(
                    "sunny sunny harbour", {result("A", "harbour"), result("B", "sunny")})),
                ElementsAre("B", "A"));

    std::vector<Result> ten;
    for (int i = 0; i < 10; ++i) ten.push_back(result("r" + std::to_string(i), "same text"));
    EXPECT_THAT(titles(SearchEngine::rankedForSummary("same text", ten)),
                ElementsAre("r0", "r1", "r2", "r3", "r4"));
    // No tokens: the first five as given, unscored.
    EXPECT_THAT(titles(SearchEngine::rankedForSummary("a b c", results)),
                ElementsAre("News", "Weather", "Pier repairs", "Harbour", "Piers"));
    EXPECT_THAT(SearchEngine::rankedForSummary("anything", {}), IsEmpty());
}

TEST(SearchEngineLowYield, MatchesDomainsAndSubdomainsAndMovesThemBackWithoutDropping) {
    EXPECT_TRUE(SearchEngine::isLowExtractionYieldHost("youtube.com"));
    EXPECT_TRUE(SearchEngine::isLowExtractionYieldHost("M.YouTube.com"));
    EXPECT_TRUE(SearchEngine::isLowExtractionYieldHost("www.reddit.com/r/boats/comments/1"));
    EXPECT_TRUE(SearchEngine::isLowExtractionYieldHost("youtu.be/abc"));
    EXPECT_TRUE(SearchEngine::isLowExtractionYieldHost("x.com"));
    EXPECT_FALSE(SearchEngine::isLowExtractionYieldHost("notyoutube.com"));
    EXPECT_FALSE(SearchEngine::isLowExtractionYieldHost("box.com"));
    EXPECT_FALSE(SearchEngine::isLowExtractionYieldHost("youtube.com.example.org"));
    EXPECT_FALSE(SearchEngine::isLowExtractionYieldHost("example.org/youtube.com"));
    EXPECT_FALSE(SearchEngine::isLowExtractionYieldHost(""));

    const std::vector<Result> mixed = {
        result("video", "", "www.youtube.com"), result("article", "", "news.example"),
        result("thread", "", "reddit.com/r/x"), result("wiki", "", "en.wikipedia.org")};
    EXPECT_THAT(titles(SearchEngine::demotingLowExtractionYieldHosts(mixed)),
                ElementsAre("article", "wiki", "video", "thread"));
    const std::vector<Result> onlyLow = {result("a", "", "tiktok.com"),
                                         result("b", "", "instagram.com"),
                                         result("c", "", "www.facebook.com")};
    EXPECT_EQ(SearchEngine::demotingLowExtractionYieldHosts(onlyLow), onlyLow);
}

TEST(SearchEngineSentences, CutsAfterSentencePunctuationFollowedByWhiteSpace) {
    EXPECT_THAT(SearchEngine::naiveSentences("  One!  Two?\nThree。 Four．五！ 六"),
                ElementsAre("One!", "Two?", "Three。", "Four．五！", "六"));
    EXPECT_THAT(SearchEngine::naiveSentences("Version 1.5 is out.Really"),
                ElementsAre("Version 1.5 is out.Really"));
    EXPECT_THAT(SearchEngine::naiveSentences("   "), IsEmpty());
}

TEST(SearchEngineSummary, TakesAtMostTwoSentencesOfTheFirstSnippetWithinTheLength) {
    const auto summary = [](std::vector<Result> results, int maxLength = 160) {
        return SearchEngine::extractiveSummary(results, maxLength);
    };
    EXPECT_THAT(summary({result("t", "First. Second. Third.")}),
                Optional(std::string("First. Second.")));
    const std::string first(100, 'a');
    const std::string second(70, 'b');
    EXPECT_THAT(summary({result("t", first + ". " + second + ".")}), Optional(first + "."));
    const std::string longSentence(200, 'c');
    EXPECT_THAT(summary({result("t", longSentence + ". Short.")}), Optional(std::string(160, 'c')));
    EXPECT_THAT(summary({result("t", "no punctuation at all here")}),
                Optional(std::string("no punctuation at all here")));
    // The first non-empty snippet is the only one used, even when it yields nothing.
    EXPECT_THAT(summary({result("t", ""), result("u", "Used. Too.")}),
                Optional(std::string("Used. Too.")));
    EXPECT_EQ(summary({result("t", "   "), result("u", "Never reached.")}), std::nullopt);
    EXPECT_EQ(summary({result("t", "")}), std::nullopt);
    EXPECT_EQ(summary({}), std::nullopt);
}

TEST(SearchEngineSummary, CountsLengthsInCharactersNotBytes) {
    std::string hangul;
    for (int i = 0; i < 200; ++i) hangul += "가";
    const auto cut = SearchEngine::extractiveSummary({result("t", hangul)}, 160);
    ASSERT_TRUE(cut);
    EXPECT_EQ(text::count(*cut), 160u);
    EXPECT_EQ(cut->size(), 480u);
    // Two sentences of 60 and 50 syllables (330 bytes together) are within 160 characters.
    std::string a, b;
    for (int i = 0; i < 59; ++i) a += "나";
    for (int i = 0; i < 49; ++i) b += "다";
    EXPECT_THAT(SearchEngine::extractiveSummary({result("t", a + "。 " + b + "。 끝.")}, 160),
                Optional(a + "。 " + b + "。"));
    // A cut that ends in a blank is trimmed.
    EXPECT_THAT(SearchEngine::extractiveSummary({result("t", "abc defg")}, 4),
                Optional(std::string("abc")));
}

// Pages by URL. One URL can be held back until every other request has been answered, so
// that pages complete in an order unlike the order of the results.
class ScriptedPages : public PageTransport {
public:
    struct Page {
        int status = 200;
        std::optional<std::string> contentType = "text/html; charset=utf-8";
        std::string body;
    };

    std::map<std::string, Page> pages;
    std::string answeredLast;

    RawPageResponse fetchPage(const nuvrel::base::Url& url) const override {
        std::unique_lock lock(mutex_);
        requested_.insert(url.text());
        if (url.text() == answeredLast) {
            changed_.wait_for(lock, std::chrono::seconds(10),
                              [&] { return answered_ + 1 == pages.size(); });
        }
        ++answered_;
        changed_.notify_all();
        const auto found = pages.find(url.text());
        if (found == pages.end())
            return RawPageResponse{.statusCode = 404, .contentType = {}, .data = {}};
        return RawPageResponse{.statusCode = found->second.status,
                               .contentType = found->second.contentType,
                               .data = found->second.body};
    }

    std::set<std::string> requested() const {
        std::lock_guard lock(mutex_);
        return requested_;
    }

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    mutable std::size_t answered_ = 0;
    mutable std::set<std::string> requested_;
};

PageFetcher fetcherOver(std::shared_ptr<ScriptedPages> transport) {
    return PageFetcher{.transport = std::move(transport),
                       .timeout = 30,
                       .maxBytes = 1'572'864,
                       .concurrencyLimit = 3,
                       .sleepFn = nuvrel::base::liveSleep};
}

// A paragraph of 350 characters that holds `keywords` and filler that matches no query token,
// so that every paragraph is a chunk of its own.
std::string paragraph(const std::string& keywords) {
    std::string out = keywords;
    while (text::count(out) < 350) out += " lorem ipsum dolor sit amet";
    return text::prefix(out, 349) + "x";
}

std::string articlePage(const std::vector<std::string>& paragraphs) {
    std::string html = "<html><body><article>";
    for (const auto& p : paragraphs) html += "<p>" + p + "</p>";
    return html + "</article></body></html>";
}

TEST(SearchEngineAugment, WritesSelectedPassagesInPageOrderWhateverTheCompletionOrder) {
    const std::string a0 = paragraph("opening"), a1 = paragraph("the pier"),
                      a2 = paragraph("middle"), a3 = paragraph("more"),
                      a4 = paragraph("harbour pier repairs");
    const std::string c0 = paragraph("pier closed");
    auto transport = std::make_shared<ScriptedPages>();
    transport->pages["https://a.example/story"].body = articlePage({a0, a1, a2, a3, a4});
    transport->pages["https://b.example/video"].body =
        "<html><body><div>" + paragraph("harbour pier repairs") + "</div></body></html>";
    transport->pages["https://c.example/news"].body = articlePage({c0});
    transport->answeredLast = "https://a.example/story";  // a page completes last

    const std::vector<Result> results = {
        result("A", "snippet a", "a.example/story", "https://a.example/story"),
        result("B", "snippet b", "b.example/video", "https://b.example/video"),
        result("C", "snippet c", "c.example/news", "https://c.example/news"),
        result("A again", "snippet a2", "a.example/story", "https://a.example/story"),
        result("D", "snippet d", "d.example", "https://d.example/")};
    // Budget for two chunks: a4 scores 3, then a1 and c0 tie at 1 and the earlier page wins.
    const auto augmented = SearchEngine::augmentedWithReadabilityChunks(
        "harbour pier repairs", results, fetcherOver(transport), 3, 700, nullptr);
    ASSERT_TRUE(augmented);
    ASSERT_EQ(augmented->size(), 5u);
    EXPECT_EQ((*augmented)[0],
              result("A", a1 + "\n\n" + a4, "a.example/story", "https://a.example/story"));
    EXPECT_EQ((*augmented)[1], results[1]);  // no paragraphs: keeps its search snippet
    EXPECT_EQ((*augmented)[2], results[2]);  // lost the tie, so nothing selected
    EXPECT_EQ((*augmented)[3].snippet, a1 + "\n\n" + a4);  // beyond maxPages, same URL
    EXPECT_EQ((*augmented)[4], results[4]);
    EXPECT_EQ(transport->requested(),
              (std::set<std::string>{"https://a.example/story", "https://b.example/video",
                                     "https://c.example/news"}));
}

TEST(SearchEngineAugment, GivesNothingWhenNoResultCouldBeEnriched) {
    auto transport = std::make_shared<ScriptedPages>();
    transport->pages["https://a.example/"] = {
        .status = 200, .contentType = "application/pdf", .body = articlePage({paragraph("pier")})};
    transport->pages["https://b.example/"] = {
        .status = 500, .contentType = "text/html", .body = articlePage({paragraph("pier")})};
    transport->pages["https://c.example/"].body = "<html><body><p>too short</p></body></html>";
    const std::vector<Result> results = {result("A", "a", "a.example"),
                                         result("B", "b", "b.example"),
                                         result("C", "c", "c.example")};
    EXPECT_EQ(SearchEngine::augmentedWithReadabilityChunks("pier", results, fetcherOver(transport),
                                                           3, 2000, nullptr),
              std::nullopt);

    // Nothing parses as a URL: nothing is fetched at all.
    auto untouched = std::make_shared<ScriptedPages>();
    const std::vector<Result> unparsable = {result("X", "x", "x", "not a url"),
                                            result("Y", "y", "y", "/relative/path"),
                                            result("Z", "z", "z", "http://")};
    EXPECT_EQ(SearchEngine::augmentedWithReadabilityChunks(
                  "pier", unparsable, fetcherOver(untouched), 3, 2000, nullptr),
              std::nullopt);
    EXPECT_THAT(untouched->requested(), IsEmpty());
    EXPECT_EQ(SearchEngine::augmentedWithReadabilityChunks("pier", {}, fetcherOver(untouched), 3,
                                                           2000, nullptr),
              std::nullopt);
}

class PreferringEmbeddings : public EmbeddingProvider {
public:
    std::vector<float> embed(const std::string& text, bool isQuery) const override {
        ++calls;
        if (isQuery) return {1, 0};
        return text::contains(text, "favourite") ? std::vector<float>{1, 0}
                                                 : std::vector<float>{0, 1};
    }
    mutable std::atomic<int> calls{0};
};

TEST(SearchEngineAugment, SelectsWithTheEmbeddingProviderWhenOneIsGiven) {
    const std::string lexical = paragraph("harbour pier repairs");
    const std::string favourite = paragraph("favourite");
    auto transport = std::make_shared<ScriptedPages>();
    transport->pages["https://a.example/"].body = articlePage({lexical, favourite});
    const auto provider = std::make_shared<PreferringEmbeddings>();
    const auto augmented = SearchEngine::augmentedWithReadabilityChunks(
        "harbour pier repairs", {result("A", "a", "a.example")}, fetcherOver(transport), 3, 400,
        provider);
    ASSERT_TRUE(augmented);
    EXPECT_EQ(augmented->front().snippet, favourite);
    EXPECT_EQ(provider->calls.load(), 3);
}

}  // namespace
}  // namespace wayfen
