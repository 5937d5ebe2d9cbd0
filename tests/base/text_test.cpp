#include "base/text.h"

#include <gtest/gtest.h>
#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <numeric>
#include <random>
#include <thread>

namespace nuvrel::base::text {
namespace {

// Segmentation straight from ICU over UTF-16, the oracle for the UTF-8 fast paths.
std::vector<std::string> referenceGraphemes(const std::string& text) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString unicode = icu::UnicodeString::fromUTF8(text);
    std::unique_ptr<icu::BreakIterator> it(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    it->setText(unicode);
    std::vector<std::string> out;
    int32_t start = it->first();
    for (int32_t end = it->next(); end != icu::BreakIterator::DONE; start = end, end = it->next()) {
        std::string piece;
        unicode.tempSubStringBetween(start, end).toUTF8String(piece);
        out.push_back(piece);
    }
    return out;
}

const char* const family = "👨‍👩‍👧‍👦";  // four people joined by ZWJ

TEST(TextGraphemes, CountsUserPerceivedCharactersInEveryScript) {
    EXPECT_EQ(count(""), 0u);
    EXPECT_EQ(count("hello"), 5u);
    EXPECT_EQ(count("a\r\nb"), 3u);  // CR LF is one character
    EXPECT_EQ(count("a\n\rb"), 4u);
    EXPECT_EQ(count("안녕하세요"), 5u);
    EXPECT_EQ(count("\u1100\u1161\u11AB\u1102\u1167\u11BC"), 2u);  // 간녕 as conjoining jamo
    EXPECT_EQ(count("你好世界"), 4u);
    EXPECT_EQ(count("カタカナ"), 4u);
    EXPECT_EQ(count("か\u3099"), 1u);  // combining voiced mark
    EXPECT_EQ(count("e\u0301"), 1u);
    EXPECT_EQ(count("👍🏽"), 1u);
    EXPECT_EQ(count(family), 1u);
    EXPECT_EQ(count("🇰🇷🇯🇵"), 2u);
    EXPECT_EQ(count("🇰🇷🇯"), 2u);
    EXPECT_EQ(count("1\uFE0F\u20E3"), 1u);  // keycap: ASCII followed by marks
    EXPECT_EQ(count("\u06001"), 1u);        // prepended Arabic number sign joins the digit
    EXPECT_EQ(count(std::string("Hi ") + family + "!"), 5u);
}

TEST(TextGraphemes, PrefixSuffixAndDropLastCutAtCharacterBoundaries) {
    EXPECT_EQ(prefix("👍🏽ab", 1), "👍🏽");
    EXPECT_EQ(prefix("안녕하세요", 2), "안녕");
    EXPECT_EQ(prefix("abc", 0), "");
    EXPECT_EQ(prefix("abc", 10), "abc");
    EXPECT_EQ(suffix("안녕하세요", 2), "세요");
    EXPECT_EQ(suffix("a\r\n", 1), "\r\n");
    EXPECT_EQ(suffix("abc", 0), "");
    EXPECT_EQ(suffix("abc", 7), "abc");
    EXPECT_EQ(dropLast(std::string("사진") + family), "사진");
    EXPECT_EQ(dropLast("a\r\n"), "a");
    EXPECT_EQ(dropLast("e\u0301"), "");
    EXPECT_EQ(dropLast("파일을", 2), "파");
    EXPECT_EQ(dropLast("ab", 5), "");
    EXPECT_EQ(dropLast(""), "");
    // Regional indicators pair from the start, so the last flag needs the whole run.
    EXPECT_EQ(lastGrapheme("🇰🇷🇯🇵"), "🇯🇵");
    EXPECT_EQ(lastGrapheme("x🇰🇷🇯"), "🇯");
    EXPECT_EQ(lastGrapheme(""), "");
    EXPECT_EQ(graphemes("a👍🏽\r\n한"),
              (std::vector<std::string>{"a", "👍🏽", "\r\n", "한"}));
}

TEST(TextGraphemes, AgreesWithIcuOnRandomMixturesOfEveryBreakClass) {
    // One or two members of each Grapheme_Cluster_Break class, plus the pictographs that
    // the emoji rules look at.
    const std::vector<std::string> pool = {
        "a",      " ",      "\r",     "\n",         "\t",     "1",      "é",      "字",
        "カ",     "한",     "\u1100", "\u1161",     "\u11AB", "\u0301", "\u200D", "\uFE0F",
        "🏽",   "👍",      "👨",      "🇰",          "🇷",      "\u0600", "\u0903", "\u00AD",
        "\u3099", "\u0915", "\u094D", "\U0001F3F3", "\u3000",
    };
    std::mt19937 random(20240611);
    std::uniform_int_distribution<std::size_t> pick(0, pool.size() - 1), length(0, 12);
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (std::size_t i = length(random); i > 0; --i) text += pool[pick(random)];
        const std::vector<std::string> expected = referenceGraphemes(text);
        ASSERT_EQ(graphemes(text), expected) << "text: " << text;
        ASSERT_EQ(count(text), expected.size());
        for (std::size_t n = 0; n <= expected.size(); ++n) {
            const std::string head =
                std::accumulate(expected.begin(), expected.begin() + n, std::string());
            const std::string tail =
                std::accumulate(expected.end() - n, expected.end(), std::string());
            ASSERT_EQ(prefix(text, n), head);
            ASSERT_EQ(suffix(text, n), tail);
            ASSERT_EQ(dropLast(text, n), text.substr(0, text.size() - tail.size()));
        }
    }
}

TEST(TextGraphemes, MembershipAndStrippingCompareWholeCharacters) {
    EXPECT_TRUE(isOneOf("？", "?？!"));
    EXPECT_TRUE(isOneOf("!", "?？!"));
    EXPECT_FALSE(isOneOf("?!", "?？!"));
    EXPECT_FALSE(isOneOf("", "?？!"));
    EXPECT_FALSE(isOneOf("\xEF", "?？!"));  // a byte of "？" is not a character of the set
    EXPECT_EQ(stripTrailing("정말?！~", "?？!！~"), "정말");
    EXPECT_EQ(stripTrailing("?!", "?!"), "");
    EXPECT_EQ(stripTrailing("a?b", "?"), "a?b");
    EXPECT_EQ(stripTrailing("what?\u0301", "?"),
              "what?\u0301");  // "?" with a mark is another character
}

TEST(TextGraphemes, EachThreadSegmentsIndependently) {
    const std::string text = std::string("가") + family + "🇰🇷e\u0301";
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 500; ++i) {
                if (count(text) != 4 || lastGrapheme(text) != "e\u0301") ++wrong[t];
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

TEST(TextCase, FullMappingInTheRootLocaleWhateverTheProcessLocale) {
    const icu::Locale saved = icu::Locale::getDefault();
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale("tr", "TR"), status);

    EXPECT_EQ(lower("Hello WORLD 42"), "hello world 42");
    EXPECT_EQ(upper("straße"), "STRASSE");
    EXPECT_EQ(lower("İstanbul"), "i\u0307stanbul");  // not the Turkish dotted lower case
    EXPECT_EQ(upper("istanbul"), "ISTANBUL");        // not "İSTANBUL"
    EXPECT_EQ(lower("ΟΔΟΣ"), "οδος");                // final sigma by context
    EXPECT_EQ(lower("ＨＥＬＰ"), "ｈｅｌｐ");
    EXPECT_EQ(lower("한국어 ABC"), "한국어 abc");
    EXPECT_EQ(lower("A\xFF"
                    "B"),
              "a\xFF"
              "b");

    icu::Locale::setDefault(saved, status);
}

TEST(TextNormalForm, ComposesToNfcAndRepairsIllFormedBytes) {
    EXPECT_EQ(nfc("\u1100\u1161\u11AB"), "간");
    EXPECT_EQ(nfc("e\u0301"), "é");
    EXPECT_EQ(nfc("カ\u3099"), "ガ");
    EXPECT_EQ(nfc("already 정상 文字"), "already 정상 文字");
    EXPECT_EQ(nfc("a\xFF"), "a\uFFFD");
    EXPECT_EQ(nfc("e\u0301\xC3"), "é\uFFFD");
}

TEST(TextWhiteSpace, TrimsAndSplitsAtUnicodeWhiteSpace) {
    for (char32_t c : {U' ', U'\t', U'\n', U'\r', U'\v', U'\f', U'\u0085', U'\u00A0', U'\u1680',
                       U'\u2003', U'\u2028', U'\u2029', U'\u202F', U'\u3000'}) {
        EXPECT_TRUE(isWhiteSpace(c)) << std::hex << static_cast<unsigned>(c);
    }
    for (char32_t c : {U'a', U'\x1C', U'\u200B', U'\uFEFF', U'\u180E', char32_t{0x110000}}) {
        EXPECT_FALSE(isWhiteSpace(c)) << std::hex << static_cast<unsigned>(c);
    }

    EXPECT_EQ(trim("\u3000 hello  world\u00A0\r\n"), "hello  world");
    EXPECT_EQ(trim(" \u3000\n"), "");
    EXPECT_EQ(trim("x"), "x");
    EXPECT_EQ(trimView("\t서울 \u2028"), "서울");

    EXPECT_EQ(splitBlanks("  오늘\u3000날씨\t\tseoul \n"),
              (std::vector<std::string>{"오늘", "날씨", "seoul"}));
    EXPECT_EQ(splitBlanks("明日の\u3000天気"), (std::vector<std::string>{"明日の", "天気"}));
    EXPECT_TRUE(splitBlanks("").empty());
    EXPECT_TRUE(splitBlanks(" \u3000 ").empty());

    EXPECT_EQ(removeWhiteSpace("what can\u3000you\u00A0do\n"), "whatcanyoudo");
    EXPECT_EQ(removeWhiteSpace("뭐 할 수 있어"), "뭐할수있어");
}

TEST(TextSubstrings, ReplaceAllIsPlainAndDoesNotRescan) {
    EXPECT_EQ(replaceAll("%@ 파일을 %@", "%@", "보고서"), "보고서 파일을 보고서");
    EXPECT_EQ(replaceAll("aaa", "a", "aa"), "aaaaaa");
    EXPECT_EQ(replaceAll("a.b.c", ".", ""), "abc");
    EXPECT_EQ(replaceAll("abc", "", "x"), "abc");
    EXPECT_EQ(replaceAll("$1 stays", "$", "$$"), "$$1 stays");
    EXPECT_TRUE(contains("알림 설정해줘", "알림 설정"));
    EXPECT_FALSE(contains("알림설정", "알림 설정"));
    EXPECT_TRUE(contains("x", ""));
}

TEST(TextNumbers, ParsesWholeDecimalsWithAnyDecimalDigits) {
    EXPECT_EQ(parseDecimal("42"), 42.0);
    EXPECT_EQ(parseDecimal("-3.25"), -3.25);
    EXPECT_EQ(parseDecimal("+2"), 2.0);
    EXPECT_EQ(parseDecimal("100."), 100.0);
    EXPECT_EQ(parseDecimal(".5"), 0.5);
    EXPECT_EQ(parseDecimal("１２.５"), 12.5);
    EXPECT_EQ(parseDecimal("٣٤"), 34.0);  // Arabic-Indic digits
    EXPECT_EQ(parseDecimal("1e3"), 1000.0);
    EXPECT_EQ(parseDecimal("2.5E-1"), 0.25);
    EXPECT_EQ(parseDecimal("0.1"), 0.1);
    EXPECT_EQ(parseDecimal("1e-400"), 0.0);

    for (const char* bad :
         {"",    ".",        "-",  "+.",  " 5", "5 ",   "1,000", "1.2.3", "--1",  "0x10", "inf",
          "nan", "Infinity", "1e", "1e+", "e5", "５ｅ", "12%",   "1e400", "\xFF", "3\xC3"}) {
        EXPECT_EQ(parseDecimal(bad), std::nullopt) << bad;
    }
}

TEST(TextCodePoints, DecodeEncodeAndRepair) {
    const std::string text = "a©한😀";
    EXPECT_EQ(toUtf32(text), U"a©한😀");
    EXPECT_EQ(fromUtf32(U"a©한😀"), text);
    EXPECT_EQ(fromUtf32(std::u32string{0xD800, 0x110000}), "\uFFFD\uFFFD");

    std::size_t pos = text.size();
    std::u32string backwards;
    while (pos > 0) backwards.insert(backwards.begin(), previousCodePoint(text, pos));
    EXPECT_EQ(backwards, U"a©한😀");

    EXPECT_TRUE(isValidUtf8("한\uFFFD"));
    EXPECT_FALSE(isValidUtf8("\xED\xA0\x80"));  // encoded surrogate
    EXPECT_FALSE(isValidUtf8("\xC0\xAF"));      // overlong
    EXPECT_EQ(validUtf8("a\xF0\x9F\x98"
                        "b"),
              "a\uFFFD"
              "b");
    EXPECT_TRUE(isAscii("plain"));
    EXPECT_FALSE(isAscii("plain\u00A0"));
}

TEST(TextIllFormed, EveryFunctionStaysWithinTheInput) {
    const std::vector<std::string> inputs = {
        "\xFF",         "\xC3",     "a\xE2\x82",        "\x80\x80\x80\x80x",
        "\xF0\x9F\x98", "\xC0\xAF", "\xED\xA0\x80 x",   " \x80",
        "\x80 ",        "e\xCC",    "\xF4\x90\x80\x80", "👍\xF0\x9F\x8F",
        "\r\xFF\n",     "🇰\xF0🇷",
    };
    for (const std::string& input : inputs) {
        SCOPED_TRACE(testing::PrintToString(input));
        const std::size_t n = count(input);
        EXPECT_GE(n, 1u);
        EXPECT_LE(n, input.size());
        const std::vector<std::string> pieces = graphemes(input);
        EXPECT_EQ(pieces.size(), n);
        EXPECT_EQ(std::accumulate(pieces.begin(), pieces.end(), std::string()), input);
        EXPECT_EQ(prefix(input, n), input);
        EXPECT_EQ(dropLast(input, n), "");
        EXPECT_EQ(dropLast(input) + lastGrapheme(input), input);
        EXPECT_NE(input.find(trim(input)), std::string::npos);
        EXPECT_TRUE(isValidUtf8(nfc(input)));
        EXPECT_TRUE(isValidUtf8(validUtf8(input)));
        EXPECT_NE(toUtf32(input).find(U'\uFFFD'), std::u32string::npos);
        EXPECT_EQ(lower(input).size(), input.size());
        EXPECT_LE(removeWhiteSpace(input).size(), input.size());
        EXPECT_EQ(parseDecimal(input), std::nullopt);
    }
}

}  // namespace
}  // namespace nuvrel::base::text
