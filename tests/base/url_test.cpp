#include "base/url.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace nuvrel::base {
namespace {

Url url(std::string_view text) {
    auto parsed = Url::parse(text);
    if (!parsed) throw std::runtime_error("test URL did not parse: " + std::string(text));
    return *parsed;
}

TEST(Url, ParsesAndNormalisesItsParts) {
    const Url full = url("HTTP://Example.COM:8080/a/../b/./c?x=1#frag");
    EXPECT_EQ(full.scheme(), "http");
    EXPECT_EQ(full.host(), "example.com");
    EXPECT_EQ(full.port(), 8080);
    EXPECT_EQ(full.effectivePort(), 8080);
    EXPECT_EQ(full.path(), "/b/c");
    EXPECT_EQ(full.query(), "x=1");
    EXPECT_EQ(full.fragment(), "frag");
    EXPECT_EQ(full.text(), "http://example.com:8080/b/c?x=1#frag");

    const Url bare = url("https://H.com");
    EXPECT_EQ(bare.path(), "/");
    EXPECT_EQ(bare.port(), std::nullopt);
    EXPECT_EQ(bare.effectivePort(), 443);
    EXPECT_EQ(bare.query(), std::nullopt);
    EXPECT_EQ(bare.fragment(), std::nullopt);
    EXPECT_EQ(bare.text(), "https://h.com/");

    // A written default port and an empty query are the same address as none.
    EXPECT_EQ(url("https://h.com:443/x?"), url("https://h.com/x"));
    EXPECT_EQ(url("https://h.com:443/x").port(), std::nullopt);
    EXPECT_FALSE(url("https://h.com/x") == url("https://h.com/y"));

    // Spaces and raw UTF-8 behind the host are sent percent-encoded, as browsers do.
    const Url loose = url("http://a.b/p q/\xC3\xBC?q=\xC3\xBC x");
    EXPECT_EQ(loose.path(), "/p%20q/%C3%BC");
    EXPECT_EQ(loose.query(), "q=%C3%BC%20x");

    const Url file = url("file:///tmp/a b");
    EXPECT_EQ(file.host(), "");
    EXPECT_EQ(file.path(), "/tmp/a%20b");
    const Url custom = url("myapp://Thing/x");
    EXPECT_EQ(custom.host(), "thing");
    EXPECT_EQ(custom.effectivePort(), std::nullopt);
    // The root of the file scheme, whose path libcurl leaves out.
    EXPECT_EQ(url("file:///").text(), "file:///");
}

TEST(Url, RefusesRelativeReferencesAndGarbage) {
    for (const char* text :
         {"", "not a url", "/path", "//example.com/x", "example.com", "http://",
          "http://exa mple.com/", "http://[::1", "http://h.com:99999/", "http://h.com:0/",
          "http:a.b", "http:/a.b/", "http://a.b/x\ny", "mailto:a@b.c", " http://a.b/", "://a.b/",
          "a/b://c.d/", "file:https:///", "1http://a.b/", "http://0%7f.1/",
          // A drive letter, also one that a removed dot segment leaves behind.
          "file:///./p://x", "file:///a/../p:#x"}) {
        EXPECT_EQ(Url::parse(text), std::nullopt) << text;
    }
    // A NUL byte ends no text early: the whole text is the URL or there is none.
    using namespace std::string_view_literals;
    for (const auto text : {"http://a.b/x\0y"sv, "http://a.b\0.c.d/"sv, "file:///e\0tc/passwd"sv}) {
        EXPECT_EQ(Url::parse(text), std::nullopt) << text.substr(0, text.find('\0'));
    }
    EXPECT_EQ(Url::parse("http://h/x")->resolve("\0\0tc/passwd"sv), std::nullopt);
    EXPECT_TRUE(Url().empty());
}

TEST(Url, HostsAreGivenInTheFormAnAddressCheckNeeds) {
    const Url loopback6 = url("http://[::1]:8080/x");
    EXPECT_EQ(loopback6.host(), "::1");
    EXPECT_EQ(loopback6.port(), 8080);
    EXPECT_EQ(loopback6.text(), "http://[::1]:8080/x");

    const Url linkLocal = url("http://[FE80::1%25eth0]/");
    EXPECT_EQ(linkLocal.host(), "fe80::1");
    EXPECT_EQ(linkLocal.text(), "http://[fe80::1%25eth0]/");

    // Other spellings of an IPv4 address are what a connection would reach.
    EXPECT_EQ(url("http://0x7f.1/").host(), "127.0.0.1");
    EXPECT_EQ(url("http://2130706433/").host(), "127.0.0.1");
    EXPECT_EQ(url("http://213070643%33/").host(), "127.0.0.1");
    EXPECT_EQ(url("http://LOCALHOST./").host(), "localhost");
}

TEST(Url, QueryItemsAreEncodedAndReplaceTheQuery) {
    const Url base = url("https://api.example.com/search?old=1#top");
    const std::vector<std::pair<std::string, std::string>> items = {
        {"q", "a b&c=d+e"}, {"lang", "\xED\x95\x9C"}, {"empty", ""}, {"x y", "~._-"}};
    const Url built = base.withQueryItems(items);
    EXPECT_EQ(built.query(), "q=a%20b%26c%3Dd%2Be&lang=%ED%95%9C&empty=&x%20y=~._-");
    EXPECT_EQ(built.text(),
              "https://api.example.com/search?q=a%20b%26c%3Dd%2Be&lang=%ED%95%9C&empty=&x%20y=~._-"
              "#top");
    EXPECT_EQ(percentDecode("a%20b%26c%3Dd%2Be"), "a b&c=d+e");

    EXPECT_EQ(base.withQueryItems({}).text(), "https://api.example.com/search#top");
}

TEST(Url, AppendingPathPutsExactlyOneSlashAndEncodesTheSegment) {
    EXPECT_EQ(url("http://h/api").appendingPath("v1").path(), "/api/v1");
    EXPECT_EQ(url("http://h/api/").appendingPath("v1").path(), "/api/v1");
    EXPECT_EQ(url("http://h").appendingPath("health").text(), "http://h/health");
    EXPECT_EQ(url("http://h:8765").appendingPath("v1").appendingPath("chat").text(),
              "http://h:8765/v1/chat");

    const Url title = url("https://w.org/page/summary/?redirect=1").appendingPath("AC/DC live?");
    EXPECT_EQ(title.path(), "/page/summary/AC%2FDC%20live%3F");
    EXPECT_EQ(title.query(), "redirect=1");
}

TEST(Url, ResolvesReferencesAsRfc3986Does) {
    const Url base = url("http://a/b/c/d;p?q");
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"g", "http://a/b/c/g"},
        {"./g", "http://a/b/c/g"},
        {"g/", "http://a/b/c/g/"},
        {"/g", "http://a/g"},
        {"//g", "http://g/"},
        {"?y", "http://a/b/c/d;p?y"},
        {"g?y", "http://a/b/c/g?y"},
        {"#s", "http://a/b/c/d;p?q#s"},
        {"g?y#s", "http://a/b/c/g?y#s"},
        {"", "http://a/b/c/d;p?q"},
        {".", "http://a/b/c/"},
        {"..", "http://a/b/"},
        {"../g", "http://a/b/g"},
        {"../../g", "http://a/g"},
        {"../../../g", "http://a/g"},
        {"/./g", "http://a/g"},
        {"..g", "http://a/b/c/..g"},
        {"g;x=1/../y", "http://a/b/c/y"},
        {"g?y/./x", "http://a/b/c/g?y/./x"},
        {"g#s/../x", "http://a/b/c/g#s/../x"},
        {"https://Other.org/x", "https://other.org/x"},
        {"//other:81/y", "http://other:81/y"},
        {"../new place", "http://a/b/new%20place"},
    };
    for (const auto& [reference, expected] : cases) {
        const auto resolved = base.resolve(reference);
        ASSERT_TRUE(resolved.has_value()) << reference;
        EXPECT_EQ(resolved->text(), expected) << reference;
    }

    // The base's own fragment never carries over.
    EXPECT_EQ(url("http://h/x/y#frag").resolve("z")->text(), "http://h/x/z");
    EXPECT_EQ(base.resolve("http://"), std::nullopt);
    EXPECT_EQ(Url().resolve("g"), std::nullopt);
}

TEST(PercentCoding, EncodesAllButUnreservedAndDecodesOnlyWellFormedEscapes) {
    EXPECT_EQ(percentEncode("a b+c/~%"), "a%20b%2Bc%2F~%25");
    EXPECT_EQ(percentDecode("a%20b%2bc"), "a b+c");
    EXPECT_EQ(percentDecode("1+1"), "1+1");
    EXPECT_EQ(percentDecode("100%"), "100%");
    EXPECT_EQ(percentDecode("%zz%4"), "%zz%4");

    std::string everyByte;
    for (int byte = 0; byte < 256; ++byte) everyByte += static_cast<char>(byte);
    const std::string encoded = percentEncode(everyByte);
    EXPECT_EQ(encoded.find_first_not_of(
                  "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~%"),
              std::string::npos);
    EXPECT_EQ(percentDecode(encoded), everyByte);
}

}  // namespace
}  // namespace nuvrel::base
