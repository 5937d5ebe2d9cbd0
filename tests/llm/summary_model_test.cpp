#include "llm/summary_model.h"

#include <gtest/gtest.h>

#include <set>

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

}  // namespace
}  // namespace nuvrel::llm
