#include "wayfen/chunk_selector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "base/cancellation.h"
#include "base/text.h"

namespace wayfen {
namespace {

namespace text = nuvrel::base::text;
using ChunkSelector::SourceChunk;
using ::testing::ElementsAre;
using ::testing::Pair;

// `length` characters of `unit`, a single character, so lengths are easy to read.
std::string run(std::size_t length, const std::string& unit = "a") {
    std::string out;
    for (std::size_t i = 0; i < length; ++i) out += unit;
    return out;
}

SourceChunk chunkOf(std::string body, int index = 0) {
    return SourceChunk{.text = std::move(body),
                       .sourceHost = "example.org",
                       .sourceURL = "https://example.org/a",
                       .chunkIndexInPage = index};
}

std::vector<std::string> texts(const std::vector<SourceChunk>& chunks) {
    std::vector<std::string> out;
    for (const auto& chunk : chunks) out.push_back(chunk.text);
    return out;
}

std::vector<std::size_t> lengths(const std::vector<SourceChunk>& chunks) {
    std::vector<std::size_t> out;
    for (const auto& chunk : chunks) out.push_back(text::count(chunk.text));
    return out;
}

TEST(ChunkSelectorChunk, PacksWholeParagraphsUntilTheNextWouldReach501Characters) {
    const auto three = ChunkSelector::chunk({run(200, "a"), run(200, "b"), run(200, "c")},
                                            "example.org", "https://example.org/a");
    ASSERT_EQ(three.size(), 2u);
    EXPECT_EQ(three[0], (SourceChunk{.text = run(200, "a") + "\n\n" + run(200, "b"),
                                     .sourceHost = "example.org",
                                     .sourceURL = "https://example.org/a",
                                     .chunkIndexInPage = 0}));
    EXPECT_EQ(three[1].text, run(200, "c"));
    EXPECT_EQ(three[1].chunkIndexInPage, 1);

    // A buffer under 300 takes the next paragraph however long it is.
    EXPECT_THAT(lengths(ChunkSelector::chunk({run(250), run(1000)}, "h", "u")), ElementsAre(1252u));
    // A candidate of exactly 500 stays together; 501 closes a buffer of 300.
    EXPECT_THAT(lengths(ChunkSelector::chunk({run(300), run(198)}, "h", "u")), ElementsAre(500u));
    EXPECT_THAT(lengths(ChunkSelector::chunk({run(300), run(199)}, "h", "u")),
                ElementsAre(300u, 199u));
    EXPECT_THAT(lengths(ChunkSelector::chunk({run(299), run(300), run(10)}, "h", "u")),
                ElementsAre(601u, 10u));
    // Characters, not bytes: Hangul syllables are three bytes each.
    EXPECT_THAT(
        lengths(ChunkSelector::chunk({run(200, "가"), run(200, "나"), run(200, "다")}, "h", "u")),
        ElementsAre(402u, 200u));
}

TEST(ChunkSelectorChunk, BlankParagraphsAreTrimmedAwayAndMakeNoChunks) {
    EXPECT_TRUE(ChunkSelector::chunk({}, "h", "u").empty());
    EXPECT_TRUE(ChunkSelector::chunk({"", "  \n", "\u3000"}, "h", "u").empty());
    const auto chunks = ChunkSelector::chunk({"  first\n", "", " \t", "second  "}, "h", "u");
    EXPECT_THAT(texts(chunks), ElementsAre("first\n\nsecond"));
}

TEST(ChunkSelectorBudget, TakesWhatFitsInScoreOrderAndNeverReturnsNothing) {
    // With no usable query tokens every score is 0, so the order is the given one.
    const std::vector<SourceChunk> sorted = {chunkOf(run(1900, "x"), 0), chunkOf(run(300, "y"), 1),
                                             chunkOf(run(100, "z"), 2)};
    EXPECT_THAT(lengths(ChunkSelector::select(sorted, "a b c", 2000)), ElementsAre(1900u, 100u));
    EXPECT_THAT(lengths(ChunkSelector::select({chunkOf(run(2500))}, "a", 2000)),
                ElementsAre(2500u));
    EXPECT_TRUE(ChunkSelector::select({}, "anything", 2000).empty());
    // The budget is in characters: 2 × 700 Hangul syllables fit 1500 although they are 4200 bytes.
    EXPECT_THAT(lengths(ChunkSelector::select({chunkOf(run(700, "가")), chunkOf(run(700, "나"))},
                                              "", 1500)),
                ElementsAre(700u, 700u));
    // Exactly the budget still fits.
    EXPECT_THAT(lengths(ChunkSelector::select({chunkOf(run(1500)), chunkOf(run(500))}, "", 2000)),
                ElementsAre(1500u, 500u));
}

TEST(ChunkSelectorLexical, CountsNonOverlappingOccurrencesOfEveryQueryToken) {
    const std::vector<SourceChunk> chunks = {
        chunkOf("Tides and wind.", 0),
        chunkOf("aaaa", 1),                              // "aa" twice, not three times
        chunkOf("aa aa aa", 2),                          // "aa" three times
        chunkOf("Solar power. SOLAR panels.", 3),        // "solar" twice, case ignored
        chunkOf("solar panels, solar farms, solar", 4),  // "solar" three times, "panels" once
        chunkOf("A page about solar-powered ovens.", 5)};
    EXPECT_THAT(
        texts(ChunkSelector::select(chunks, "Solar panels", 2000)),
        ElementsAre("solar panels, solar farms, solar", "Solar power. SOLAR panels.",
                    "A page about solar-powered ovens.", "Tides and wind.", "aaaa", "aa aa aa"));
    EXPECT_THAT(
        texts(ChunkSelector::select(chunks, "aa", 2000)),
        ElementsAre("aa aa aa", "aaaa", "Tides and wind.", "Solar power. SOLAR panels.",
                    "solar panels, solar farms, solar", "A page about solar-powered ovens."));
    // A token repeated in the query counts each time it stands there: with "wind" twice both
    // chunks score 3 and the earlier wins; with "wind" three times the second scores 4.
    const std::vector<SourceChunk> weighed = {chunkOf("tides tides tides", 0),
                                              chunkOf("wind and tides", 1)};
    EXPECT_THAT(texts(ChunkSelector::select(weighed, "wind wind tides", 2000)),
                ElementsAre("tides tides tides", "wind and tides"));
    EXPECT_THAT(texts(ChunkSelector::select(weighed, "wind wind wind tides", 2000)),
                ElementsAre("wind and tides", "tides tides tides"));
    // Han and Hangul runs are tokens of their own.
    EXPECT_THAT(texts(ChunkSelector::select({chunkOf("오늘 날씨", 0), chunkOf("서울 날씨 서울", 1)},
                                            "서울 날씨?", 2000)),
                ElementsAre("서울 날씨 서울", "오늘 날씨"));
}

class ScriptedEmbeddings : public EmbeddingProvider {
public:
    explicit ScriptedEmbeddings(std::map<std::string, std::vector<float>> vectors)
        : vectors_(std::move(vectors)) {}

    std::vector<float> embed(const std::string& text, bool isQuery) const override {
        calls.emplace_back(text, isQuery);
        if (failWith) failWith(calls.size());
        return vectors_.at(text);
    }

    std::function<void(std::size_t call)> failWith;
    mutable std::vector<std::pair<std::string, bool>> calls;

private:
    std::map<std::string, std::vector<float>> vectors_;
};

TEST(ChunkSelectorEmbedding, RanksByCosineSimilarityAskingOneVectorPerChunkInOrder) {
    const std::vector<SourceChunk> chunks = {chunkOf("orthogonal", 0), chunkOf("opposite", 1),
                                             chunkOf("diagonal", 2),   chunkOf("wrong length", 3),
                                             chunkOf("zero", 4),       chunkOf("aligned", 5),
                                             chunkOf("scaled", 6)};
    const auto provider = std::make_shared<ScriptedEmbeddings>(
        std::map<std::string, std::vector<float>>{{"query", {1, 0}},
                                                  {"orthogonal", {0, 1}},
                                                  {"opposite", {-1, 0}},
                                                  {"diagonal", {1, 1}},
                                                  {"wrong length", {1, 0, 0}},
                                                  {"zero", {0, 0}},
                                                  {"aligned", {2, 0}},
                                                  {"scaled", {0.5f, 0}}});
    const auto selected = ChunkSelector::select(chunks, "query", 2000, provider);
    // Ties (1 and 1; 0, 0 and 0) keep the given order; mismatched and zero vectors score 0,
    // not NaN, and so still rank above a negative similarity.
    EXPECT_THAT(texts(selected), ElementsAre("aligned", "scaled", "diagonal", "orthogonal",
                                             "wrong length", "zero", "opposite"));
    ASSERT_EQ(provider->calls.size(), 1u + chunks.size());
    EXPECT_THAT(provider->calls[0], Pair("query", true));
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        EXPECT_THAT(provider->calls[i + 1], Pair(chunks[i].text, false));
    }
}

TEST(ChunkSelectorEmbedding, AnyProviderFailureFallsBackToTheLexicalResult) {
    std::vector<SourceChunk> chunks;
    std::map<std::string, std::vector<float>> vectors = {{"harbour pier", {1, 0}}};
    for (int i = 0; i < 6; ++i) {
        // Lexically the last chunk wins; by embedding the first would.
        const std::string body = "chunk " + std::to_string(i) + (i == 5 ? " harbour pier" : "");
        chunks.push_back(chunkOf(body, i));
        vectors[body] = {static_cast<float>(6 - i), 1};
    }
    const auto lexical = ChunkSelector::select(chunks, "harbour pier", 2000);
    ASSERT_EQ(lexical.front().text, "chunk 5 harbour pier");

    auto failsOnFifthChunk = std::make_shared<ScriptedEmbeddings>(vectors);
    failsOnFifthChunk->failWith = [](std::size_t call) {
        if (call == 6) throw std::runtime_error("server went away");
    };
    EXPECT_EQ(ChunkSelector::select(chunks, "harbour pier", 2000, failsOnFifthChunk), lexical);
    EXPECT_EQ(failsOnFifthChunk->calls.size(), 6u);  // no call after the failure

    auto failsOnQuery = std::make_shared<ScriptedEmbeddings>(vectors);
    failsOnQuery->failWith = [](std::size_t) { throw 42; };
    EXPECT_EQ(ChunkSelector::select(chunks, "harbour pier", 2000, failsOnQuery), lexical);
    EXPECT_EQ(failsOnQuery->calls.size(), 1u);

    auto working = std::make_shared<ScriptedEmbeddings>(vectors);
    EXPECT_EQ(ChunkSelector::select(chunks, "harbour pier", 2000, working).front().text, "chunk 0");

    EXPECT_EQ(ChunkSelector::select(chunks, "harbour pier", 2000, nullptr), lexical);
    auto unused = std::make_shared<ScriptedEmbeddings>(vectors);
    EXPECT_TRUE(ChunkSelector::select({}, "harbour pier", 2000, unused).empty());
    EXPECT_TRUE(unused->calls.empty());
}

TEST(ChunkSelectorEmbedding, CancellationIsNotAFailureToFallBackFrom) {
    auto cancelled = std::make_shared<ScriptedEmbeddings>(
        std::map<std::string, std::vector<float>>{{"q", {1}}, {"text", {1}}});
    cancelled->failWith = [](std::size_t call) {
        if (call == 2) throw nuvrel::base::Cancelled();
    };
    EXPECT_THROW(ChunkSelector::select({chunkOf("text")}, "q", 2000, cancelled),
                 nuvrel::base::Cancelled);
}

}  // namespace
}  // namespace wayfen
