#include <benchmark/benchmark.h>

#include <memory>
#include <stdexcept>
#include <vector>

#include "core/capability.h"
#include "core/capability_registry.h"
#include "pipeline/validator.h"

namespace {

using namespace nuvrel;

class IntentOnlyCapability : public core::Capability {
public:
    explicit IntentOnlyCapability(core::IntentID intent) : intent_(intent) {}
    core::IntentID intentID() const override { return intent_; }
    core::ActionPlan plan(const core::Slots&, std::string_view) const override {
        throw std::logic_error("not used");
    }
    core::CapabilityResult execute(const core::ActionPlan&) override {
        throw std::logic_error("not used");
    }

private:
    core::IntentID intent_;
};

const core::CapabilityRegistry& registry() {
    static const core::CapabilityRegistry value = [] {
        std::vector<std::shared_ptr<core::Capability>> capabilities;
        for (core::IntentID intent : core::allIntentIDs) {
            capabilities.push_back(std::make_shared<IntentOnlyCapability>(intent));
        }
        return core::CapabilityRegistry(capabilities);
    }();
    return value;
}

void runValidation(benchmark::State& state, const core::RoutedIntent& routed,
                   std::string_view query) {
    for (auto _ : state)
        benchmark::DoNotOptimize(pipeline::Validator::validate(routed, query, registry()));
}

// All four slots grounded: every file-type, date and keyword rule runs.
void BM_ValidateFinderSearchKorean(benchmark::State& state) {
    const core::RoutedIntent routed{core::IntentID::finderSearch,
                                    {{"keyword", "보고서"},
                                     {"file_type", "hwp"},
                                     {"location", "downloads"},
                                     {"date_range", "last_week"}},
                                    0.9};
    runValidation(state, routed, "지난주에 다운로드 폴더에 받은 한글 보고서 파일 찾아줘");
}
BENCHMARK(BM_ValidateFinderSearchKorean);

void BM_ValidateFinderSearchEnglish(benchmark::State& state) {
    const core::RoutedIntent routed{core::IntentID::finderSearch,
                                    {{"keyword", "budget files"},
                                     {"file_type", "xlsx"},
                                     {"location", "documents"},
                                     {"date_range", "last_month"}},
                                    0.9};
    runValidation(state, routed, "find the budget files in Documents from last month, excel only");
}
BENCHMARK(BM_ValidateFinderSearchEnglish);

void BM_ValidateMessageSend(benchmark::State& state) {
    const core::RoutedIntent routed{
        core::IntentID::messageSend,
        {{"recipient", "엄마한테"}, {"body", "오늘 늦어요"}, {"channel", "sms"}},
        0.9};
    runValidation(state, routed, "엄마한테 오늘 늦는다고 문자 보내줘");
}
BENCHMARK(BM_ValidateMessageSend);

}  // namespace
