#pragma once
// What the panel does when it loses focus: hide, or hold while a hold time lies ahead (a
// confirmation dialog of another program must not close it).

#include <chrono>
#include <optional>

namespace nuvrel::panel {

struct ResignAction {
    enum class Kind { hide, hold };
    Kind kind = Kind::hide;
    // For a hold: how long is left of it.
    std::chrono::steady_clock::duration remaining{};
};

ResignAction resignAction(std::optional<std::chrono::steady_clock::time_point> holdUntil,
                          std::chrono::steady_clock::time_point now);

}  // namespace nuvrel::panel
