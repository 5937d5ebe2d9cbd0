#include "wayfen/html_decoding.h"

#include <gtest/gtest.h>

#include <string>

namespace wayfen {
namespace {

const std::string eucKrKorean = "\xC7\xD1\xB1\xB9\xBE\xEE";                          // 한국어
const std::string shiftJisJapanese = "\x93\xFA\x96\x7B\x8C\xEA";                     // 日本語
const std::string gb18030Text = "\xD6\xD0\xCE\xC4\x94\x39\xFC\x36\x81\x30\x8B\x37";  // 中文😀ÿ

std::string pageWithMetaAt(std::size_t offset, const std::string& meta, const std::string& body) {
    std::string page = "<html><head>";
    page += std::string(offset > page.size() ? offset - page.size() : 0, ' ');
    return page + meta + "</head><body>" + body + "</body></html>";
}

TEST(CharsetParameter, ReadsTheParameterWithoutQuotesOrBlanks) {
    EXPECT_EQ(charsetParameter("text/html; charset=\"EUC-KR\""), "EUC-KR");
    EXPECT_EQ(charsetParameter("text/html;charset='utf-8'"), "utf-8");
    EXPECT_EQ(charsetParameter("text/html; CharSet= Shift_JIS "), "Shift_JIS");
    EXPECT_EQ(charsetParameter("text/html; q=1; charset=\"\"; charset=gb18030"), "gb18030");
    EXPECT_EQ(charsetParameter("text/html"), std::nullopt);
    EXPECT_EQ(charsetParameter("text/html; format=flowed"), std::nullopt);
    // The first piece is the media type, never a parameter, even when it looks like one.
    EXPECT_EQ(charsetParameter("charset=utf-8"), std::nullopt);
    EXPECT_EQ(charsetParameter(";charset=utf-8"), std::nullopt);
    EXPECT_EQ(charsetParameter(std::nullopt), std::nullopt);
}

TEST(CharsetFromMetaTag, FindsTheFirstNamedCharsetWithinTheLimit) {
    EXPECT_EQ(charsetFromMetaTag("<head><meta charset=\"Shift_JIS\"></head>", 1024), "Shift_JIS");
    EXPECT_EQ(charsetFromMetaTag("<META HTTP-EQUIV=\"Content-Type\" CONTENT=\"text/html; "
                                 "Charset=euc-kr\">",
                                 1024),
              "euc-kr");
    EXPECT_EQ(
        charsetFromMetaTag("<meta name=\"x\"><meta charset='gb18030'><meta charset=utf-8>", 1024),
        "gb18030");
    // Only inside a meta tag, and only a tag that is whole within the limit.
    EXPECT_EQ(charsetFromMetaTag("<metadata charset=big5><p>charset=utf-8</p>", 1024),
              std::nullopt);
    const std::string late = pageWithMetaAt(2000, "<meta charset=\"Shift_JIS\">", "");
    EXPECT_EQ(charsetFromMetaTag(late, 1024), std::nullopt);
    EXPECT_EQ(charsetFromMetaTag("<meta charset=\"Shift_JIS\">", 20), std::nullopt);
    // Bytes that are not UTF-8 before the tag do not hide it.
    EXPECT_EQ(charsetFromMetaTag(shiftJisJapanese + "<meta charset=shift_jis>", 1024), "shift_jis");
}

TEST(CharacterEncoding, MapsRegisteredNamesAndRefusesUnknownOnes) {
    for (const char* name : {"EUC-KR", "euc-kr", " Shift_JIS ", "GB18030", "UTF-8", "ISO-8859-1",
                             "windows-1252", "Big5", "EUC-JP"}) {
        EXPECT_TRUE(characterEncoding(name).has_value()) << name;
    }
    EXPECT_EQ(characterEncoding(" utf-8 "), characterEncoding("UTF-8"));
    EXPECT_NE(characterEncoding("EUC-KR"), characterEncoding("Shift_JIS"));
    EXPECT_FALSE(characterEncoding("x-no-such-charset").has_value());
    EXPECT_FALSE(characterEncoding("").has_value());
    EXPECT_FALSE(characterEncoding(" \t").has_value());
}

TEST(TextEncodingDecode, DecodesStrictlyOrNotAtAll) {
    EXPECT_EQ(characterEncoding("EUC-KR")->decode(eucKrKorean), "한국어");
    EXPECT_EQ(characterEncoding("Shift_JIS")->decode(shiftJisJapanese), "日本語");
    EXPECT_EQ(characterEncoding("GB18030")->decode(gb18030Text), "中文😀ÿ");
    EXPECT_EQ(characterEncoding("UTF-8")->decode(""), "");
    // A lead byte cut off at the end, a byte no table maps, and bad UTF-8.
    EXPECT_EQ(characterEncoding("EUC-KR")->decode(eucKrKorean + "\xC7"), std::nullopt);
    EXPECT_EQ(characterEncoding("EUC-KR")->decode("\xC7\x41"), std::nullopt);
    EXPECT_EQ(characterEncoding("UTF-8")->decode("caf\xE9"), std::nullopt);
    EXPECT_EQ(characterEncoding("UTF-8")->decode("\xED\xA0\x80"), std::nullopt);  // a surrogate
    EXPECT_EQ(characterEncoding("UTF-8")->decode("\xC0\xAF"), std::nullopt);      // overlong "/"
    EXPECT_EQ(characterEncoding("ISO-8859-1")->decode("caf\xE9"), "café");
}

TEST(DecodeHTML, PrefersTheHeaderThenTheMetaTagThenStrictUtf8) {
    EXPECT_EQ(decodeHTML(eucKrKorean, "text/html; charset=\"EUC-KR\"", 1024), "한국어");

    const std::string meta =
        "<meta http-equiv=\"Content-Type\" content=\"text/html; "
        "charset=Shift_JIS\">";
    const std::string early = pageWithMetaAt(0, meta, shiftJisJapanese);
    EXPECT_EQ(decodeHTML(early, "text/html; charset=x-unknown-charset", 1024),
              pageWithMetaAt(0, meta, "日本語"));
    // A header charset in which the bytes do not decode gives way to the tag.
    EXPECT_EQ(decodeHTML(early, "text/html; charset=utf-8", 1024),
              pageWithMetaAt(0, meta, "日本語"));
    EXPECT_EQ(decodeHTML(pageWithMetaAt(2000, meta, shiftJisJapanese), "text/html", 1024),
              std::nullopt);

    // The header wins over a tag that names another charset.
    EXPECT_EQ(
        decodeHTML("<meta charset=shift_jis>" + eucKrKorean, "text/html; charset=euc-kr", 1024),
        "<meta charset=shift_jis>한국어");
    EXPECT_EQ(decodeHTML("<p>naïve</p>", std::nullopt, 1024), "<p>naïve</p>");
    // No single-byte fallback for a page that names nothing.
    EXPECT_EQ(decodeHTML("<p>caf\xE9</p>", "text/html", 1024), std::nullopt);
}

}  // namespace
}  // namespace wayfen
