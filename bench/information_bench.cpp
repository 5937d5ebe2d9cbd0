#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "answers/weather_capability.h"
#include "pipeline/currency_fast_path.h"
#include "pipeline/document_summarize_fast_path.h"
#include "pipeline/translate_fast_path.h"
#include "pipeline/weather_fast_path.h"
#include "platform/posix/document_files.h"
#include "support/information_services_stand_in.h"
#include "support/pdf_writer.h"

namespace {

using namespace nuvrel;

template <class Match>
void matchEach(benchmark::State& state, Match match, std::initializer_list<const char*> queries) {
    for (auto _ : state) {
        for (const char* query : queries) benchmark::DoNotOptimize(match(query));
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t(queries.size()));
}

// Per query: a hit, a Korean hit and a miss of each fast path.
void BM_WeatherFastPath(benchmark::State& state) {
    matchEach(state, pipeline::WeatherFastPath::match,
              {"seoul weather?", "부산 날씨가 어때요", "open the calendar"});
}
BENCHMARK(BM_WeatherFastPath);

void BM_CurrencyFastPath(benchmark::State& state) {
    matchEach(state, pipeline::CurrencyFastPath::match,
              {"100 dollars to yen", "3만원 달러로", "open the calendar"});
}
BENCHMARK(BM_CurrencyFastPath);

void BM_TranslateFastPath(benchmark::State& state) {
    matchEach(state, pipeline::TranslateFastPath::match,
              {"translate good morning to Korean", "안녕하세요 번역해줘", "open the calendar"});
}
BENCHMARK(BM_TranslateFastPath);

void BM_DocumentSummarizeFastPath(benchmark::State& state) {
    matchEach(state, pipeline::DocumentSummarizeFastPath::match,
              {"summarize report.pdf", "보고서.pdf를 요약해줘", "open the calendar"});
}
BENCHMARK(BM_DocumentSummarizeFastPath);

// Geocoding and forecast from loopback stand-ins: two requests and their decoding.
void BM_WeatherAnswerFromLoopback(benchmark::State& state) {
    test::InformationServicesStandIn services;
    answers::WeatherCapability weather;
    weather.services = services.services();
    for (auto _ : state) benchmark::DoNotOptimize(weather.execute("Seoul"));
}
BENCHMARK(BM_WeatherAnswerFromLoopback)->Unit(benchmark::kMillisecond);

void BM_PdfText100Pages(benchmark::State& state) {
    const auto path = std::filesystem::temp_directory_path() / "nuvrel-bench-100-pages.pdf";
    std::vector<test::PdfPage> pages(100);
    for (auto& page : pages) {
        for (int line = 0; line < 40; ++line)
            page.push_back(
                {72, 740.0 - 16 * line,
                 "Line " + std::to_string(line) + " of a long report on quarterly sales"});
    }
    test::writePdf(path, pages);
    for (auto _ : state) benchmark::DoNotOptimize(platform::liveExtractText(path.string()));
    std::filesystem::remove(path);
}
BENCHMARK(BM_PdfText100Pages)->Unit(benchmark::kMillisecond);

}  // namespace
