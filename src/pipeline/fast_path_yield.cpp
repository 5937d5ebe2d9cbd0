#include "pipeline/fast_path_yield.h"

#include <algorithm>
#include <string>

#include "base/text.h"

namespace nuvrel::pipeline::FastPathYield {

bool shouldYield(std::string_view query) {
    const std::string lowered = base::text::lower(query);
    return std::any_of(
        downstreamTriggers.begin(), downstreamTriggers.end(),
        [&](std::string_view trigger) { return base::text::contains(lowered, trigger); });
}

}  // namespace nuvrel::pipeline::FastPathYield
