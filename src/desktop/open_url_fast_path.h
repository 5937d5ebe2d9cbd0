#pragma once
// A web address typed as the whole request: "github.com", "www.example.org/path",
// "https://a.io/x". Pure; safe from any thread.

#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::desktop::OpenURLFastPath {

struct URLCandidate {
    std::string url;          // always with a scheme: "https://" is added to a bare name
    std::string displayName;  // the host

    bool operator==(const URLCandidate&) const = default;
};

// Nothing for a text with a blank, a bare name whose last label is not one of the allowed
// top-level labels (unless it begins with "www."), or an http(s) address without a host.
std::optional<URLCandidate> urlCandidate(std::string_view text);

}  // namespace nuvrel::desktop::OpenURLFastPath
