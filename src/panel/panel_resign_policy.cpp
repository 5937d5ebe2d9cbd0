#include "panel/panel_resign_policy.h"

namespace nuvrel::panel {

ResignAction resignAction(std::optional<std::chrono::steady_clock::time_point> holdUntil,
                          std::chrono::steady_clock::time_point now) {
    if (holdUntil && *holdUntil > now) return {ResignAction::Kind::hold, *holdUntil - now};
    return {ResignAction::Kind::hide, {}};
}

}  // namespace nuvrel::panel
