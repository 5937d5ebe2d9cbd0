#pragma once
// The weather and rate services as the program reaches them: the shared session, the
// addresses from the settings and every request noted in the network activity log, whose
// loopback rule leaves out services on this machine.

#include <memory>

#include "answers/information_services.h"
#include "app/network_activity_log.h"
#include "app/settings_storing.h"
#include "base/http.h"

namespace nuvrel::app {

// Reads "openMeteoGeocodingEndpoint", "openMeteoForecastEndpoint" and "frankfurterEndpoint",
// each a base URL; an absent one means the public service. A value that is not an http or
// https URL is ignored with one diagnostic line.
answers::InformationServices makeInformationServices(const SettingsStoring& userDefaults,
                                                     std::shared_ptr<base::HttpSession> session,
                                                     std::shared_ptr<NetworkActivityLog> log,
                                                     const base::Diagnostics& diagnostics);

}  // namespace nuvrel::app
