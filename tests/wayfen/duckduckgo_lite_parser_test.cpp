#include "wayfen/duckduckgo_lite_parser.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "wayfen/searxng_transport.h"

namespace wayfen {
namespace {

using DuckDuckGoLiteParser::Result;
namespace Parser = DuckDuckGoLiteParser;

std::string anchor(const std::string& href, const std::string& title) {
    return "<a rel=\"nofollow\" href='" + href + "' class='result-link'>" + title + "</a>\n";
}

std::string redirect(const std::string& encodedDestination) {
    return "https://duckduckgo.com/l/?uddg=" + encodedDestination + "&amp;rut=0";
}

std::string snippetCell(const std::string& text) {
    return "<td class='result-snippet'>" + text + "</td>\n";
}

std::string hostSpan(const std::string& text) {
    return "<span class='link-text'>" + text + "</span>\n";
}

std::string result(const std::string& title, const std::string& host) {
    return anchor(redirect("https%3A%2F%2F" + host + "%2F"), title) + snippetCell(title + " text") +
           hostSpan(host);
}

TEST(DuckDuckGoLiteParser, ReserializedResultsReadBackUnchanged) {
    const std::vector<SearXNGResultItem> items{
        {"AT&T <b>bold</b> \"quoted\" 'single' &lt;kept&gt;",
         "https://example.com/a?q=1&lang=ko&name=it's", "x < y & y > z, \"so\" &amp; on"},
        {"서울 날씨", "https://ko.wikipedia.org/wiki/서울?action=view#top", "맑음, 영하 3도"},
        {"Root page", "https://www.example.org/", ""},
        {"Spaced path", "https://host.example/a%20b/c", "one"},
    };

    const auto results = Parser::parse(SearXNGTransport::reserialize(items), 10);

    ASSERT_EQ(results.size(), 4u);
    EXPECT_EQ(results[0],
              (Result{items[0].title, items[0].snippet, "example.com/a", items[0].url}));
    EXPECT_EQ(results[1],
              (Result{"서울 날씨", "맑음, 영하 3도", "ko.wikipedia.org/wiki/서울", items[1].url}));
    EXPECT_EQ(results[2], (Result{"Root page", "", "www.example.org", items[2].url}));
    EXPECT_EQ(results[3].host, "host.example/a b/c");
    EXPECT_EQ(results[3].url, items[3].url);

    // A URL with a byte that is no UTF-8 comes back as nothing, never as a shorter URL or as
    // markup of its own.
    const auto broken = Parser::parse(
        SearXNGTransport::reserialize({{"x", "https://h.example/p?a=1&\x81mp;b=2", ""},
                                       {"y", "https://h.example/\xff' class='result-link'>Z", ""}}),
        10);
    EXPECT_TRUE(broken.empty()) << broken.front().url;
}

TEST(DuckDuckGoLiteParser, ReserializeWritesTheWireShape) {
    EXPECT_EQ(SearXNGTransport::reserialize({}), "");
    EXPECT_EQ(SearXNGTransport::reserialize({{"A & B", "https://ex.com/p?x=1", "s > t"}}),
              "<a rel=\"nofollow\" href='https://duckduckgo.com/l/?uddg="
              "https%3A%2F%2Fex.com%2Fp%3Fx%3D1&amp;rut=0' class='result-link'>A &amp; B</a>\n"
              "<td class='result-snippet'>s &gt; t</td>\n"
              "<span class='link-text'>ex.com/p</span>");

    // Letters of any script stay unencoded; "-._~" too; a URL that does not parse has no host.
    const std::string two = SearXNGTransport::reserialize(
        {{"One", "https://例え.jp/ü-._~", ""}, {"Two", "not a url", ""}});
    EXPECT_NE(two.find("uddg=https%3A%2F%2F例え.jp%2Fü-._~&amp;"), std::string::npos) << two;
    EXPECT_NE(two.find("</span>\n<a rel="), std::string::npos) << two;
    EXPECT_NE(two.find("uddg=not%20a%20url&amp;"), std::string::npos) << two;
    EXPECT_NE(two.find("<span class='link-text'></span>"), std::string::npos) << two;
}

TEST(DuckDuckGoLiteParser, LimitCountsOnlyKeptResults) {
    std::string page = anchor("https://example.com/plain", "Plain link") +
                       result("Stock", "www.shutterstock.com") +
                       anchor(redirect("https%3A%2F%2Fe.com%2F"), "<b> </b>");
    for (int i = 1; i <= 6; ++i)
        page += result("Kept " + std::to_string(i), "site" + std::to_string(i) + ".org");

    const auto results = Parser::parse(page, 3);

    ASSERT_EQ(results.size(), 3u);
    EXPECT_EQ(results[0].title, "Kept 1");
    EXPECT_EQ(results[2].title, "Kept 3");
    EXPECT_EQ(results[2].url, "https://site3.org/");
    EXPECT_TRUE(Parser::parse(page, 0).empty());
}

TEST(DuckDuckGoLiteParser, FieldsComeOnlyFromTheirOwnBlock) {
    const std::string page = anchor(redirect("https%3A%2F%2Fa.com%2F"), "Bare") +
                             anchor(redirect("https%3A%2F%2Fb.com%2F"), "Full") +
                             snippetCell("  Neighbour\n  snippet  <b>bold</b>  ") +
                             hostSpan(" b.com ");

    const auto results = Parser::parse(page, 5);

    ASSERT_EQ(results.size(), 2u);
    EXPECT_EQ(results[0], (Result{"Bare", "", "", "https://a.com/"}));
    EXPECT_EQ(results[1], (Result{"Full", "Neighbour snippet bold", "b.com", "https://b.com/"}));
}

TEST(DuckDuckGoLiteParser, ReadsTheRedirectsUddgValueOnly) {
    const std::string page =
        anchor(
            "https://duckduckgo.com/l/"
            "?kh=-1&amp;&amp;uddg=https%3A%2F%2Fx.com%2F%3Fa%3D1&amp;rut=2",
            "Later parameter") +
        anchor("https://duckduckgo.com/l/?uddg=https%3A%2F%2Fbad.com%2F%zz", "Bad encoding") +
        anchor("https://duckduckgo.com/l/?uddg=%C3%28", "Not UTF-8") +
        anchor("https://duckduckgo.com/l/?kh=1", "No uddg") +
        anchor("https://duckduckgo.com/l/uddg=x", "No query") +
        "<A CLASS=\"Result-Link\" "
        "HREF=\"//duckduckgo.com/l/?uddg=https%3A%2F%2Fy.com\">\n<b>Upper</b>\ncase</A>";

    const auto results = Parser::parse(page, 10);

    ASSERT_EQ(results.size(), 2u);
    EXPECT_EQ(results[0].url, "https://x.com/?a=1");
    EXPECT_EQ(results[1].url, "https://y.com");
    EXPECT_EQ(results[1].title, "Upper\ncase");
}

TEST(DuckDuckGoLiteParser, DecodesEntitiesOnce) {
    EXPECT_EQ(Parser::decodeEntities("&amp;lt;b&amp;gt;"), "&lt;b&gt;");
    EXPECT_EQ(
        Parser::decodeEntities("a&nbsp;&quot;b&quot; &#x27;c&#39; &apos;d&apos; &lt;e&gt; &amp;"),
        "a \"b\" 'c' 'd' <e> &");
    EXPECT_EQ(Parser::decodeEntities("&amp;amp;"), "&amp;");

    const auto results = Parser::parse(anchor(redirect("https%3A%2F%2Fa.com"), "1 &amp;lt; 2") +
                                           snippetCell("&lt;b&gt;not a tag&lt;/b&gt;"),
                                       1);
    ASSERT_EQ(results.size(), 1u);
    EXPECT_EQ(results[0].title, "1 &lt; 2");
    EXPECT_EQ(results[0].snippet, "<b>not a tag</b>");
}

TEST(DuckDuckGoLiteParser, ChallengeNeedsAllThreeMarkers) {
    const std::string form = R"(<form id="challenge-form" action="/d">)";
    const std::string modal = R"(<div data-testid="anomaly-modal">)";
    const std::string script = R"(<script src="/dist/anomaly.js"></script>)";

    EXPECT_TRUE(Parser::isBotChallenge(script + modal + form));
    EXPECT_FALSE(Parser::isBotChallenge(form));
    EXPECT_FALSE(Parser::isBotChallenge(form + modal));
    EXPECT_FALSE(Parser::isBotChallenge(modal + script));
    EXPECT_FALSE(Parser::isBotChallenge(form + script));
    EXPECT_FALSE(Parser::isBotChallenge(R"(<form id='challenge-form'>)" + modal + script));
    EXPECT_TRUE(Parser::parse(script + modal + form, 3).empty());
}

TEST(DuckDuckGoLiteParser, JunkHostsAreTheTableAndItsSubdomains) {
    EXPECT_TRUE(Parser::isJunkHost("shutterstock.com"));
    EXPECT_TRUE(Parser::isJunkHost("WWW.GettyImages.com"));
    EXPECT_TRUE(Parser::isJunkHost("media.istockphoto.com"));
    EXPECT_TRUE(Parser::isJunkHost("stock.adobe.com"));
    EXPECT_FALSE(Parser::isJunkHost("adobe.com"));
    EXPECT_FALSE(Parser::isJunkHost("notshutterstock.com"));
    EXPECT_FALSE(Parser::isJunkHost("shutterstock.com/image/123"));
    EXPECT_FALSE(Parser::isJunkHost("shutterstock.com.example.org"));
    EXPECT_FALSE(Parser::isJunkHost(""));

    // The parser tests the host line as written, path and all.
    const auto results = Parser::parse(result("Junk", "alamy.com") +
                                           anchor(redirect("https%3A%2F%2Falamy.com%2Fx"), "Path") +
                                           hostSpan("alamy.com/x"),
                                       5);
    ASSERT_EQ(results.size(), 1u);
    EXPECT_EQ(results[0].title, "Path");
}

}  // namespace
}  // namespace wayfen
