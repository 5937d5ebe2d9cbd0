#include "core/capability_registry.h"

#include <gtest/gtest.h>

namespace nuvrel::core {
namespace {

// A capability that answers with its own label, so that a test can tell instances apart.
class LabelledCapability : public Capability {
public:
    LabelledCapability(IntentID intent, std::string label)
        : intent_(intent), label_(std::move(label)) {}

    IntentID intentID() const override { return intent_; }
    ActionPlan plan(const Slots&, std::string_view query) const override {
        return WebQuery{std::string(query), true};
    }
    CapabilityResult execute(const ActionPlan&) override {
        return CapabilityResult::Calculation{label_};
    }

private:
    IntentID intent_;
    std::string label_;
};

std::string labelOf(const std::shared_ptr<Capability>& capability) {
    auto result = capability->execute(WebQuery{});
    return result.get<CapabilityResult::Calculation>()->display;
}

TEST(CapabilityRegistry, EmptyRegistryAnswersNothingForEveryIntent) {
    CapabilityRegistry registry(std::vector<std::shared_ptr<Capability>>{});
    for (IntentID intent : allIntentIDs) EXPECT_EQ(registry.capability(intent), nullptr);
    EXPECT_EQ(CapabilityRegistry().capability(IntentID::webSearch), nullptr);
}

TEST(CapabilityRegistry, MapsByIntentAndALaterEntryReplacesAnEarlierOne) {
    CapabilityRegistry registry(std::vector<std::shared_ptr<Capability>>{
        std::make_shared<LabelledCapability>(IntentID::webSearch, "first web"),
        std::make_shared<LabelledCapability>(IntentID::finderSearch, "files"),
        nullptr,
        std::make_shared<LabelledCapability>(IntentID::webSearch, "second web"),
    });
    EXPECT_EQ(registry.capabilitiesByIntent.size(), 2u);
    ASSERT_TRUE(registry.capability(IntentID::webSearch));
    EXPECT_EQ(labelOf(registry.capability(IntentID::webSearch)), "second web");
    EXPECT_EQ(labelOf(registry.capability(IntentID::finderSearch)), "files");
    EXPECT_EQ(registry.capability(IntentID::musicPlay), nullptr);
}

}  // namespace
}  // namespace nuvrel::core
