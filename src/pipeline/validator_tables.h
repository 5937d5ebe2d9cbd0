#pragma once
// The word lists that tie a router slot to what the user actually typed. Every phrase is in
// the normal form of normalizedForFinderMatching (lower case, single blanks), so no table needs
// normalising at run time. Order matters wherever a table is scanned "first match wins".

#include <array>
#include <string_view>

namespace nuvrel::pipeline::Validator {

// How a cue is looked for in a normalised query.
enum class FinderFileTypeCueMatchKind {
    substring,  // anywhere, even inside a word: Korean and CJK phrases
    wholeWord,  // not directly beside an ASCII letter or digit: Latin phrases
};

struct FinderFileTypeCue {
    std::string_view phrase;  // lower case
    FinderFileTypeCueMatchKind matchKind;
    std::string_view fileType;  // a value of SlotEnums::finderFileType()
};

struct CuePhrase {
    std::string_view phrase;
    FinderFileTypeCueMatchKind matchKind;
};

struct TrailingFiller {
    std::string_view filler;
    bool wholeWord;  // only when the filler is not glued to a preceding ASCII letter or digit
};

namespace rows {
constexpr FinderFileTypeCue sub(std::string_view phrase, std::string_view fileType) {
    return {phrase, FinderFileTypeCueMatchKind::substring, fileType};
}
constexpr FinderFileTypeCue word(std::string_view phrase, std::string_view fileType) {
    return {phrase, FinderFileTypeCueMatchKind::wholeWord, fileType};
}
}  // namespace rows

// Words that name a file type, scanned in this order, first match wins; the rows of one file
// type stand together.
// clang-format off
inline constexpr std::array<FinderFileTypeCue, 60> finderFileTypeCues{{
    rows::sub("한글파일", "hwp"), rows::sub("한글", "hwp"), rows::word("hwp", "hwp"),
    rows::word("pdf", "pdf"),
    rows::sub("워드", "docx"), rows::word("docx", "docx"),
    rows::sub("엑셀", "xlsx"), rows::word("excel", "xlsx"), rows::word("spreadsheet", "xlsx"),
    rows::word("xlsx", "xlsx"),
    rows::sub("파워포인트", "pptx"), rows::sub("パワポ", "pptx"), rows::word("pptx", "pptx"),
    rows::word("ppt", "pptx"), rows::sub("파포", "pptx"),
    rows::sub("사진", "image"), rows::sub("이미지", "image"), rows::sub("画像", "image"),
    rows::word("photo", "image"),
    rows::sub("c언어", "c"), rows::sub("씨언어", "c"),
    rows::sub("마크다운", "md"), rows::word("markdown", "md"), rows::sub("マークダウン", "md"),
    rows::sub("md文件", "md"),
    rows::sub("키노트", "key"), rows::sub("キーノート", "key"), rows::word("keynote", "key"),
    rows::sub("포토샵", "psd"), rows::word("photoshop", "psd"),
    rows::sub("일러스트", "ai"), rows::word("illustrator", "ai"), rows::sub("イラレ", "ai"),
    rows::sub("파이썬", "py"), rows::word("python", "py"),
    rows::sub("자바스크립트", "js"), rows::word("javascript", "js"),
    rows::sub("자바 파일", "java"), rows::sub("자바파일", "java"), rows::sub("자바 소스", "java"),
    rows::sub("자바 코드", "java"), rows::word("java", "java"),
    rows::sub("스위프트 파일", "swift"), rows::sub("스위프트 소스", "swift"),
    rows::word("swift file", "swift"), rows::word("swift files", "swift"),
    rows::word("swift source", "swift"),
    rows::sub("주피터 노트북", "ipynb"), rows::word("jupyter", "ipynb"),
    rows::sub("텍스트파일", "txt"), rows::sub("텍스트 파일", "txt"), rows::word("text file", "txt"),
    rows::sub("テキストファイル", "txt"), rows::sub("文本文件", "txt"),
    rows::word("zip", "zip"),
    rows::sub("압축", "archive"),
    rows::sub("문서", "document"), rows::sub("書類", "document"), rows::sub("文档", "document"),
    rows::word("document", "document"),
}};

// The cues trusted enough to overrule the model's file type, in this order.
inline constexpr std::array<FinderFileTypeCue, 11> safeFileTypeOverrideCues{{
    rows::sub("한글파일", "hwp"), rows::sub("한글", "hwp"), rows::word("hwp", "hwp"),
    rows::sub("엑셀", "xlsx"), rows::word("excel", "xlsx"),
    rows::sub("파워포인트", "pptx"), rows::sub("パワポ", "pptx"),
    rows::sub("사진", "image"), rows::sub("画像", "image"), rows::word("photo", "image"),
    rows::sub("압축", "archive"),
}};
// clang-format on

// Words that contain a cue and mean something else.
inline constexpr std::array<std::string_view, 2> fileTypeCueUnrelatedCompounds{"한글날",
                                                                               "한글패치"};

inline constexpr std::array<CuePhrase, 10> installerCueWords{{
    {"installer", FinderFileTypeCueMatchKind::wholeWord},
    {"install", FinderFileTypeCueMatchKind::wholeWord},
    {"installation", FinderFileTypeCueMatchKind::wholeWord},
    {"installed", FinderFileTypeCueMatchKind::wholeWord},
    {"인스톨러", FinderFileTypeCueMatchKind::substring},
    {"설치", FinderFileTypeCueMatchKind::substring},
    {"インストーラー", FinderFileTypeCueMatchKind::substring},
    {"インストール", FinderFileTypeCueMatchKind::substring},
    {"安装包", FinderFileTypeCueMatchKind::substring},
    {"安装", FinderFileTypeCueMatchKind::substring},
}};

// A set: application names whose installer is not a document of the application.
inline constexpr std::array<std::string_view, 10> installerSensitiveAppNameCues{
    "photoshop", "포토샵", "illustrator", "일러스트", "イラレ",
    "keynote",   "키노트", "キーノート",  "python",   "파이썬",
};

// A set: requests, not keywords.
inline constexpr std::array<std::string_view, 19> finderKeywordRequestStoplist{
    "찾아줘",   "찾아줄래", "찾아봐", "찾기",   "검색", "검색해줘", "열어줘",
    "보여줘",   "find",     "search", "look",   "open", "show",     "探して",
    "見つけて", "さがして", "找",     "找一下", "搜索",
};

// A set: keywords that say "a file" and nothing more.
inline constexpr std::array<std::string_view, 5> finderKeywordMeaninglessNounDropSet{
    "파일", "file", "files", "ファイル", "文件"};

// Tried in this order; longer fillers stand before their own tails.
inline constexpr std::array<TrailingFiller, 13> finderKeywordTrailingFillers{{
    {"파일좀", false},
    {"files", true},
    {"file", true},
    {"파일", false},
    {"ファイル", false},
    {"文件", false},
    {"좀", false},
    {"이", false},
    {"가", false},
    {"을", false},
    {"를", false},
    {"은", false},
    {"는", false},
}};

// Any one of these in the lower-cased query proves that it speaks of a date. The misspellings
// are what people type; "今年", "去年" and "最近" stand twice, for Japanese and for Chinese.
// clang-format off
inline constexpr std::array<std::string_view, 106> finderDateCueWords{
    "오늘", "어제", "어젯밤", "이번주", "이번 주", "지난주", "지난 주", "저번주",
    "저번 주", "이번달", "이번 달", "지난달", "지난 달", "지난", "최근", "올해",
    "작년", "며칠", "얼마 전", "요즘", "방금", "이내", "within", "以内",
    "today", "yesterday", "this week", "last week", "this month", "last month", "this year",
    "last year", "recent", "this morning", "earlier today", "last night", "days ago",
    "past week", "last 30 days", "last thirty days", "this semester", "older than a month",
    "just downloaded", "just made", "just took", "just saved", "just created", "just finished",
    "yestrday", "yesteday", "yesterdy", "lastweek", "lst wek", "last yr", "lst", "last wek",
    "last mnth", "lst mnth", "monday", "tuesday", "wednesday", "thursday", "friday", "saturday",
    "sunday", "今日", "きょう", "昨日", "きのう", "さくじつ", "今朝", "けさ",
    "今週", "先週", "せんしゅう", "こんしゅう", "今月", "先月", "今年", "去年",
    "最近", "さいきん", "直近", "数日", "一年", "今天", "昨天", "昨儿",
    "这周", "上周", "上个星期", "星期", "这个月", "本月", "上个月", "上月",
    "今年", "去年", "本年度", "年度", "最近", "近期", "过去", "天前",
    "三十天", "30天",
};
// clang-format on

// A set: request verbs that may trail a music query.
inline constexpr std::array<std::string_view, 9> musicQueryTrailingRequestVerbs{
    "틀어줘", "틀어", "재생해줘", "재생해", "들려줘", "들려", "play", "played", "playing"};

// A set: nouns that say "music" and nothing more.
inline constexpr std::array<std::string_view, 16> musicQueryTrailingGenericNouns{
    "노래",   "음악", "곡",    "뮤직", "music", "song", "songs", "track",
    "tracks", "tune", "tunes", "曲",   "音楽",  "歌",   "歌曲",  "音乐",
};

// Tried in this order: a longer particle before its own tail.
inline constexpr std::array<std::string_view, 6> dativeParticles{"한테로", "에게로", "한테",
                                                                 "에게",   "께서",   "께"};

// A weekday is "next_" when the text also holds one of these.
inline constexpr std::array<std::string_view, 3> calendarNextMarkers{"다음", "담", "next"};

// Calendar ranges by phrase, first match wins: "day after tomorrow" must stand ahead of
// "tomorrow", and the weekend rows ahead of the week rows.
struct CalendarRangePhrase {
    std::string_view token;
    std::string_view korean;
    std::string_view english;
};
inline constexpr std::array<CalendarRangePhrase, 10> calendarRangePhrases{{
    {"day_after_tomorrow", "모레", "day after tomorrow"},
    {"this_weekend", "이번 주말", "this weekend"},
    {"next_weekend", "다음 주말", "next weekend"},
    {"this_month", "이번 달", "this month"},
    {"next_month", "다음 달", "next month"},
    {"this_week", "이번 주", "this week"},
    {"next_week", "다음 주", "next week"},
    {"tomorrow", "내일", "tomorrow"},
    {"yesterday", "어제", "yesterday"},
    {"today", "오늘", "today"},
}};

}  // namespace nuvrel::pipeline::Validator
