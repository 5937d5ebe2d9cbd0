#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "answers/arithmetic.h"
#include "answers/calculator_fast_path.h"
#include "base/text.h"

namespace nuvrel::answers {
namespace {

using Kind = ArithmeticToken::Kind;
namespace Calc = CalculatorFastPath;

TEST(ArithmeticTokenizer, SplitsNumbersAndOperatorsAndRejectsMalformedRuns) {
    const auto tokens = ArithmeticTokenizer::tokenize(" 12.5*( 3 -.5)%2^1 ");
    ASSERT_TRUE(tokens.has_value());
    const std::vector<ArithmeticToken> expected = {
        ArithmeticToken::number(12.5, "12.5"), ArithmeticToken::op(Kind::multiply),
        ArithmeticToken::op(Kind::lparen),     ArithmeticToken::number(3, "3"),
        ArithmeticToken::op(Kind::minus),      ArithmeticToken::number(0.5, ".5"),
        ArithmeticToken::op(Kind::rparen),     ArithmeticToken::op(Kind::modulo),
        ArithmeticToken::number(2, "2"),       ArithmeticToken::op(Kind::power),
        ArithmeticToken::number(1, "1"),
    };
    EXPECT_EQ(*tokens, expected);
    EXPECT_EQ(ArithmeticTokenizer::prettyPrint(*tokens), "12.5 × (3 - .5) % 2 ^ 1");
    EXPECT_TRUE(ArithmeticTokenizer::tokenize("")->empty());
    for (const char* text : {"1.2.3", ".", "2=3", "2?3", "1e5", "1,000", "２", "2\xff"}) {
        EXPECT_FALSE(ArithmeticTokenizer::tokenize(text).has_value()) << text;
    }
}

TEST(ArithmeticParser, StopsWhereTheGrammarEndsAndFailsOnZeroDivisors) {
    const auto tokens = *ArithmeticTokenizer::tokenize("2(3)");
    ArithmeticParser parser(tokens);
    EXPECT_EQ(parser.parseExpression(), 2.0);
    EXPECT_EQ(parser.position(), 1u);
    EXPECT_FALSE(parser.atEnd());

    const auto evaluate = [](const char* text) {
        const auto tokens = *ArithmeticTokenizer::tokenize(text);
        return ArithmeticParser(tokens).parseExpression();
    };
    EXPECT_EQ(evaluate("5%2.5"), 0.0);  // a zero result is fine, a zero divisor is not
    EXPECT_FALSE(evaluate("1/(2-2)").has_value());
    EXPECT_FALSE(evaluate("1%0.0").has_value());
    EXPECT_EQ(evaluate("0*5"), 0.0);
    EXPECT_FALSE(evaluate(")").has_value());
}

TEST(ArithmeticParser, NestingBeyondTheLimitFailsInsteadOfRecursingOn) {
    const auto nested = [](int depth) {
        return std::string(depth, '(') + "1" + std::string(depth, ')');
    };
    const auto evaluate = [](const std::string& text) {
        const auto tokens = *ArithmeticTokenizer::tokenize(text);
        return ArithmeticParser(tokens).parseExpression();
    };
    EXPECT_EQ(evaluate(nested(ArithmeticParser::maxDepth)), 1.0);
    EXPECT_FALSE(evaluate(nested(ArithmeticParser::maxDepth + 1)).has_value());
    EXPECT_EQ(evaluate(std::string(ArithmeticParser::maxDepth, '-') + "1"), 1.0);
    std::string powers = "1";
    for (int i = 0; i <= ArithmeticParser::maxDepth; ++i) powers += "^1";
    EXPECT_FALSE(evaluate(powers).has_value());
}

TEST(FormatNumber, WholeValuesAsIntegersOthersTrimmed) {
    EXPECT_EQ(Calc::formatNumber(-0.0, 6), "0");
    EXPECT_EQ(Calc::formatNumber(-3, 6), "-3");
    EXPECT_EQ(Calc::formatNumber(999999999999999.0, 2), "999999999999999");
    EXPECT_EQ(Calc::formatNumber(1e15, 6), "1000000000000000");
    EXPECT_EQ(Calc::formatNumber(1e20, 2), "100000000000000000000");
    EXPECT_EQ(Calc::formatNumber(-1e300, 2).size(), 302u);
    EXPECT_EQ(Calc::formatNumber(8.04672, 2), "8.05");
    EXPECT_EQ(Calc::formatNumber(2.5, 2), "2.5");
    EXPECT_EQ(Calc::formatNumber(0.001, 2), "0");
    EXPECT_EQ(Calc::formatNumber(-2.0 / 3, 6), "-0.666667");
    EXPECT_EQ(Calc::formatNumber(20.4, 0), "20");
}

TEST(UnitAliases, LongestFirstWithTableOrderAmongEqualLengths) {
    const auto& aliases = Calc::unitAliases();
    ASSERT_EQ(aliases.size(), 51u);
    EXPECT_TRUE(std::is_sorted(aliases.begin(), aliases.end(), [](const auto& a, const auto& b) {
        return base::text::count(a.alias) > base::text::count(b.alias);
    }));
    const auto indexOf = [&](std::string_view alias) {
        return std::find_if(aliases.begin(), aliases.end(),
                            [&](const auto& a) { return a.alias == alias; }) -
               aliases.begin();
    };
    EXPECT_LT(indexOf("miles"), indexOf("m"));
    EXPECT_LT(indexOf("tons"), indexOf("ton"));
    EXPECT_LT(indexOf("miles"), indexOf("tonne"));  // equal lengths keep table order
    EXPECT_LT(indexOf("tonne"), indexOf("테라바이트"));
    EXPECT_LT(indexOf("ft"), indexOf("kg"));
    EXPECT_TRUE(Calc::unitAlternationPattern().starts_with("fahrenheit|celsius|"));
    EXPECT_TRUE(Calc::unitAlternationPattern().ends_with("|m|톤|g|℃|℉"));
}

TEST(UnitAliases, ResolveIgnoresCaseAndKnowsNoConnectivesOrBareLetters) {
    const auto mile = Calc::resolveUnitAlias("MILES");
    ASSERT_TRUE(mile.has_value());
    EXPECT_EQ(mile->canonicalSymbol, "mile");
    EXPECT_EQ(mile->kind, Calc::UnitKind::linear("length", 1609.344));
    EXPECT_EQ(Calc::resolveUnitAlias("°C")->kind, Calc::UnitKind::celsius());
    EXPECT_EQ(Calc::resolveUnitAlias("℉")->canonicalSymbol, "°F");
    EXPECT_EQ(Calc::resolveUnitAlias("Gb")->canonicalSymbol, "GB");
    for (const char* text : {"in", "c", "f", "byte", "b", "킬로", "mi", ""}) {
        EXPECT_FALSE(Calc::resolveUnitAlias(text).has_value()) << text;
    }
}

TEST(UnitConversion, ConvertsWithinACategoryAndBetweenTemperatureScalesOnly) {
    using Calc::UnitKind;
    EXPECT_DOUBLE_EQ(*Calc::convert(1, UnitKind::linear("data", 1024), UnitKind::linear("data", 1)),
                     1024);
    EXPECT_FALSE(Calc::convert(1, UnitKind::linear("length", 1), UnitKind::linear("weight", 1)));
    EXPECT_DOUBLE_EQ(*Calc::convert(-40, UnitKind::celsius(), UnitKind::fahrenheit()), -40);
    EXPECT_DOUBLE_EQ(*Calc::convert(50, UnitKind::fahrenheit(), UnitKind::celsius()), 10);
    EXPECT_DOUBLE_EQ(*Calc::convert(7, UnitKind::fahrenheit(), UnitKind::fahrenheit()), 7);
    EXPECT_FALSE(Calc::convert(1, UnitKind::celsius(), UnitKind::linear("length", 1)));
    EXPECT_FALSE(Calc::convert(1, UnitKind::linear("length", 1), UnitKind::fahrenheit()));
    EXPECT_FALSE(Calc::convert(1e300, UnitKind::linear("data", 1e12), UnitKind::linear("data", 1)));
}

TEST(CalcFillers, RemovedCaseInsensitivelyAnywhereLongFormsFirst) {
    EXPECT_EQ(Calc::removeFillers("계산해주세요"), " ");
    EXPECT_EQ(Calc::removeFillers("Calculate"), " ");
    EXPECT_EQ(Calc::removeFillers("WHAT IS 2"), "  2");
    EXPECT_EQ(Calc::removeFillers("calcium"), " ium");
    EXPECT_EQ(Calc::removeFillers("결과는 값은 얼마예요"), "     ");
    EXPECT_EQ(Calc::replaceAllIgnoringCase("what'ſ", "what's", "-"), "-");  // ſ folds to s
    EXPECT_EQ(Calc::replaceAllIgnoringCase("a\xff"
                                           "bB",
                                           "b", "x"),
              "a\xff"
              "xx");
    EXPECT_EQ(Calc::replaceAllIgnoringCase("aaa", "aa", "a"), "aa");  // no rescanning
    EXPECT_EQ(Calc::replaceAllIgnoringCase("abc", "", "x"), "abc");
}

}  // namespace
}  // namespace nuvrel::answers
