#include "wayfen/readability_extractor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/text.h"

namespace wayfen {
namespace {

using ::testing::ElementsAre;
using ::testing::Optional;

// Prose of exactly `length` characters, with no blank at either end.
std::string prose(std::size_t length) {
    static const std::string source =
        "Tidal flats store carbon in thick mud that builds up slowly over the centuries ";
    std::string out;
    while (out.size() < length) out += source;
    out.resize(length);
    if (out.back() == ' ') out.back() = 'q';
    return out;
}

std::string page(const std::string& body) {
    return "<!DOCTYPE html><html><head><title>t</title></head><body>" + body + "</body></html>";
}

std::vector<std::string> extracted(const std::string& html) {
    return ReadabilityExtractor::extract(html).value_or(std::vector<std::string>{});
}

TEST(ReadabilityExtractor, KeepsArticleParagraphsAndDropsPageChrome) {
    const std::string lead =
        "The harbour authority confirmed on Tuesday that the northern pier will close for "
        "repairs until the end of March.";
    const std::string detail =
        "Engineers found corrosion in three of the steel piles during a routine inspection, "
        "the authority said in a statement.";
    const std::string html = page(
        "<header class=\"site-header\"><p>Subscribe to our morning briefing for the latest "
        "local stories every day</p></header>"
        "<nav><ul><li><a href=\"/\">Home</a></li></ul><p class=\"menu-text\">Browse all "
        "sections of the newspaper here today</p></nav>"
        "<div id=\"cookie-consent\"><p>We use cookies to improve your experience on this site, "
        "please accept them.</p></div>"
        "<main><article class=\"story\"><h1>Pier to close</h1>"
        "<p class=\"byline\">By A. Reporter, harbour correspondent, 3 March 2026</p>"
        "<p>" +
        lead +
        "</p>"
        "<figure><figcaption>The pier</figcaption></figure>"
        "<p>  " +
        detail +
        "\n  </p>"
        "<aside class=\"related-links\"><p>Related: other piers that closed in the region "
        "over the last ten years</p></aside>"
        "</article></main>"
        "<section id=\"comments\"><p>Great article, I walk on that pier every single morning "
        "with my dog.</p></section>"
        "<div class=\"sidebar\"><p>Most read stories of the week in the harbour district and "
        "beyond</p></div>"
        "<footer class=\"site-footer\"><p>Copyright 2026 The Harbour Gazette. All rights reserved "
        "worldwide.</p>"
        "</footer>");
    EXPECT_THAT(ReadabilityExtractor::extract(html), Optional(ElementsAre(lead, detail)));
}

TEST(ReadabilityExtractor, AncestorLabelsMatchAnywhereAndOneNegativeOutranksAnyPositive) {
    const std::string text = prose(60);
    const auto inside = [&](const std::string& open, const std::string& close) {
        return extracted(page(open + "<p>" + text + "</p>" + close));
    };
    // Substrings count: no word boundaries in the labels.
    EXPECT_TRUE(inside("<div class=\"user-comments\">", "</div>").empty());
    EXPECT_TRUE(inside("<div class=\"shared-article\">", "</div>").empty());
    EXPECT_TRUE(inside("<div class=\"main-nav\">", "</div>").empty());
    EXPECT_TRUE(inside("<div id=\"disqus_thread\">", "</div>").empty());
    EXPECT_TRUE(inside("<div class=\"TAGSBOX\">", "</div>").empty());
    // A negative label far above a positive one still rejects.
    EXPECT_TRUE(inside("<div class=\"newsletter\"><div><article class=\"post\"><div>",
                       "</div></article></div></div>")
                    .empty());
    // The class and the id are read together.
    EXPECT_TRUE(inside("<div class=\"story\" id=\"promo-box\">", "</div>").empty());
    // The walk starts at the paragraph itself.
    EXPECT_TRUE(extracted(page("<p class=\"byline\">" + text + "</p>")).empty());
    // ... and stops at body, whose own class is never read.
    EXPECT_THAT(extracted("<html class=\"menu\"><body class=\"modal-open\"><p>" + text +
                          "</p></body></html>"),
                ElementsAre(text));
    EXPECT_THAT(inside("<div class=\"article-body\"><div class=\"text\">", "</div></div>"),
                ElementsAre(text));
}

TEST(ReadabilityExtractor, PositiveAncestorLowersTheMinimumLengthInCharacters) {
    const std::string thirty = prose(30);
    EXPECT_THAT(extracted(page("<article class=\"post\"><p>" + thirty + "</p></article>")),
                ElementsAre(thirty));
    EXPECT_TRUE(extracted(page("<div><p>" + thirty + "</p></div>")).empty());
    // Boundaries: 25 below a positive label, 40 elsewhere.
    EXPECT_THAT(extracted(page("<div id=\"content\"><p>" + prose(25) + "</p><p>" + prose(24) +
                               "</p></div>")),
                ElementsAre(prose(25)));
    EXPECT_THAT(extracted(page("<p>" + prose(40) + "</p><p>" + prose(39) + "</p>")),
                ElementsAre(prose(40)));
    // The threshold is not scaled by script: 39 Hangul syllables fall short, and a letter with a
    // combining accent is one character although it is three bytes.
    std::string hangul;
    for (int i = 0; i < 39; ++i) hangul += "한";
    EXPECT_TRUE(extracted(page("<p>" + hangul + "</p>")).empty());
    EXPECT_THAT(extracted(page("<p>" + hangul + "국</p>")), ElementsAre(hangul + "국"));
    std::string accented;
    for (int i = 0; i < 39; ++i) accented += "e\xCC\x81";
    EXPECT_TRUE(extracted(page("<p>" + accented + "</p>")).empty());
}

TEST(ReadabilityExtractor, LinkHeavyParagraphsAreDropped) {
    const auto withLink = [](std::size_t linkLength) {
        return "<p>" + prose(60 - linkLength) + "<a href=\"/x\">" + std::string(linkLength, 'L') +
               "</a></p>";
    };
    EXPECT_TRUE(extracted(page(withLink(31))).empty());
    EXPECT_EQ(extracted(page(withLink(30))).size(), 1u);  // exactly one half passes
    // The anchor text counts as written: its blanks are not collapsed, while the paragraph's
    // are. 20 letters and 12 blanks of link against 60 characters of collapsed text.
    const std::string spaced = "<p>" + prose(40) + "<a href=\"/y\">" + std::string(10, 'L') +
                               std::string(12, ' ') + std::string(10, 'L') + "</a></p>";
    EXPECT_TRUE(extracted(page(spaced)).empty());
    // Several anchors add up.
    const std::string twoLinks = "<p><a href=\"/a\">" + std::string(16, 'A') + "</a>" + prose(28) +
                                 "<a href=\"/b\">" + std::string(16, 'B') + "</a></p>";
    EXPECT_TRUE(extracted(page(twoLinks)).empty());
}

TEST(ReadabilityExtractor, TagSoupKeepsItsTextAndHiddenContentAddsNothing) {
    const std::string first = prose(45);
    const std::string second = prose(50);
    // Unclosed paragraphs, upper-case tags and unknown elements.
    EXPECT_THAT(extracted("<html><body><div class=entry><P>" + first + "<p><x-widgetless>" +
                          second + "</x-widgetless></div></body></html>"),
                ElementsAre(first, second));
    // No doctype, no html, no body at all.
    EXPECT_THAT(extracted("<p>" + first), ElementsAre(first));
    // Scripts, styles, noscript and template inside a paragraph contribute nothing; text nodes
    // are joined with nothing between them, then blanks are collapsed.
    const std::string busy =
        "<p>Start of the <b>paragraph</b><script>var a = '<p>no</p>';"
        "</script> text<style>p{color:red}</style><noscript>enable "
        "scripts</noscript><template>hidden template</template> goes on "
        "well past forty characters\n\n\t here.</p>";
    EXPECT_THAT(extracted(page(busy)),
                ElementsAre("Start of the paragraph text goes on well past forty "
                            "characters here."));
    // A paragraph that is itself inside hidden content has no text at all.
    EXPECT_THAT(extracted(page("<noscript><p>" + first + "</p></noscript><template><p>" + first +
                               "</p></template><p>" + second + "</p>")),
                ElementsAre(second));
}

TEST(ReadabilityExtractor, EntitiesAndNonAsciiTextDecodeToUtf8) {
    const std::string html = page(
        "<p>Caf&eacute; cr&egrave;me &amp;amp; the &lt;b&gt; tag &#8212; &#xAC00;&#xB098; and "
        "&nbsp;&nbsp; non&#8209;breaking</p>");
    EXPECT_THAT(extracted(html), ElementsAre("Café crème &amp; the <b> tag — 가나 and "
                                             "non\u2011breaking"));
    // A stale meta charset must not re-decode text that is already UTF-8.
    const std::string korean =
        "서울시는 올해 여름 폭염에 대비해 무더위 쉼터를 두 배로 늘리고 "
        "야간 개방 시간도 연장한다고 밝혔다";
    const std::string declared =
        "<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=Shift_JIS\">"
        "<meta charset=\"euc-kr\"></head><body><p>" +
        korean + "</p></body></html>";
    EXPECT_THAT(extracted(declared), ElementsAre(korean));
}

TEST(ReadabilityExtractor, PagesWithoutQualifyingParagraphsGiveNothing) {
    EXPECT_EQ(ReadabilityExtractor::extract(""), std::nullopt);
    EXPECT_EQ(ReadabilityExtractor::extract(page("<div>" + prose(200) + "</div>")), std::nullopt);
    EXPECT_EQ(ReadabilityExtractor::extract(page("<p>short</p><p>   </p><p></p>")), std::nullopt);
    EXPECT_EQ(ReadabilityExtractor::extract(std::string("\x00\x01\xff\xfe binary", 11)),
              std::nullopt);
}

}  // namespace
}  // namespace wayfen
