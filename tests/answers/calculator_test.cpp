#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "answers/calculator_fast_path.h"

namespace nuvrel::answers {
namespace {

using CalculatorFastPath::match;

// Every query must give exactly this display line.
void expectDisplays(const std::vector<std::pair<std::string, std::string>>& cases) {
    for (const auto& [query, display] : cases) {
        const std::optional<CalcResult> result = match(query);
        ASSERT_TRUE(result.has_value()) << query;
        EXPECT_EQ(result->display, display) << query;
    }
}

void expectNothing(const std::vector<std::string>& queries) {
    for (const std::string& query : queries) {
        const std::optional<CalcResult> result = match(query);
        EXPECT_FALSE(result.has_value()) << query << " gave " << result->display;
    }
}

TEST(Calculator, SumsShowAsTypedWithFillersAndEdgePunctuationGone) {
    expectDisplays({
        {"2+2", "2 + 2 = 4"},
        {"2+2=", "2 + 2 = 4"},
        {"2+2?", "2 + 2 = 4"},
        {"calc 2+2", "2 + 2 = 4"},
        {"what is 2+2", "2 + 2 = 4"},
        {"What's 2+2?", "2 + 2 = 4"},
        {"CALCULATE 2+2", "2 + 2 = 4"},
        {"3+4 계산해주세요", "3 + 4 = 7"},
        {"3+4 계산 좀", "3 + 4 = 7"},
        {"3*5 얼마입니까?", "3 × 5 = 15"},
        {"= 2+2 =\n", "2 + 2 = 4"},
        {"2*(3+4)", "2 × (3 + 4) = 14"},
        {"((1+2))*3", "((1 + 2)) × 3 = 9"},
        {"007+1", "007 + 1 = 8"},
        {"1 / 3", "1 ÷ 3 = 0.333333"},
        {"0.1+0.2", "0.1 + 0.2 = 0.3"},
        {"1.+.5", "1. + .5 = 1.5"},
        {"-5+2", "- 5 + 2 = -3"},
        {"-5", "- 5 = -5"},
        {"-0", "- 0 = 0"},
        {"2++2", "2 + + 2 = 4"},
        {"10^15", "10 ^ 15 = 1000000000000000"},
        {"10^15+0.5", "10 ^ 15 + 0.5 = 1000000000000000.5"},
        {"2024-01-15+1", "2024 - 01 - 15 + 1 = 2009"},
        {"3 / 4", "3 ÷ 4 = 0.75"},
        // Only the final value must be finite.
        {"1/(10^400)", "1 ÷ (10 ^ 400) = 0"},
        {"5 % 10^400", "5 % 10 ^ 400 = 5"},
        {"1/2^2000", "1 ÷ 2 ^ 2000 = 0"},
    });
}

TEST(Calculator, PrecedenceAssociativityAndUnaryMinus) {
    expectDisplays({
        {"2+3*4", "2 + 3 × 4 = 14"},
        {"(2+3)*4", "(2 + 3) × 4 = 20"},
        {"10 - 4-3", "10 - 4 - 3 = 3"},
        {"100 / 10 / 5", "100 ÷ 10 ÷ 5 = 2"},
        {"2*3^2", "2 × 3 ^ 2 = 18"},
        {"2^3^2", "2 ^ 3 ^ 2 = 512"},
        {"-2^2", "- 2 ^ 2 = 4"},
        {"2^-1", "2 ^ - 1 = 0.5"},
        {"- -3", "- - 3 = 3"},
        {"2^0.5", "2 ^ 0.5 = 1.414214"},
        {"7%3", "7 % 3 = 1"},
        {"-7%3", "- 7 % 3 = -1"},
        {"7%-3", "7 % - 3 = 1"},
        {"1+7%3*2", "1 + 7 % 3 × 2 = 3"},
    });
}

TEST(Calculator, RefusesWhatIsNotPlainArithmetic) {
    expectNothing({
        "",           "   ",          "=?",
        "5",          "(5)",          "5%",
        "2(3)",       "2+",           "(2+3",
        "2+3)",       "2 = 2+2",      "1.2.3+1",
        ". + 1",      "2 × 3",        "3 + 4는 얼마야",
        "calcium",    "what is love", "10/0",
        "5%0",        "0/0",          "10/(1-1)",
        "(-8)^(1/3)", "10^400",       "10^400-10^400",
        "２+２",
    });
}

TEST(Calculator, RefusesDatesPhoneNumbersAndFractionsWrittenWithoutBlanks) {
    expectNothing({"010-1234-5678", "2024-01-15", "3/4", "1/3", "+82-10-1234", "24/7", "9-5",
                   "10-4-3", "100/10/5"});
    EXPECT_TRUE(CalculatorFastPath::looksLikeNonMathNumericIdiom(" 3/4 "));
    EXPECT_TRUE(CalculatorFastPath::looksLikeNonMathNumericIdiom("+82-10-1234"));
    EXPECT_FALSE(CalculatorFastPath::looksLikeNonMathNumericIdiom("3 / 4"));
    EXPECT_FALSE(CalculatorFastPath::looksLikeNonMathNumericIdiom("-5"));
    EXPECT_FALSE(CalculatorFastPath::looksLikeNonMathNumericIdiom("3-"));
    EXPECT_FALSE(CalculatorFastPath::looksLikeNonMathNumericIdiom("2024-01-15+1"));
}

TEST(Calculator, PercentagesOfAmountsWithAnOptionalBase) {
    expectDisplays({
        {"15% of 200", "15% of 200 = 30"},
        {"what is 15% of 200?", "15% of 200 = 30"},
        {"15 % OF 200", "15% of 200 = 30"},
        {"15%of 200", "15% of 200 = 30"},
        {"15% of 200 얼마야", "15% of 200 = 30"},
        {"100 + 15% of 200", "100 + 15% of 200 = 130"},
        {"100 - 15% of 200", "100 - 15% of 200 = 70"},
        {"-100+15% of 200", "-100 + 15% of 200 = -70"},
        {"12.5% of 80", "12.5% of 80 = 10"},
        {"33% of 10", "33% of 10 = 3.3"},
        {"1% of 123.456", "1% of 123.456 = 1.23"},
        {"2.5% of 10", "2.5% of 10 = 0.25"},
        {"１５% of ２００", "１５% of ２００ = 30"},
    });
    // A base that overflows leaves the share on its own.
    expectDisplays({{std::string(400, '9') + " + 15% of 200", "15% of 200 = 30"}});
    expectNothing({"15% of200", "15% off 200", "15% de 200", "of 200", "15% of -200"});
}

TEST(Calculator, ConvertsUnitsWithSymbolsAndPlurals) {
    expectDisplays({
        {"5 kg in lbs", "5 kg = 11.02 lb"},
        {"5 KG to LBS?", "5 kg = 11.02 lb"},
        {"5 miles to km", "5 miles = 8.05 km"},
        {"1 mile km", "1 mile = 1.61 km"},
        {"10 m in ft", "10 m = 32.81 ft"},
        {"1 foot in inches", "1 ft = 12 in"},
        {"12 inches to cm", "12 in = 30.48 cm"},
        {"2 tons in kg", "2 tons = 2000 kg"},
        {"2000 kg in tonnes", "2000 kg = 2 tons"},
        {"1000 kg to ton", "1000 kg = 1 ton"},
        {"1.00001 miles in m", "1.00001 mile = 1609.36 m"},
        {"1 oz in g", "1 oz = 28.35 g"},
        {"1 gb mb", "1 GB = 1024 MB"},
        {"1 TB in GB", "1 TB = 1024 GB"},
        {"2048 kb to mb", "2048 KB = 2 MB"},
        {"100 °c to °f", "100 °C = 212 °F"},
        {"212 fahrenheit in celsius", "212 °F = 100 °C"},
        {"30℃ ℉", "30 °C = 86 °F"},
        {"\u3000 2 km to m ", "2 km = 2000 m"},
        {"20 celsius in celsius", "20 °C = 20 °C"},
        {"５ kg in lbs", "５ kg = 11.02 lb"},
        {"5\u3000kg\u3000to\u3000lbs", "5 kg = 11.02 lb"},
    });
    expectNothing({"10 km in kg", "1 in to cm", "100 c to f", "5 kg in °c", "-40 c to f", "5 miles",
                   "5 kg in lbs please", "5 bytes in kb", "3 킬로 in m",
                   std::string(400, '9') + " tb in kb"});
}

TEST(Calculator, KoreanUnitsAndParticles) {
    expectDisplays({
        {"10km를 마일로", "10 km = 6.21 miles"},
        {"3 피트를 센티로", "3 ft = 91.44 cm"},
        {"500 그램을 파운드로", "500 g = 1.1 lb"},
        {"98.6 화씨를 섭씨로", "98.6 °F = 37 °C"},
        {"1 테라바이트 기가바이트로?", "1 TB = 1024 GB"},
        {"2 킬로그램을 온스으로", "2 kg = 70.55 oz"},
    });
}

TEST(Calculator, SurvivesHostileInput) {
    const std::string deepOpen(100000, '('), deepClose(100000, ')');
    std::string longSum = "1";
    for (int i = 0; i < 20000; ++i) longSum += "+1";
    expectNothing({
        std::string("\xff") + "2+2", "2+2\xff", "15% of 200\xe8\xa8", "5 kg\xc0 in lbs", "\xe8",
        deepOpen + "1" + deepClose, std::string(100000, '-') + "1",
        "1" + std::string(400, '0') + "+1",
        "2^2^2^2^2^2",  // 2^65536 overflows
    });
    const std::optional<CalcResult> sum = match(longSum);
    ASSERT_TRUE(sum.has_value());
    EXPECT_TRUE(sum->display.ends_with(" = 20001"));
    // Moderate nesting stays within the guard.
    expectDisplays({{std::string(50, '(') + "1+1" + std::string(50, ')'),
                     std::string(50, '(') + "1 + 1" + std::string(50, ')') + " = 2"}});
}

}  // namespace
}  // namespace nuvrel::answers
