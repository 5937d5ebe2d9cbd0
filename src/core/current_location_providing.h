#pragma once
// The machine's position, for a weather query that names no place. Asks for permission once,
// takes one reading and names the place when it can.
//
// Threading: both operations block on the caller's task (a reading may take seconds) and may
// be called from any task.

#include <optional>
#include <string>

namespace nuvrel::core {

struct CurrentLocation {
    double latitude = 0;
    double longitude = 0;
    // The locality, when the reading could be named.
    std::optional<std::string> name{};
};

class CurrentLocationProviding {
public:
    virtual ~CurrentLocationProviding() = default;
    // False when the user or the system denies access. Never throws but Cancelled.
    virtual bool requestAuthorization() = 0;
    // Throws when no reading can be had.
    virtual CurrentLocation currentLocation() = 0;
};

}  // namespace nuvrel::core
