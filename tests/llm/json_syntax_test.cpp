#include "llm/json_syntax.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>
#include <string>

using namespace std::string_literals;

namespace nuvrel::llm {
namespace {

using JsonSyntax::isWellFormed;

TEST(JsonSyntax, AcceptsExactlyWhatTheParserAccepts) {
    const struct {
        std::string text;
        bool wellFormed;
    } cases[] = {
        {"{}", true},
        {" \t\r\n[ ] \n", true},
        {"\xEF\xBB\xBF{}", true},  // a byte-order mark, only at the very start
        {" \xEF\xBB\xBF{}", false},
        {"\xEF\xBB{}", false},
        {"0", true},
        {"-0.0e+0", true},
        {"\"x\"", true},
        {"true", true},
        {"nul", false},
        {"True", false},
        {"", false},
        {"  ", false},
        {"{} {}", false},
        {"[1,]", false},
        {"[,1]", false},
        {"{\"a\":1,}", false},
        {"{\"a\" 1}", false},
        {"{1:2}", false},
        {"{\"a\":}", false},
        {"[1 2]", false},
        {"[1,[2,{\"b\":[null]}]]", true},
        {"[1,[2,{\"b\":[null]]}]", false},
        {"01", false},
        {"-", false},
        {"1.", false},
        {".5", false},
        {"1e", false},
        {"1e+", false},
        {"+1", false},
        {"0x10", false},
        {"1E400", false},  // beyond a double
        {"-1e400", false},
        {"1e-400", true},  // underflows to zero, which is fine
        {"0.0001e-320", true},
        {"1.7976931348623157e308", true},
        {"1.7976931348623159e308", false},
        {std::string(400, '9'), false},  // read as a double as well
        {"18446744073709551616", true},
        {"\"\\u00e9\\n\\\\\\/\\\"\"", true},
        {"\"\\x\"", false},
        {"\"\\u12G4\"", false},
        {"\"\\ud83d\\ude00\"", true},  // a surrogate pair
        {"\"\\ud83d\"", false},        // a lone high surrogate
        {"\"\\ude00\"", false},        // a lone low surrogate
        {"\"\\ud83d\\u0041\"", false},
        {"\"tab\there\"", false},  // control characters must be escaped
        {"\"\x7F\"", true},
        {"\"caf\xC3\xA9 \xED\x95\x9C \xF0\x9F\x98\x80\"", true},
        {"\"\xC3\"", false},
        {"\"\xC0\xAF\"", false},  // overlong
        {"\"\xE0\x80\xAF\"", false},
        {"\"\xED\xA0\x80\"", false},      // an encoded surrogate
        {"\"\xF4\x90\x80\x80\"", false},  // beyond U+10FFFF
        {"\"\xF0\x8F\xBF\xBF\"", false},
        {"\"\xFF\"", false},
        {"\"unterminated", false},
        {"[\"\xC3\xA9\"] \xC3\xA9", false},  // non-ASCII outside a string
    };
    for (const auto& c : cases) {
        EXPECT_EQ(nlohmann::json::accept(c.text), c.wellFormed) << "corpus entry: " << c.text;
        EXPECT_EQ(isWellFormed(c.text), c.wellFormed) << c.text;
    }

    // The parser takes a NUL byte for the end of its input; the strict reading refuses it,
    // and a caller that asks the parser on a "no" still gets the parser's verdict.
    EXPECT_FALSE(isWellFormed("{}\0"s));
    EXPECT_FALSE(isWellFormed("[\"a\0\"]"s));

    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    EXPECT_TRUE(isWellFormed(deep));
    EXPECT_FALSE(isWellFormed(deep.substr(1)));
}

TEST(JsonSyntax, AgreesWithTheParserOnDamagedDocuments) {
    const std::string seeds[] = {
        R"({"type":"object","properties":{"intent":{"type":"string","enum":["a","b"]},)"
        R"("confidence":{"type":"number","minimum":0,"maximum":1}},"required":["intent"]})",
        "{\"model\":\"m\",\"temperature\":0.1,\"max_tokens\":-768,\"x\":[true,false,null,1e-7,"
        "2.5E+3],\"s\":\"\\\"q\\\" \\\\ \\/ \\b\\f\\n\\r\\t \\u00e9\\ud83d\\ude00 caf\xC3\xA9 "
        "\xED\x95\x9C\xEA\xB5\xAD \xF0\x9F\x98\x80\"}",
    };
    const std::string alphabet = "{}[],:\" \\/0123456789.-+eEtrufalsn\x7F\xC3\xA9\xED\xF0\x80\xBF";
    std::mt19937 random(20240601);
    int mismatches = 0;
    for (int round = 0; round < 6000; ++round) {
        std::string text = seeds[round % 2];
        const int edits = 1 + static_cast<int>(random() % 3);
        for (int e = 0; e < edits; ++e) {
            const std::size_t at = random() % (text.size() + 1);
            // No NUL: the parser reads it as the end of the input (see above).
            const char byte = random() % 4 == 0 ? static_cast<char>(1 + random() % 255)
                                                : alphabet[random() % alphabet.size()];
            switch (random() % 4) {
                case 0:
                    if (at < text.size()) text[at] = byte;
                    break;
                case 1:
                    text.insert(at, 1, byte);
                    break;
                case 2:
                    if (at < text.size()) text.erase(at, 1);
                    break;
                default:
                    text.resize(at);
                    break;
            }
        }
        if (isWellFormed(text) != nlohmann::json::accept(text) && ++mismatches <= 5) {
            ADD_FAILURE() << "disagreement on: " << text;
        }
    }
    EXPECT_EQ(mismatches, 0);
}

}  // namespace
}  // namespace nuvrel::llm
