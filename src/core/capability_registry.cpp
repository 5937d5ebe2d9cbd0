#include "core/capability_registry.h"

namespace nuvrel::core {

CapabilityRegistry::CapabilityRegistry(
    const std::vector<std::shared_ptr<Capability>>& capabilities) {
    for (const auto& capability : capabilities) {
        if (capability) capabilitiesByIntent[capability->intentID()] = capability;
    }
}

std::shared_ptr<Capability> CapabilityRegistry::capability(IntentID intent) const {
    auto found = capabilitiesByIntent.find(intent);
    return found == capabilitiesByIntent.end() ? nullptr : found->second;
}

}  // namespace nuvrel::core
