#include <benchmark/benchmark.h>

#include "answers/calculator_fast_path.h"

namespace {

using nuvrel::answers::CalculatorFastPath::match;

void BM_CalculatorArithmetic(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(match("2+2"));
}
BENCHMARK(BM_CalculatorArithmetic);

void BM_CalculatorPercentage(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(match("15% of 200"));
}
BENCHMARK(BM_CalculatorPercentage);

void BM_CalculatorUnitConversion(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(match("5 kg in lbs"));
}
BENCHMARK(BM_CalculatorUnitConversion);

void BM_CalculatorKoreanUnitConversion(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(match("10km를 마일로"));
}
BENCHMARK(BM_CalculatorKoreanUnitConversion);

void BM_CalculatorMiss(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(match("weather in Seoul tomorrow"));
}
BENCHMARK(BM_CalculatorMiss);

void BM_CalculatorKoreanMiss(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(match("내일 오후 3시에 회의 일정 추가해줘"));
}
BENCHMARK(BM_CalculatorKoreanMiss);

}  // namespace
