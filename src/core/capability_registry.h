#pragma once
// The capabilities by the intent each one serves. Built once at launch and then only read,
// so it may be shared between tasks.

#include <map>
#include <memory>
#include <vector>

#include "core/capability.h"
#include "core/intent_id.h"

namespace nuvrel::core {

class CapabilityRegistry {
public:
    CapabilityRegistry() = default;
    // A later capability with the same intent replaces an earlier one; null entries are skipped.
    explicit CapabilityRegistry(const std::vector<std::shared_ptr<Capability>>& capabilities);

    // The capability for this intent, or null when none is registered.
    std::shared_ptr<Capability> capability(IntentID intent) const;

    std::map<IntentID, std::shared_ptr<Capability>> capabilitiesByIntent;
};

}  // namespace nuvrel::core
