#include "base/regex.h"

#include <gtest/gtest.h>

#include <thread>

namespace nuvrel::base {
namespace {

TEST(Regex, CaptureOffsetsAreBytesIntoTheUtf8Input) {
    static const Regex pattern(R"((\d+)\s*(분|minutes?))");
    const std::string query = "타이머 ５분 맞춰줘";
    const auto match = pattern.firstMatch(query);
    ASSERT_TRUE(match);
    EXPECT_EQ(match->groupCount(), 2u);
    EXPECT_EQ(match->group(1), "５");  // \d admits full-width digits
    EXPECT_EQ(match->begin(1), std::string("타이머 ").size());
    EXPECT_EQ(match->end(2), std::string("타이머 ５분").size());
    EXPECT_EQ(match->group(), "５분");
    EXPECT_EQ(query.substr(match->begin(), match->end() - match->begin()), "５분");
}

TEST(Regex, GroupsThatDidNotTakePartAreEmptyAndOutOfRangeThrows) {
    static const Regex pattern(R"((a)?(b))");
    const auto match = pattern.firstMatch("xb");
    ASSERT_TRUE(match);
    EXPECT_FALSE(match->matched(1));
    EXPECT_EQ(match->group(1), "");
    EXPECT_EQ(match->begin(1), RegexMatch::npos);
    EXPECT_TRUE(match->matched(2));
    EXPECT_EQ(match->begin(2), 1u);
    EXPECT_THROW(match->group(3), std::out_of_range);
    EXPECT_THROW(match->matched(3), std::out_of_range);
}

TEST(Regex, SearchFindsAnywhereAndFullMatchNeedsTheWholeText) {
    static const Regex pattern("뭐 ?할");
    EXPECT_TRUE(pattern.search("너 뭐할 수 있어"));
    EXPECT_FALSE(pattern.fullMatch("너 뭐할 수 있어"));
    EXPECT_TRUE(pattern.fullMatch("뭐 할"));
    EXPECT_FALSE(pattern.search(""));
    EXPECT_FALSE(pattern.search("abc"));
    static const Regex empty("x*");
    EXPECT_TRUE(empty.fullMatch(""));
}

TEST(Regex, FirstMatchStartsAtACharacterBoundary) {
    static const Regex pattern(R"(\w+)");
    const std::string text = "안녕 hello";
    EXPECT_EQ(pattern.firstMatch(text, 0)->group(), "안녕");
    EXPECT_EQ(pattern.firstMatch(text, 1)->group(), "녕");  // byte 1 is inside "안"
    EXPECT_EQ(pattern.firstMatch(text, 3)->group(), "녕");
    EXPECT_EQ(pattern.firstMatch(text, 6)->group(), "hello");
    EXPECT_EQ(pattern.firstMatch(text, 6)->begin(), 7u);
    EXPECT_FALSE(pattern.firstMatch(text, text.size()));
    EXPECT_FALSE(pattern.firstMatch(text, text.size() + 5));
}

TEST(Regex, AllMatchesAreOrderedAndEmptyMatchesAdvance) {
    static const Regex number(R"(\d+)");
    const std::string text = "1개 22개 ３３３";
    const auto matches = number.allMatches(text);
    ASSERT_EQ(matches.size(), 3u);
    EXPECT_EQ(matches[0].group(), "1");
    EXPECT_EQ(matches[1].group(), "22");
    EXPECT_EQ(matches[1].begin(), std::string("1개 ").size());
    EXPECT_EQ(matches[2].group(), "３３３");
    EXPECT_EQ(matches[2].end(), text.size());

    static const Regex maybe("x*");
    const auto empties = maybe.allMatches("a한");
    EXPECT_EQ(empties.size(), 3u);  // before "a", before "한", at the end
    EXPECT_EQ(empties.back().begin(), std::string("a한").size());
}

TEST(Regex, ReplaceAllExpandsGroupsAndEscapes) {
    static const Regex pair(R"((\w+)@(\w+))");
    EXPECT_EQ(pair.replaceAll("메일 kim@example 보내", "$2 at $1"), "메일 example at kim 보내");
    EXPECT_EQ(pair.replaceAll("a@b, c@d", "[$1]"), "[a], [c]");
    EXPECT_EQ(pair.replaceAll("a@b", R"(\$1)"), "$1");
    EXPECT_EQ(pair.replaceAll("nothing here", "$1"), "nothing here");
    EXPECT_EQ(pair.replaceAll("bad\xFF bytes", "$1"),
              "bad\xFF bytes");  // untouched without a match
    EXPECT_THROW(pair.replaceAll("a@b", "$3"), std::invalid_argument);

    static const Regex blanks(R"(\s+)");
    EXPECT_EQ(blanks.replaceAll("뭐\u3000할  수", " "), "뭐 할 수");
}

TEST(Regex, OptionsChangeCaseAndLineHandling) {
    EXPECT_FALSE(Regex("remind me").search("Remind Me tomorrow"));
    EXPECT_TRUE(Regex("remind me", Regex::caseInsensitive).search("Remind Me tomorrow"));
    EXPECT_TRUE(Regex("ÉTÉ", Regex::caseInsensitive).fullMatch("été"));

    const std::string lines = "first\nsecond";
    EXPECT_FALSE(Regex("^second$").search(lines));
    EXPECT_TRUE(Regex("^second$", Regex::anchorsMatchLines).search(lines));
    EXPECT_FALSE(Regex("first.second").search(lines));
    EXPECT_TRUE(Regex("first.second", Regex::dotMatchesLineSeparators).search(lines));
    EXPECT_TRUE(Regex("^S", Regex::anchorsMatchLines | Regex::caseInsensitive).search(lines));
}

TEST(Regex, BadPatternThrowsNamingThePattern) {
    try {
        Regex broken("(unclosed[");
        FAIL() << "no exception";
    } catch (const std::invalid_argument& error) {
        EXPECT_NE(std::string(error.what()).find("(unclosed["), std::string::npos);
    }
}

TEST(Regex, IllFormedInputReadsAsReplacementCharacter) {
    static const Regex pattern("b");
    const auto match = pattern.firstMatch(
        "\xFF"
        "b");
    ASSERT_TRUE(match);
    EXPECT_EQ(match->begin(), 1u);
    EXPECT_TRUE(Regex("^\uFFFD$").fullMatch("\xC3"));
}

TEST(Regex, OnePatternServesManyThreads) {
    static const Regex pattern(R"(^(\d+)\s*(분|초)$)");
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 300; ++i) {
                const std::string text = std::to_string(i + t) + (i % 2 ? "분" : " 초");
                const auto match = pattern.firstMatch(text);
                if (!match || match->group(1) != std::to_string(i + t)) ++wrong[t];
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

}  // namespace
}  // namespace nuvrel::base
