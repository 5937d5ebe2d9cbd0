#include "llm/summary_model.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <stdexcept>
#include <thread>

namespace nuvrel::llm {
namespace {

namespace fs = std::filesystem;
using Decision = SummaryModelDecision;

TEST(SummaryModelPlanner, PicksTheFirstInstalledCandidateUnlessTheRouterServes) {
    const auto candidates = SummaryModelPlanner::summaryModelCandidatePaths("/m", "/i");
    const struct {
        const char* router;
        std::set<fs::path> onDisk;
        Decision expected;
    } cases[] = {
        {"kestrune-mini-router-ep6-q4_k_m.gguf",
         {"/m/LFM2.5-2.6B-Q4_K_M.gguf"},
         {Decision::ReuseRouterSameFile{}}},
        {"qwen2.5-1.5b-instruct-q4_k_m.gguf",
         {"/i/qwen2.5-1.5b-instruct-q4_k_m.gguf"},
         {Decision::ReuseRouterSameFile{}}},
        {"router.gguf",
         {"/m/Qwen3-1.7B-Q4_K_M.gguf", "/m/LFM2.5-2.6B-Q4_K_M.gguf"},
         {Decision::Dedicated{"/m/LFM2.5-2.6B-Q4_K_M.gguf"}}},
        {"router.gguf",
         {"/i/qwen2.5-1.5b-instruct-q4_k_m.gguf"},
         {Decision::Dedicated{"/i/qwen2.5-1.5b-instruct-q4_k_m.gguf"}}},
        {"router.gguf", {}, {Decision::ReuseRouterNoDedicatedModel{}}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(SummaryModelPlanner::decide(
                      c.router, candidates,
                      [&](const fs::path& path) { return c.onDisk.contains(path); }),
                  c.expected)
            << c.router;
    }
}

class CountingManager : public ServerManaging {
public:
    void ensureRunning() override { ++started; }
    void stop() override { ++stopped; }
    std::atomic<int> started = 0, stopped = 0;
};

class Failing : public LLMBackend {
public:
    using LLMBackend::complete;
    std::string complete(std::string_view, std::string_view, std::string_view) override {
        throw std::runtime_error("model failed");
    }
};

TEST(SummaryModelBackend, EveryCallStartsTheServerAndArmsTheIdleStopEvenWhenItFails) {
    auto manager = std::make_shared<CountingManager>();
    std::atomic<int> slept = 0;
    {
        SummaryModelBackend backend(manager, std::make_shared<Failing>(), 30.0, "f.gguf",
                                    [&](std::chrono::nanoseconds wait) {
                                        EXPECT_EQ(wait, std::chrono::seconds(30));
                                        ++slept;
                                    });
        EXPECT_THROW(backend.complete("s", "u", "{}"), std::runtime_error);
        // The idle task runs on its own thread; the destructor below joins it.
        for (int i = 0; i < 200 && manager->stopped == 0; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        EXPECT_EQ(backend.modelFileName(), "f.gguf");
    }
    EXPECT_EQ(manager->started, 1);
    EXPECT_EQ(slept, 1);
    EXPECT_EQ(manager->stopped, 1);

    // Without an interval the server stays up.
    SummaryModelBackend keeper(manager, std::make_shared<Failing>(), std::nullopt, std::nullopt,
                               [&](std::chrono::nanoseconds) { ++slept; });
    EXPECT_THROW(keeper.complete("s", "u", "{}"), std::runtime_error);
    EXPECT_EQ(slept, 1);
}

}  // namespace
}  // namespace nuvrel::llm
