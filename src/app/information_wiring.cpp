#include "app/information_wiring.h"

#include <optional>
#include <string>
#include <utility>

#include "app/settings_keys.h"
#include "base/diagnostics.h"
#include "base/text.h"

namespace nuvrel::app {
namespace {

using answers::InformationServices;

// The service's address below the configured base, or `fallback` when none is configured
// or the value is unusable.
base::Url configured(const SettingsStoring& userDefaults, std::string_view key,
                     std::string_view path, base::Url fallback,
                     const base::Diagnostics& diagnostics) {
    const std::string value = base::text::trim(userDefaults.string(key).value_or(""));
    if (value.empty()) return fallback;
    const std::optional<base::Url> base = base::Url::parse(value);
    if (!base || (base->scheme() != "http" && base->scheme() != "https") || base->host().empty()) {
        diagnostics.event("ignoring " + std::string(key) +
                          ": not an http or https address; the public service answers");
        return fallback;
    }
    return InformationServices::endpoint(*base, path);
}

}  // namespace

InformationServices makeInformationServices(const SettingsStoring& userDefaults,
                                            std::shared_ptr<base::HttpSession> session,
                                            std::shared_ptr<NetworkActivityLog> log,
                                            const base::Diagnostics& diagnostics) {
    InformationServices services;
    services.diagnostics = diagnostics;
    services.session = std::move(session);
    services.geocodingEndpoint = configured(userDefaults, settingsKey::openMeteoGeocodingEndpoint,
                                            "/v1/search", base::Url(), diagnostics);
    services.forecastEndpoint = configured(userDefaults, settingsKey::openMeteoForecastEndpoint,
                                           "/v1/forecast", base::Url(), diagnostics);
    services.frankfurterEndpoint = configured(userDefaults, settingsKey::frankfurterEndpoint,
                                              "/v1/latest", base::Url(), diagnostics);
    services.record = [log = std::move(log)](const base::Url& url,
                                             InformationServices::Purpose purpose) {
        if (!log) return;
        log->record(url.host().empty() ? url.text() : url.host(),
                    NetworkActivityLog::readablePath(url),
                    purpose == InformationServices::Purpose::weather
                        ? NetworkActivityLog::Purpose::weather
                        : NetworkActivityLog::Purpose::currency);
    };
    return services;
}

}  // namespace nuvrel::app
