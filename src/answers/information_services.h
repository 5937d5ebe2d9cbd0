#pragma once
// How the weather and rate capabilities reach their services: the shared HTTP session, the
// services' addresses (settings, so that a self-hosted Open-Meteo or Frankfurter works) and a
// note in the network activity log before every request.
//
// Threading: a plain value; get() blocks on the caller's task and throws Cancelled when the
// task is asked to stop.

#include <chrono>
#include <functional>
#include <memory>

#include "base/diagnostics.h"
#include "base/http.h"
#include "base/url.h"

namespace nuvrel::answers {

struct InformationServices {
    // What a request is for, as the network activity log files it.
    enum class Purpose { weather, currency };
    // Notes the host and path of a request (never its query) before it is sent.
    using Record = std::function<void(const base::Url& url, Purpose purpose)>;

    static constexpr std::chrono::milliseconds timeout{8'000};

    // Base URLs of the public services; the paths are fixed.
    static constexpr std::string_view publicGeocodingBase = "https://geocoding-api.open-meteo.com";
    static constexpr std::string_view publicForecastBase = "https://api.open-meteo.com";
    static constexpr std::string_view publicFrankfurterBase = "https://api.frankfurter.dev";

    // `base` with the service's path behind its own path: "http://h:1/x" + "/v1/search" is
    // "http://h:1/x/v1/search". Its query and fragment are dropped.
    static base::Url endpoint(const base::Url& base, std::string_view path);
    static base::Url defaultGeocodingEndpoint();
    static base::Url defaultForecastEndpoint();
    static base::Url defaultFrankfurterEndpoint();

    std::shared_ptr<base::HttpSession> session;
    // Empty: the public service's, parsed at the first request (parsing opens libcurl, which a
    // sentence that asks no service should not pay for).
    base::Url geocodingEndpoint{};
    base::Url forecastEndpoint{};
    base::Url frankfurterEndpoint{};
    // None: nothing is noted.
    Record record;
    base::Diagnostics diagnostics{};

    // The addresses in effect: the field, or the public service's when it is empty.
    base::Url geocoding() const;
    base::Url forecast() const;
    base::Url frankfurter() const;

    // Notes the request, then sends a GET with `timeout`. Throws what the session throws;
    // without a session, an HttpError of kind transport.
    base::HttpResponse get(const base::Url& url, Purpose purpose) const;
};

}  // namespace nuvrel::answers
