#include "answers/information_services.h"

#include <string>

namespace nuvrel::answers {

base::Url InformationServices::endpoint(const base::Url& base, std::string_view path) {
    std::string text = base.scheme() + "://";
    const std::string& host = base.host();
    text += host.find(':') != std::string::npos ? "[" + host + "]" : host;
    if (base.port()) text += ":" + std::to_string(*base.port());
    std::string basePath = base.path();
    while (!basePath.empty() && basePath.back() == '/') basePath.pop_back();
    text += basePath;
    text += path;
    return base::Url::parse(text).value_or(base);
}

base::Url InformationServices::defaultGeocodingEndpoint() {
    return endpoint(*base::Url::parse(publicGeocodingBase), "/v1/search");
}

base::Url InformationServices::defaultForecastEndpoint() {
    return endpoint(*base::Url::parse(publicForecastBase), "/v1/forecast");
}

base::Url InformationServices::defaultFrankfurterEndpoint() {
    return endpoint(*base::Url::parse(publicFrankfurterBase), "/v1/latest");
}

base::Url InformationServices::geocoding() const {
    return geocodingEndpoint.empty() ? defaultGeocodingEndpoint() : geocodingEndpoint;
}

base::Url InformationServices::forecast() const {
    return forecastEndpoint.empty() ? defaultForecastEndpoint() : forecastEndpoint;
}

base::Url InformationServices::frankfurter() const {
    return frankfurterEndpoint.empty() ? defaultFrankfurterEndpoint() : frankfurterEndpoint;
}

base::HttpResponse InformationServices::get(const base::Url& url, Purpose purpose) const {
    if (record) record(url, purpose);
    if (!session) throw base::HttpError(base::HttpError::Kind::transport, "no HTTP session");
    base::HttpRequest request;
    request.url = url;
    request.timeout = timeout;
    return session->send(request);
}

}  // namespace nuvrel::answers
