#include <gtest/gtest.h>

#include "pipeline/fast_path_yield.h"
#include "pipeline/help_fast_path.h"
#include "pipeline/korean_particle.h"
#include "pipeline/markdown_stripping.h"

namespace nuvrel::pipeline {
namespace {

TEST(HelpFastPath, NormalizeLowersRemovesAllBlanksAndTrailingPunctuation) {
    EXPECT_EQ(HelpFastPath::normalize("  Help?! "), "help");
    EXPECT_EQ(HelpFastPath::normalize("…"), "");
    EXPECT_EQ(HelpFastPath::normalize("What can you do ?"), "whatcanyoudo");
    EXPECT_EQ(HelpFastPath::normalize("화면\u3000잠금。"), "화면잠금");
    EXPECT_EQ(HelpFastPath::normalize("使い方？！～"),
              "使い方？！～");  // the full-width tilde is not in the set
    EXPECT_EQ(HelpFastPath::normalize("使い方~？"), "使い方");
    EXPECT_EQ(HelpFastPath::normalize("a?b."), "a?b");  // only the end loses punctuation
    EXPECT_EQ(HelpFastPath::normalize(""), "");
}

TEST(HelpFastPath, MatchesHelpPhrasesHoweverSpacedInEveryLanguage) {
    for (const char* query :
         {"뭐 할 수 있어?", "너 뭐 할수있니", "What can you do?", "what can you help with", "HELP",
          "How to use", "기능 목록", "도움말!", "使い方", "何ができますか？", "你能做什么？",
          "넌 뭘 해줄 수 있어", "니가 무엇을 할 줄 알아"}) {
        EXPECT_TRUE(HelpFastPath::match(query)) << query;
    }
    for (const char* query : {"뭐 할 수 있어 오늘 저녁에", "help me find my files", "…", "",
                              "뭐 먹을까", "우리 뭐 할수있어", "features of python"}) {
        EXPECT_FALSE(HelpFastPath::match(query)) << query;
    }
}

TEST(KoreanParticle, StripsParticlesAndFillersInEitherOrder) {
    EXPECT_EQ(KoreanParticle::stripTrailingObjectParticle("사진을 좀"), "사진");
    EXPECT_EQ(KoreanParticle::stripTrailingObjectParticle("사진 좀을"), "사진");
    EXPECT_EQ(KoreanParticle::stripTrailingObjectParticle("좀"), "");
    EXPECT_EQ(KoreanParticle::stripTrailingObjectParticle("file"), "file");
    EXPECT_EQ(KoreanParticle::stripTrailingObjectParticle("보고서.pdf를"), "보고서.pdf");
    EXPECT_EQ(KoreanParticle::stripTrailingObjectParticle("  음악을\u3000쫌 "), "음악");
    EXPECT_EQ(KoreanParticle::stripTrailingObjectParticle("노트는"), "노트");
    EXPECT_EQ(KoreanParticle::stripTrailingObjectParticle("쫌 사진"),
              "쫌 사진");  // a filler counts only at the end
    EXPECT_EQ(KoreanParticle::stripTrailingObjectParticle("을을"), "");
    EXPECT_EQ(KoreanParticle::stripTrailingObjectParticle(""), "");
}

TEST(KoreanParticle, StripsTrailingPunctuationBetweenTrims) {
    EXPECT_EQ(KoreanParticle::stripTrailingPunctuation(" 서울 날씨?! "), "서울 날씨");
    EXPECT_EQ(KoreanParticle::stripTrailingPunctuation("오늘 날씨…。"), "오늘 날씨");
    EXPECT_EQ(KoreanParticle::stripTrailingPunctuation("정말 ? "), "정말");
    EXPECT_EQ(KoreanParticle::stripTrailingPunctuation("1.5.txt"), "1.5.txt");
    EXPECT_EQ(KoreanParticle::stripTrailingPunctuation("???"), "");
}

TEST(FastPathYield, YieldsWhenALaterFastPathOwnsTheQuery) {
    for (const char* query :
         {"5분 뒤에 알림 설정", "Remind me in 5 minutes", "TRANSLATE 10 dollars", "10ドルを翻訳",
          "take a note: 20 euros", "10분 있다가 메모"}) {
        EXPECT_TRUE(FastPathYield::shouldYield(query)) << query;
    }
    for (const char* query : {"5분 타이머", "10 dollars in euro", "", "remindme 5 minutes"}) {
        EXPECT_FALSE(FastPathYield::shouldYield(query)) << query;
    }
}

TEST(MarkdownStripping, KeepsTheWordsAndDropsTheMarkup) {
    EXPECT_EQ(MarkdownStripping::plainText("# Title"), "Title");
    EXPECT_EQ(MarkdownStripping::plainText("**a** and *b*"), "a and b");
    EXPECT_EQ(MarkdownStripping::plainText("[site](x)"), "site");
    EXPECT_EQ(MarkdownStripping::plainText("## 요약\n본문\n### 다음"), "요약\n본문\n다음");
    EXPECT_EQ(MarkdownStripping::plainText("####### seven"), "####### seven");
    EXPECT_EQ(MarkdownStripping::plainText("not # a heading"), "not # a heading");
    EXPECT_EQ(MarkdownStripping::plainText("__굵게__ and _기울임_"), "굵게 and 기울임");
    EXPECT_EQ(MarkdownStripping::plainText("run `ls -la` now"), "run ls -la now");
    EXPECT_EQ(MarkdownStripping::plainText("**[출처](https://example.com/a)**"), "출처");
    EXPECT_EQ(MarkdownStripping::plainText("***both***"), "both");  // bold first, then italic
}

TEST(MarkdownStripping, LeavesPlainTextAlone) {
    for (const char* text :
         {"서울은 맑고 기온은 21도입니다.", "5 > 3, a_b and 2*3", "東京の天気は晴れ。", ""}) {
        EXPECT_EQ(MarkdownStripping::plainText(text), text);
    }
}

}  // namespace
}  // namespace nuvrel::pipeline
