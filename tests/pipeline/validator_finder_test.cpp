#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "pipeline/validator.h"
#include "pipeline/validator_detail.h"
#include "pipeline/validator_test_support.h"

namespace nuvrel::pipeline {
namespace {

using namespace Validator;
using core::FinderQuery;
using core::IntentID;
using testing::describeOutcome;

std::string finder(std::string_view query, core::Slots slots, double confidence = 0.9) {
    return describeOutcome(
        validate(core::RoutedIntent{IntentID::finderSearch, std::move(slots), confidence}, query,
                 testing::fullRegistry()));
}

std::string expected(FinderQuery query) {
    return describeOutcome(core::ActionPlan(std::move(query)));
}

TEST(FinderCueMatching, WholeWordNeedsNoAsciiLetterOrDigitBesideTheOccurrence) {
    EXPECT_FALSE(containsWholeWord("find my photos", "photo"));
    EXPECT_FALSE(containsWholeWord("xhwp", "hwp"));
    EXPECT_FALSE(containsWholeWord("hwp2", "hwp"));
    EXPECT_FALSE(containsWholeWord("swift files", "swift file"));
    EXPECT_TRUE(containsWholeWord("hwp파일", "hwp"));
    EXPECT_TRUE(containsWholeWord("보고서.hwp", "hwp"));
    EXPECT_TRUE(containsWholeWord("한글pdf자료", "pdf"));
    EXPECT_TRUE(containsWholeWord("pdf", "pdf"));
    EXPECT_TRUE(containsWholeWord("xhwp or hwp", "hwp"));  // a later occurrence still counts
    EXPECT_FALSE(containsWholeWord("anything", ""));
    EXPECT_FALSE(phraseMatches("anything", "", FinderFileTypeCueMatchKind::substring));
    EXPECT_TRUE(phraseMatches("한글날", "한글", FinderFileTypeCueMatchKind::substring));
    EXPECT_FALSE(phraseMatches("photos", "photo", FinderFileTypeCueMatchKind::wholeWord));
}

TEST(FinderCueMatching, NormalFormJoinsWordsWithOneBlankAndLowerCases) {
    EXPECT_EQ(normalizedForFinderMatching("  Swift\u3000\tFILES \n"), "swift files");
    EXPECT_EQ(normalizedForFinderMatching("ÉCOLE   Docs"), "école docs");
    EXPECT_EQ(normalizedForFinderMatching("한글 Report\u00a0파일"), "한글 report 파일");
    EXPECT_EQ(normalizedForFinderMatching("\u3000 \n"), "");
}

TEST(FinderCueMatching, InstallerWordsCountByTheirKind) {
    for (const char* text : {"python installer", "install python", "installed apps", "설치파일",
                             "インストール", "安装包", "인스톨러"}) {
        EXPECT_TRUE(queryMentionsInstaller(text)) << text;
    }
    for (const char* text : {"reinstall", "uninstalled", "installers", "파이썬 자료"}) {
        EXPECT_FALSE(queryMentionsInstaller(text)) << text;
    }
}

TEST(FinderCueMatching, CleaningDropsUnrelatedCompoundsAndInstallerApplicationNames) {
    EXPECT_EQ(deterministicFinderFileType("한글날 행사 자료 찾아줘"), std::nullopt);
    EXPECT_EQ(deterministicFinderFileType("한글패치 찾아줘"), std::nullopt);
    EXPECT_EQ(deterministicFinderFileType("한글날 한글 파일"), "hwp");  // only the compound goes
    EXPECT_EQ(deterministicFinderFileType("python 설치 파일 찾아줘"), std::nullopt);
    EXPECT_EQ(deterministicFinderFileType("Python installer"), std::nullopt);
    EXPECT_EQ(deterministicFinderFileType("python 파일 찾아줘"), "py");
    EXPECT_EQ(deterministicFinderFileType("reinstall python"), "py");
    EXPECT_EQ(deterministicFinderFileType("포토샵 설치 사진"), "image");
}

TEST(FinderFileTypeCues, FirstRowInTableOrderWinsWhateverTheWordOrder) {
    EXPECT_EQ(deterministicFinderFileType("엑셀 말고 pdf"), "pdf");
    EXPECT_EQ(deterministicFinderFileType("자바스크립트 파일"), "js");
    EXPECT_EQ(deterministicFinderFileType("자바 파일"), "java");
    EXPECT_EQ(deterministicFinderFileType("my SWIFT   files"), "swift");
    EXPECT_EQ(deterministicFinderFileType("md文件"), "md");
    EXPECT_EQ(deterministicFinderFileType("c언어 과제"), "c");
    EXPECT_EQ(deterministicFinderFileType("포토샵 사진"), "image");
    EXPECT_EQ(deterministicFinderFileType("my photos"), std::nullopt);
    EXPECT_EQ(deterministicFinderFileType("회의록"), std::nullopt);
    EXPECT_EQ(firstMatchingFileType(safeFileTypeOverrideCues, "docx 엑셀"), "xlsx");
    EXPECT_EQ(firstMatchingFileType(safeFileTypeOverrideCues, "docx 워드"), std::nullopt);
}

TEST(FinderFileTypeCues, TokenIsGroundedByItsCuesItselfOrItsPlural) {
    EXPECT_TRUE(isFileTypeTokenGrounded("pdf", "PDFs from last week"));
    EXPECT_TRUE(isFileTypeTokenGrounded("xlsx", "엑셀 파일"));
    EXPECT_TRUE(isFileTypeTokenGrounded("image", "images"));
    EXPECT_TRUE(isFileTypeTokenGrounded("hwp", "보고서.hwp"));
    EXPECT_FALSE(isFileTypeTokenGrounded("image", "imagery"));
    EXPECT_FALSE(isFileTypeTokenGrounded("docx", "report"));
    EXPECT_FALSE(isFileTypeTokenGrounded("hwp", "한글날 행사 자료 찾아줘"));
    EXPECT_FALSE(isFileTypeTokenGrounded("py", "python 설치 파일"));
    EXPECT_TRUE(isFileTypeTokenGrounded("py", "python 파일"));
}

TEST(FinderFileTypeCues, ExactCueIsTheWholeNormalisedKeyword) {
    EXPECT_EQ(exactCueFinderFileType("엑셀", "엑셀 찾아줘"), "xlsx");
    EXPECT_EQ(exactCueFinderFileType(" Swift   FILES ", "swift files"), "swift");
    EXPECT_EQ(exactCueFinderFileType("PDF", "pdf"), "pdf");
    EXPECT_EQ(exactCueFinderFileType("엑셀 파일", "엑셀 파일"), std::nullopt);
    EXPECT_EQ(exactCueFinderFileType("", "엑셀"), std::nullopt);
    EXPECT_EQ(exactCueFinderFileType("python", "python 설치 파일 찾아줘"), std::nullopt);
    EXPECT_EQ(exactCueFinderFileType("python", "python 파일 찾아줘"), "py");
    EXPECT_EQ(exactCueFinderFileType("포토샵", "포토샵 installer"), std::nullopt);
    // Only application names give way to an installer; a plain cue does not.
    EXPECT_EQ(exactCueFinderFileType("pdf", "pdf installer"), "pdf");
}

TEST(FinderFileType, UngroundedTypeNeedsConfidenceOfPointSix) {
    const core::Slots hwp{{"file_type", "hwp"}};
    EXPECT_EQ(validatedFinderFileType(hwp, "한글날 행사 자료 찾아줘", 0.59), std::nullopt);
    EXPECT_EQ(validatedFinderFileType(hwp, "한글날 행사 자료 찾아줘", 0.6), "hwp");
    EXPECT_EQ(validatedFinderFileType(hwp, "한글날 행사 자료 찾아줘", std::nan("")), std::nullopt);
    EXPECT_EQ(validatedFinderFileType({{"file_type", " HWP "}}, "한글 문서 찾아줘", 0.3), "hwp");
    EXPECT_EQ(validatedFinderFileType({{"file_type", "pdfx"}}, "pdfx 찾아줘", 1.0), std::nullopt);
    EXPECT_EQ(validatedFinderFileType({{"file_type", 3}}, "pdf", 1.0), std::nullopt);

    EXPECT_EQ(finder("한글날 행사 자료 찾아줘", hwp, 0.59),
              expected({.keyword = "한글날 행사 자료 찾아줘"}));
}

TEST(FinderFileType, SafeCueOverridesADifferentUngroundedType) {
    const core::Slots pdf{{"file_type", "pdf"}};
    EXPECT_EQ(validatedFinderFileType(pdf, "엑셀 찾아줘", 0.9), "xlsx");
    EXPECT_EQ(validatedFinderFileType(pdf, "엑셀 찾아줘", 0.3), "xlsx");
    EXPECT_EQ(validatedFinderFileType(pdf, "엑셀이랑 pdf 찾아줘", 0.3), "pdf");
    EXPECT_EQ(validatedFinderFileType({{"file_type", "document"}}, "사진 찾아줘", 0.9), "image");
    // A narrower type of the cue's own category is no contradiction, but still needs support.
    EXPECT_EQ(validatedFinderFileType({{"file_type", "png"}}, "사진 찾아줘", 0.9), "png");
    EXPECT_EQ(validatedFinderFileType({{"file_type", "png"}}, "사진 찾아줘", 0.3), std::nullopt);

    EXPECT_EQ(finder("엑셀 찾아줘", pdf), expected({.fileType = "xlsx"}));
}

TEST(FinderDateRange, KeptOnlyWhenTheQueryHoldsADateWord) {
    const core::Slots lastWeek{{"date_range", "Last_Week"}};
    EXPECT_EQ(validatedFinderDateRange(lastWeek, "보고서 찾아줘"), std::nullopt);
    EXPECT_EQ(validatedFinderDateRange(lastWeek, "지난주 보고서"), "last_week");
    EXPECT_EQ(validatedFinderDateRange(lastWeek, "Report from LAST WEEK"), "last_week");
    EXPECT_EQ(validatedFinderDateRange(lastWeek, "report from yestrday"), "last_week");
    EXPECT_EQ(validatedFinderDateRange(lastWeek, "先週の資料"), "last_week");
    EXPECT_EQ(validatedFinderDateRange({{"date_range", "next_week"}}, "다음주 지난주"),
              std::nullopt);

    EXPECT_EQ(finder("보고서 찾아줘", {{"keyword", "보고서"}, {"date_range", "last_week"}}, 1.0),
              expected({.keyword = "보고서"}));
}

TEST(FinderKeywordFiller, FirstMatchingFillerIsRemovedWithTrailingBlanks) {
    EXPECT_EQ(finderKeywordStrippingTrailingFiller("report files"), "report");
    EXPECT_EQ(finderKeywordStrippingTrailingFiller("Report FILES"), "Report");
    EXPECT_EQ(finderKeywordStrippingTrailingFiller("report.file"), "report.");
    EXPECT_EQ(finderKeywordStrippingTrailingFiller("보고서파일좀"), "보고서");  // not "보고서파일"
    EXPECT_EQ(finderKeywordStrippingTrailingFiller("보고서 파일"), "보고서");
    EXPECT_EQ(finderKeywordStrippingTrailingFiller("写真ファイル"), "写真");
    EXPECT_EQ(finderKeywordStrippingTrailingFiller("자료를"), "자료");
    EXPECT_EQ(finderKeywordStrippingTrailingFiller("계획서\u3000좀"), "계획서");
    EXPECT_EQ(finderKeywordStrippingTrailingFiller("files"), "");
    EXPECT_EQ(finderKeywordStrippingTrailingFiller("profiles"), std::nullopt);
    EXPECT_EQ(finderKeywordStrippingTrailingFiller("profile"), std::nullopt);
    EXPECT_EQ(finderKeywordStrippingTrailingFiller("budget"), std::nullopt);
}

TEST(FinderSearch, KeywordsTheQueryDoesNotBearOutAreDropped) {
    EXPECT_EQ(finder("파일 찾아줘", {{"keyword", "파일"}}), expected({.keyword = "파일 찾아줘"}));
    EXPECT_EQ(finder("회의록 찾아줘", {{"keyword", "budget"}}),
              expected({.keyword = "회의록 찾아줘"}));
    EXPECT_EQ(finder("Find budget", {{"keyword", "Find"}}), expected({.keyword = "Find budget"}));
    EXPECT_EQ(finder("budget 찾아줘", {{"keyword", 42}}), expected({.keyword = "budget 찾아줘"}));
    EXPECT_EQ(finder("  budget  2024 찾아줘 ", {{"keyword", "Budget 2024"}}),
              expected({.keyword = "Budget 2024"}));
}

TEST(FinderSearch, InstallerQueryKeepsTheApplicationNameAsKeyword) {
    EXPECT_EQ(finder("python 설치 파일 찾아줘", {{"keyword", "python"}}),
              expected({.keyword = "python"}));
    EXPECT_EQ(finder("python 파일 찾아줘", {{"keyword", "python"}}), expected({.fileType = "py"}));
}

TEST(FinderSearch, KeywordThatIsAFileTypeCueBecomesTheFileType) {
    EXPECT_EQ(finder("엑셀 찾아줘", {{"keyword", "엑셀"}}), expected({.fileType = "xlsx"}));
    // The query's own first cue wins over the keyword's.
    EXPECT_EQ(finder("한글 엑셀 찾아줘", {{"keyword", "엑셀"}}), expected({.fileType = "hwp"}));
    EXPECT_EQ(finder("다운로드에서 엑셀 찾아줘", {{"keyword", "엑셀"}, {"location", "Downloads"}}),
              expected({.fileType = "xlsx", .location = "downloads"}));
}

TEST(FinderSearch, KeywordLosesItsTrailingFiller) {
    EXPECT_EQ(finder("find report files", {{"keyword", "report files"}}),
              expected({.keyword = "report"}));
    EXPECT_EQ(finder("pdf report files", {{"keyword", "report files"}, {"file_type", "pdf"}}),
              expected({.keyword = "report", .fileType = "pdf"}));
    // What is left may be a cue itself.
    EXPECT_EQ(finder("엑셀 파일 찾아줘", {{"keyword", "엑셀 파일"}}),
              expected({.fileType = "xlsx"}));
    // Nothing left: the file type alone, or the last resort.
    EXPECT_EQ(finder("pdf 파일좀 찾아줘", {{"keyword", "파일좀"}, {"file_type", "pdf"}}),
              expected({.fileType = "pdf"}));
    EXPECT_EQ(finder("파일좀 찾아줘", {{"keyword", "파일좀"}}),
              expected({.keyword = "파일좀 찾아줘"}));
}

TEST(FinderSearch, KeywordCueAndFileTypeKeepTheNarrowerType) {
    EXPECT_EQ(finder("pdf 찾아줘", {{"keyword", "pdf"}, {"file_type", "pdf"}}),
              expected({.fileType = "pdf"}));
    EXPECT_EQ(finder("사진 중에 jpg 찾아줘", {{"keyword", "사진"}, {"file_type", "jpg"}}),
              expected({.fileType = "jpg"}));
    EXPECT_EQ(finder("pdf 문서 찾아줘", {{"keyword", "pdf"}, {"file_type", "document"}}),
              expected({.fileType = "pdf"}));
    EXPECT_EQ(finder("엑셀 말고 pdf 찾아줘", {{"keyword", "엑셀"}, {"file_type", "pdf"}}),
              expected({.keyword = "엑셀", .fileType = "pdf"}));
}

TEST(FinderSearch, LastResortPrefersAnyGroundedSlotToTheWholeQuery) {
    EXPECT_EQ(finder("한글 문서 찾아줘", {}), expected({.fileType = "hwp"}));
    EXPECT_EQ(finder("회의록 찾아줘", {}), expected({.keyword = "회의록 찾아줘"}));
    EXPECT_EQ(finder("다운로드 폴더 보여줘", {{"location", "downloads"}}),
              expected({.location = "downloads"}));
    EXPECT_EQ(finder("차고 보여줘", {{"location", "garage"}}),
              expected({.keyword = "차고 보여줘"}));
    EXPECT_EQ(finder("지난주에 받은 거", {{"date_range", "last_week"}}),
              expected({.dateRange = "last_week"}));
}

TEST(FinderSearch, AllFourGroundedSlotsStand) {
    EXPECT_EQ(
        finder("지난주 다운로드 폴더에 받은 한글 보고서 찾아줘", {{"keyword", "보고서"},
                                                                  {"file_type", "hwp"},
                                                                  {"location", "downloads"},
                                                                  {"date_range", "last_week"}}),
        expected({.keyword = "보고서",
                  .fileType = "hwp",
                  .location = "downloads",
                  .dateRange = "last_week"}));
}

}  // namespace
}  // namespace nuvrel::pipeline
