#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "core/capability.h"
#include "core/capability_registry.h"
#include "llm/llm_backend.h"
#include "pipeline/pipeline.h"

namespace {

using namespace nuvrel;

// A router model that answers at once, so that only the pipeline's own work is measured.
class InstantFinderBackend : public llm::LLMBackend {
public:
    using LLMBackend::complete;
    std::string complete(std::string_view, std::string_view, std::string_view) override {
        return R"({"intent":"finder.search","confidence":0.92,"slots":)"
               R"({"keyword":"quarterly report","file_type":"pdf","date_range":"last_week"}})";
    }
};

class InstantFinder : public core::Capability {
public:
    core::IntentID intentID() const override { return core::IntentID::finderSearch; }
    core::ActionPlan plan(const core::Slots&, std::string_view) const override {
        return core::FinderQuery{};
    }
    core::CapabilityResult execute(const core::ActionPlan&) override {
        return core::CapabilityResult::Files{{core::FileHit{
            "quarterly report.pdf", "/home/u/Documents/quarterly report.pdf", "2024-05-02"}}};
    }
};

pipeline::Pipeline benchPipeline() {
    pipeline::Pipeline made;
    made.router.backend = std::make_shared<InstantFinderBackend>();
    made.registry = core::CapabilityRegistry(
        std::vector<std::shared_ptr<core::Capability>>{std::make_shared<InstantFinder>()});
    return made;
}

void runQuery(benchmark::State& state, const char* query) {
    const pipeline::Pipeline pipeline = benchPipeline();
    if (pipeline.run(query).kind() != core::PipelineOutcome::Kind::result) {
        state.SkipWithError("the query did not end in a result");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(pipeline.run(query));
}

void BM_PipelineFastPathHit(benchmark::State& state, const char* query) {
    runQuery(state, query);
}
BENCHMARK_CAPTURE(BM_PipelineFastPathHit, arithmetic, "2+2");
BENCHMARK_CAPTURE(BM_PipelineFastPathHit, percentage, "15% of 200");
BENCHMARK_CAPTURE(BM_PipelineFastPathHit, unitConversion, "5 kg in lbs");
BENCHMARK_CAPTURE(BM_PipelineFastPathHit, help, "help");

// Misses every fast path, then router, validation and one capability call.
void BM_PipelineFullMissToFinder(benchmark::State& state) {
    runQuery(state, "find the quarterly report pdf I saved last week");
}
BENCHMARK(BM_PipelineFullMissToFinder);

}  // namespace
