#include "pipeline/chain_gate.h"

#include <string>

#include "base/text.h"

namespace nuvrel::pipeline::ChainGate {

bool mightBeChain(std::string_view query) {
    const std::string lowered = base::text::lower(query);
    const std::string_view text = lowered;

    for (const std::string_view phrase : connectorPhrases) {
        if (text.find(phrase) != std::string_view::npos) return true;
    }
    for (const std::string_view ending : verbEndingConnectors) {
        const auto at = text.find(ending);
        if (at == std::string_view::npos) continue;
        if (!base::text::trimView(text.substr(at + ending.size())).empty()) return true;
    }
    return false;
}

}  // namespace nuvrel::pipeline::ChainGate
