#include "app/searxng_endpoint_validation.h"

#include <string>

#include "base/text.h"
#include "base/url.h"

namespace nuvrel::app::SearXNGEndpointValidation {

bool validate(std::string_view raw) {
    const std::string trimmed = base::text::trim(raw);
    if (trimmed.empty()) return true;
    const auto url = base::Url::parse(trimmed);
    if (!url) return false;
    std::string scheme = url->scheme();
    for (char& c : scheme) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return (scheme == "http" || scheme == "https") && !url->host().empty();
}

}  // namespace nuvrel::app::SearXNGEndpointValidation
