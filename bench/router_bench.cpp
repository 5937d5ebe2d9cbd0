#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "base/text.h"
#include "llm/llm_backend.h"
#include "pipeline/chain_gate.h"
#include "pipeline/router.h"

namespace {

using namespace nuvrel;

// A model that answers at once, with the chatter small models like to wrap around the object,
// so that only the router's own work is measured.
class InstantBackend : public llm::LLMBackend {
public:
    using LLMBackend::complete;
    std::string complete(std::string_view, std::string_view, std::string_view) override {
        return R"(Sure! {"intent":"web.search","confidence":0.87,"slots":{"query":"최신 맥북 칩셋 \"M4\" {benchmarks}","want_answer":true}} Hope that helps.)";
    }
};

std::string query300() {
    const std::string piece =
        "최신 맥북에 들어가는 칩셋이 뭔지 알려주고 성능 비교도 찾아봐 "
        "what chip is in the newest MacBook and how fast is it ";
    std::string text;
    while (base::text::count(text) < 300) text += piece;
    return base::text::prefix(text, 300);
}

void BM_RouterOwnWork(benchmark::State& state) {
    const pipeline::Router router{std::make_shared<InstantBackend>(), state.range(0) != 0,
                                  state.range(1) != 0};
    const std::string query = query300();
    for (auto _ : state) benchmark::DoNotOptimize(router.routeDetailed(query));
}
BENCHMARK(BM_RouterOwnWork)->ArgNames({"interim", "appLaunch"})->Args({0, 0})->Args({1, 1});

void BM_ChainGateOrdinaryKorean(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            pipeline::ChainGate::mightBeChain("내일 오후 3시에 회의 일정 추가해줘"));
    }
}
BENCHMARK(BM_ChainGateOrdinaryKorean);

void BM_ChainGateOrdinaryEnglish(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            pipeline::ChainGate::mightBeChain("What's the weather like in Seoul tomorrow?"));
    }
}
BENCHMARK(BM_ChainGateOrdinaryEnglish);

void BM_ChainGate300NoChain(benchmark::State& state) {
    std::string text;
    while (base::text::count(text) < 300)
        text += "find the quarterly report from last week 지난주 보고서 ";
    for (auto _ : state) benchmark::DoNotOptimize(pipeline::ChainGate::mightBeChain(text));
}
BENCHMARK(BM_ChainGate300NoChain);

}  // namespace
