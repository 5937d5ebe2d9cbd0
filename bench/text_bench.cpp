#include <benchmark/benchmark.h>

#include <string>

#include "base/text.h"
#include "pipeline/help_fast_path.h"

namespace {

using namespace nuvrel;

// About 300 characters of what the query box sees: four scripts, an emoji with a skin tone,
// a ZWJ family and a flag.
std::string mixedText() {
    const std::string piece =
        "Open the Quarterly Report.pdf 그리고 내일 오후 3시에 회의 일정 추가해줘 "
        "明日の天気は？ 帮我打开设置 👍🏽 👨‍👩‍👧 🇰🇷 ";
    std::string text;
    while (base::text::count(text) < 300) text += piece;
    return base::text::prefix(text, 300);
}

void BM_HelpMatchEnglish(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(pipeline::HelpFastPath::match("What can you do?"));
}
BENCHMARK(BM_HelpMatchEnglish);

void BM_HelpMatchKorean(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(pipeline::HelpFastPath::match("너 뭐 할 수 있어?"));
}
BENCHMARK(BM_HelpMatchKorean);

void BM_HelpMatchKoreanMiss(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(
            pipeline::HelpFastPath::match("내일 오후 3시에 회의 일정 추가해줘"));
}
BENCHMARK(BM_HelpMatchKoreanMiss);

void BM_CountMixed300(benchmark::State& state) {
    const std::string text = mixedText();
    for (auto _ : state) benchmark::DoNotOptimize(base::text::count(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_CountMixed300);

void BM_CountMixed300NoEmoji(benchmark::State& state) {
    std::string text = mixedText();
    for (const char* emoji : {"👍🏽", "👨‍👩‍👧", "🇰🇷"})
        text = base::text::replaceAll(text, emoji, "x");
    for (auto _ : state) benchmark::DoNotOptimize(base::text::count(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_CountMixed300NoEmoji);

void BM_LowerMixed300(benchmark::State& state) {
    const std::string text = mixedText();
    for (auto _ : state) benchmark::DoNotOptimize(base::text::lower(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_LowerMixed300);

}  // namespace
