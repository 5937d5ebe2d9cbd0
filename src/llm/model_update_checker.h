#pragma once
// Whether a newer router model can be offered: at most once a day a small JSON manifest is
// fetched, and a pure decision holds its entry against the installed files and this program's
// version. A malformed entry is rejected outright, never offered.

#include <chrono>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/http.h"
#include "base/url.h"
#include "llm/model_downloader.h"

namespace nuvrel::llm {

struct ModelUpdateManifest {
    struct Entry {
        std::string fileName;
        std::string url;
        std::int64_t sizeBytes = 0;
        std::string sha256;
        std::optional<std::string> minAppVersion;
        std::optional<std::map<std::string, std::string>> releaseNote;  // by language code
        friend bool operator==(const Entry&, const Entry&) = default;
    };
    Entry router;
    friend bool operator==(const ModelUpdateManifest&, const ModelUpdateManifest&) = default;
};

struct ModelUpdateDecision {
    enum class Kind { available, blockedByAppVersion, malformed, upToDate };
    Kind kind = Kind::upToDate;
    std::optional<ModelUpdateManifest::Entry> entry;  // available
    std::string required;                             // blockedByAppVersion
    std::string current;                              // blockedByAppVersion
    std::string reason;                               // malformed
    friend bool operator==(const ModelUpdateDecision&, const ModelUpdateDecision&) = default;
};

namespace ModelUpdateChecker {

inline constexpr std::string_view manifestURL = "https://models.nuvrel.app/v1/manifest.json";
inline constexpr std::chrono::seconds checkInterval{86'400};

// False without an address or with automatic checks off; true with no earlier check, or from
// a full day after it.
bool shouldCheck(const std::optional<base::Url>& manifestURL, bool automaticCheckEnabled,
                 std::optional<std::chrono::system_clock::time_point> lastCheck,
                 std::chrono::system_clock::time_point now);

// Digest, file name and size are validated first, then the installed files, then the version.
ModelUpdateDecision decide(const ModelUpdateManifest& manifest,
                           const std::vector<std::string>& installedFileNames,
                           std::string_view currentAppVersion);

// Dotted versions part by part as decimal numbers, a missing part counting as 0: below zero
// when a comes first.
int compareVersions(std::string_view a, std::string_view b);

// Throws core::DecodingError for anything but an object with a complete "router" entry.
ModelUpdateManifest decodeManifest(std::string_view json);
nlohmann::json encodeEntry(const ModelUpdateManifest::Entry& entry);

// GETs the manifest, with the network log entry first. Throws base::HttpError,
// core::DecodingError (a non-2xx status included) or base::Cancelled.
ModelUpdateManifest liveFetch(const base::Url& from, base::HttpSession& session,
                              const ModelDownloader::NetworkLogFn& networkLog,
                              std::chrono::milliseconds timeout = std::chrono::seconds(30));

}  // namespace ModelUpdateChecker

}  // namespace nuvrel::llm
