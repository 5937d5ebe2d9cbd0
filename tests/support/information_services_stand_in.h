#pragma once
// Loopback stand-ins for Open-Meteo (geocoding, forecast) and Frankfurter that answer with
// replies shaped like the real services', and a position provider that a test scripts.

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "answers/information_services.h"
#include "base/text.h"
#include "core/current_location_providing.h"
#include "support/loopback_server.h"

namespace nuvrel::test {

using Purpose = answers::InformationServices::Purpose;

// Open-Meteo's geocoder knows these names; others give a reply
// without "results", as the real service does.
inline const std::map<std::string, std::string> knownPlaces = {
    {"Seoul", R"({"id":1835848,"name":"Seoul","latitude":37.566,"longitude":126.9784,)"
              R"("feature_code":"PPLC","country_code":"KR","timezone":"Asia/Seoul"})"},
    {"東京", R"({"id":1850147,"name":"東京都","latitude":35.6895,"longitude":139.69171})"},
    {"北京", R"({"id":1816670,"name":"北京市","latitude":39.9075,"longitude":116.39723})"},
    {"Paris", R"({"id":2988507,"name":"Paris","latitude":48.85341,"longitude":2.3488})"},
};

inline std::string forecastBody(const std::string& current, const std::string& daily) {
    return R"({"latitude":37.55,"longitude":127.0,"generationtime_ms":0.04,"timezone":"Asia/Seoul",)"
           R"("current_units":{"temperature_2m":"°C","weather_code":"wmo code"},"current":)" +
           current + R"(,"daily_units":{"temperature_2m_max":"°C"},"daily":)" + daily + "}";
}

struct InformationServicesStandIn {
    std::mutex mutex;
    std::vector<std::string> requests;                      // path?query of each
    std::vector<std::pair<std::string, Purpose>> recorded;  // host+path of each
    int forecastStatus = 200;
    std::string forecast = forecastBody(
        R"({"time":"2026-11-23T22:15","temperature_2m":3.4,"weather_code":2})",
        R"({"time":["2026-11-23"],"temperature_2m_max":[8.1],"temperature_2m_min":[-1.2]})");
    int rateStatus = 200;
    std::string rates =
        R"({"amount":100.0,"base":"USD","date":"2026-11-21","rates":{"JPY":15565.4}})";

    test::LoopbackServer server{[this](httplib::Server& s) {
        const auto note = [this](const httplib::Request& r) {
            std::lock_guard lock(mutex);
            std::string query;
            for (const auto& [k, v] : r.params) query += (query.empty() ? "" : "&") + k + "=" + v;
            requests.push_back(r.path + "?" + query);
        };
        s.Get("/v1/search", [=, this](const httplib::Request& r, httplib::Response& res) {
            note(r);
            // Names match in any case, as the real geocoder's do.
            auto place = knownPlaces.begin();
            const std::string wanted = base::text::lower(r.get_param_value("name"));
            while (place != knownPlaces.end() && base::text::lower(place->first) != wanted) ++place;
            res.set_content(place == knownPlaces.end() ? std::string(R"({"generationtime_ms":0.7})")
                                                       : R"({"results":[)" + place->second + "]}",
                            "application/json");
        });
        s.Get("/v1/forecast", [=, this](const httplib::Request& r, httplib::Response& res) {
            note(r);
            res.status = forecastStatus;
            res.set_content(forecast, "application/json");
        });
        s.Get("/v1/latest", [=, this](const httplib::Request& r, httplib::Response& res) {
            note(r);
            res.status = rateStatus;
            res.set_content(rates, "application/json");
        });
    }};

    answers::InformationServices services() {
        const base::Url root = *base::Url::parse(server.url("/"));
        answers::InformationServices made;
        made.session = std::make_shared<base::HttpSession>();
        made.geocodingEndpoint = answers::InformationServices::endpoint(root, "/v1/search");
        made.forecastEndpoint = answers::InformationServices::endpoint(root, "/v1/forecast");
        made.frankfurterEndpoint = answers::InformationServices::endpoint(root, "/v1/latest");
        made.record = [this](const base::Url& url, Purpose purpose) {
            std::lock_guard lock(mutex);
            recorded.emplace_back(url.host() + url.path(), purpose);
        };
        return made;
    }
};

class StubLocation : public core::CurrentLocationProviding {
public:
    bool allowed = true;
    std::optional<core::CurrentLocation> reading;
    bool requestAuthorization() override { return allowed; }
    core::CurrentLocation currentLocation() override {
        if (!reading) throw std::runtime_error("no fix");
        return *reading;
    }
};

}  // namespace nuvrel::test
