#include "desktop/open_url_fast_path.h"

#include <algorithm>
#include <array>

#include "base/text.h"
#include "base/url.h"

namespace nuvrel::desktop::OpenURLFastPath {
namespace {

namespace text = base::text;

constexpr std::array<std::string_view, 16> allowedTLDs{"com",  "net", "org", "io", "dev", "app",
                                                       "co",   "kr",  "jp",  "me", "gg",  "tv",
                                                       "info", "xyz", "edu", "gov"};

std::optional<URLCandidate> fromUrl(const std::string& address) {
    const auto url = base::Url::parse(address);
    if (!url || url->host().empty()) return std::nullopt;
    return URLCandidate{address, url->host()};
}

}  // namespace

std::optional<URLCandidate> urlCandidate(std::string_view input) {
    const std::string trimmed = text::trim(input);
    if (trimmed.empty() || text::splitBlanks(trimmed).size() != 1) return std::nullopt;
    const std::string lowered = text::lower(trimmed);
    if (lowered.starts_with("http://") || lowered.starts_with("https://")) return fromUrl(trimmed);

    // The name is what stands before a path, a query or a port.
    const std::string_view name =
        std::string_view(lowered).substr(0, lowered.find_first_of("/?#:"));
    if (name.find('.') == std::string_view::npos) return std::nullopt;
    std::size_t start = 0;
    std::string_view lastLabel;
    while (start <= name.size()) {
        std::size_t end = name.find('.', start);
        if (end == std::string_view::npos) end = name.size();
        lastLabel = name.substr(start, end - start);
        if (lastLabel.empty()) return std::nullopt;
        start = end + 1;
    }
    const bool allowed =
        std::find(allowedTLDs.begin(), allowedTLDs.end(), lastLabel) != allowedTLDs.end();
    if (!lowered.starts_with("www.") && !allowed) return std::nullopt;
    return fromUrl("https://" + trimmed);
}

}  // namespace nuvrel::desktop::OpenURLFastPath
