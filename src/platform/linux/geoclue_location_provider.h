#pragma once
// The machine's position from GeoClue 2 on the system bus. Authorization is GeoClue's own:
// a client that its agent refuses fails to start, which reads as denied. Where GeoClue is not
// installed or has no fix in time, the reading fails and the weather card asks for a city.
// Linux has no reverse geocoder of the system, so the place has no name.
//
// Threading: both operations block on the caller's task (a fix may take seconds) and may be
// called from any task; each opens its own bus connection.

#include <chrono>
#include <optional>
#include <string>

#include "core/current_location_providing.h"

namespace nuvrel::platform {

class GeoClueLocationProvider : public core::CurrentLocationProviding {
public:
    // GeoClue hands the position only to clients that name a desktop file.
    static constexpr const char* desktopId = "nuvrel";

    // No address: the system bus.
    explicit GeoClueLocationProvider(
        std::optional<std::string> busAddress = std::nullopt,
        std::chrono::milliseconds fixTimeout = std::chrono::seconds(5));

    // False only when GeoClue refuses this client; an absent GeoClue is no refusal.
    bool requestAuthorization() override;
    // Starts a client at city accuracy, waits for its first location, stops it. Throws
    // std::runtime_error when GeoClue is absent, refuses, or has no fix in time.
    core::CurrentLocation currentLocation() override;

private:
    std::optional<std::string> busAddress_;
    std::chrono::milliseconds fixTimeout_;
};

}  // namespace nuvrel::platform
