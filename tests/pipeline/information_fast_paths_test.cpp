// The fast paths of weather, currency, translation and document summary, case by case.

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "pipeline/currency_fast_path.h"
#include "pipeline/document_summarize_fast_path.h"
#include "pipeline/translate_fast_path.h"
#include "pipeline/weather_fast_path.h"

namespace nuvrel::pipeline {
namespace {

using answers::CurrencyCode;
using answers::CurrencyConversionRequest;
using answers::TranslateCandidate;

TEST(CurrencyFastPath, ReadsAmountSourceAndTarget) {
    const struct {
        const char* query;
        std::optional<CurrencyConversionRequest> expected;
    } cases[] = {
        {"$100", CurrencyConversionRequest{100, CurrencyCode::usd, CurrencyCode::krw}},
        {"100 dollars to won",
         CurrencyConversionRequest{100, CurrencyCode::usd, CurrencyCode::krw}},
        {"100 dollars to yen",
         CurrencyConversionRequest{100, CurrencyCode::usd, CurrencyCode::jpy}},
        {"1,000엔", CurrencyConversionRequest{1000, CurrencyCode::jpy, CurrencyCode::krw}},
        {"3만원 달러로", CurrencyConversionRequest{30000, CurrencyCode::krw, CurrencyCode::usd}},
        {"100원", CurrencyConversionRequest{100, CurrencyCode::krw, CurrencyCode::usd}},
        {"2억 원을 엔화로", CurrencyConversionRequest{2e8, CurrencyCode::krw, CurrencyCode::usd}},
        {"100 euro to euro", CurrencyConversionRequest{100, CurrencyCode::eur, CurrencyCode::krw}},
        {"100 EUR in pounds", CurrencyConversionRequest{100, CurrencyCode::eur, CurrencyCode::gbp}},
        {"€5 to ¥", CurrencyConversionRequest{5, CurrencyCode::eur, CurrencyCode::jpy}},
        {"12.5 usd", CurrencyConversionRequest{12.5, CurrencyCode::usd, CurrencyCode::krw}},
        {"100 dollar-store items", std::nullopt},
        {"we won the game", std::nullopt},
        {"translate 5 dollars", std::nullopt},
        {"1,2,3", std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(CurrencyFastPath::match(c.query), c.expected) << c.query;
}

TEST(WeatherFastPath, ReadsPlaceOrHere) {
    const auto named = WeatherTarget::named;
    const WeatherTarget here = WeatherTarget::currentLocation();
    const struct {
        const char* query;
        std::optional<WeatherTarget> expected;
    } cases[] = {
        {"seoul weather", named("seoul")},
        {"Weather in New York?", named("New York")},
        {"  weather in Paris.  ", named("Paris")},
        {"today weather", here},
        {"weather", std::nullopt},
        {"weatherproof jackets", std::nullopt},
        {"sweather", std::nullopt},
        {"서울 날씨", named("서울")},
        {"부산 날씨가 어때요?", named("부산")},
        {"도쿄 날씨를 알려줘", named("도쿄")},
        {"오늘의 날씨", here},
        {"날씨", here},
        {"지금 날씨 어때", here},
        {"날씨 좋다", std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(WeatherFastPath::match(c.query), c.expected) << c.query;
}

TEST(TranslateFastPath, ReadsTextAndTarget) {
    const struct {
        const char* query;
        std::optional<TranslateCandidate> expected;
    } cases[] = {
        {"translate good morning to Korean", TranslateCandidate{"good morning", "ko"}},
        {"Translate to JA: see you", TranslateCandidate{"see you", "ja"}},
        {"chinese translation of thank you", TranslateCandidate{"thank you", "zh"}},
        {"영어로 번역: 일본어로 번역해줘", TranslateCandidate{"일본어로 번역해줘", "en"}},
        {"안녕하세요 중국어로 번역해 주세요", TranslateCandidate{"안녕하세요", "zh"}},
        {"안녕하세요 번역해줘", TranslateCandidate{"안녕하세요", "en"}},
        {"good night 번역 좀 해줘", TranslateCandidate{"good night", "ko"}},
        {"사과 번역", std::nullopt},
        {"おはようを翻訳して", TranslateCandidate{"おはよう", "ko"}},
        {"早上好翻译一下", TranslateCandidate{"早上好", "ko"}},
        {"translate this to klingon", std::nullopt},
        {"translate", std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(TranslateFastPath::match(c.query), c.expected) << c.query;
    // Three Hangul of ten alphanumerics is exactly 0.3: not above, so the text is not Korean.
    EXPECT_EQ(TranslateFastPath::defaultTarget("가나다abcdefg"), "ko");
    EXPECT_EQ(TranslateFastPath::defaultTarget("가나다abcdef"), "en");
    EXPECT_EQ(TranslateFastPath::defaultTarget("가 12345678"), "ko");
}

TEST(DocumentSummarizeFastPath, ReadsTheFileName) {
    const struct {
        const char* query;
        std::optional<std::string> expected;
    } cases[] = {
        {"summarize report.pdf", "report.pdf"}, {"SUMMARIZE Q3 Plan.md", "Q3 Plan.md"},
        {"summary of notes.txt", "notes.txt"},  {"summarize", std::nullopt},
        {"summarize ", std::nullopt},           {"보고서.pdf를 요약해줘", "보고서.pdf"},
        {"회의록 요약해줄래", "회의록"},        {"요약해줘", std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(DocumentSummarizeFastPath::match(c.query), c.expected) << c.query;
}

}  // namespace
}  // namespace nuvrel::pipeline
