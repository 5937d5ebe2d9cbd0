#include "llm/model_update_checker.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include "base/text.h"
#include "core/decoding_error.h"

namespace nuvrel::llm::ModelUpdateChecker {

namespace {

using core::DecodingError;
using Json = nlohmann::json;

const Json& required(const Json& object, const char* key) {
    const auto it = object.find(key);
    if (it == object.end())
        throw DecodingError(DecodingError::Kind::keyNotFound, std::string("no \"") + key + "\"");
    if (it->is_null())
        throw DecodingError(DecodingError::Kind::valueNotFound, std::string(key) + " is null");
    return *it;
}

std::string text(const Json& value, const char* key) {
    if (!value.is_string())
        throw DecodingError(DecodingError::Kind::typeMismatch, std::string(key) + " is no text");
    return value.get<std::string>();
}

std::uint64_t versionPart(std::string_view part) {
    std::uint64_t value = 0;
    std::from_chars(part.data(), part.data() + part.size(), value);
    return value;
}

}  // namespace

bool shouldCheck(const std::optional<base::Url>& manifestURL, bool automaticCheckEnabled,
                 std::optional<std::chrono::system_clock::time_point> lastCheck,
                 std::chrono::system_clock::time_point now) {
    if (!manifestURL || !automaticCheckEnabled) return false;
    if (!lastCheck) return true;
    return now - *lastCheck >= checkInterval;
}

ModelUpdateDecision decide(const ModelUpdateManifest& manifest,
                           const std::vector<std::string>& installedFileNames,
                           std::string_view currentAppVersion) {
    const auto& entry = manifest.router;
    ModelUpdateDecision decision;
    const bool hexDigest =
        entry.sha256.size() == 64 && std::all_of(entry.sha256.begin(), entry.sha256.end(),
                                                 [](unsigned char c) { return std::isxdigit(c); });
    if (!hexDigest) {
        decision.kind = ModelUpdateDecision::Kind::malformed;
        decision.reason = "sha256이 16진 64자가 아님: " + entry.sha256;
    } else if (!base::text::lower(entry.fileName).ends_with(".gguf")) {
        decision.kind = ModelUpdateDecision::Kind::malformed;
        decision.reason = "fileName이 .gguf가 아님: " + entry.fileName;
    } else if (entry.sizeBytes < 1) {
        decision.kind = ModelUpdateDecision::Kind::malformed;
        decision.reason = "sizeBytes가 0 이하";
    } else if (std::find(installedFileNames.begin(), installedFileNames.end(), entry.fileName) !=
               installedFileNames.end()) {
        decision.kind = ModelUpdateDecision::Kind::upToDate;
    } else if (entry.minAppVersion &&
               compareVersions(currentAppVersion, *entry.minAppVersion) < 0) {
        decision.kind = ModelUpdateDecision::Kind::blockedByAppVersion;
        decision.required = *entry.minAppVersion;
        decision.current = std::string(currentAppVersion);
    } else {
        decision.kind = ModelUpdateDecision::Kind::available;
        decision.entry = entry;
    }
    return decision;
}

int compareVersions(std::string_view a, std::string_view b) {
    while (!a.empty() || !b.empty()) {
        const auto take = [](std::string_view& rest) {
            const auto dot = rest.find('.');
            const auto part = rest.substr(0, dot);
            rest = dot == std::string_view::npos ? std::string_view() : rest.substr(dot + 1);
            return versionPart(part);
        };
        const auto x = take(a);
        const auto y = take(b);
        if (x != y) return x < y ? -1 : 1;
    }
    return 0;
}

ModelUpdateManifest decodeManifest(std::string_view json) {
    const Json document = Json::parse(json, nullptr, false);
    if (document.is_discarded() || !document.is_object())
        throw DecodingError(DecodingError::Kind::dataCorrupted, "the manifest is no JSON object");
    const Json& router = required(document, "router");
    if (!router.is_object())
        throw DecodingError(DecodingError::Kind::typeMismatch, "router is no object");
    ModelUpdateManifest manifest;
    auto& entry = manifest.router;
    entry.fileName = text(required(router, "fileName"), "fileName");
    entry.url = text(required(router, "url"), "url");
    if (!base::Url::parse(entry.url))
        throw DecodingError(DecodingError::Kind::dataCorrupted, "url is no URL");
    const Json& size = required(router, "sizeBytes");
    if (!size.is_number_integer())
        throw DecodingError(DecodingError::Kind::typeMismatch, "sizeBytes is no whole number");
    entry.sizeBytes = size.get<std::int64_t>();
    entry.sha256 = text(required(router, "sha256"), "sha256");
    if (const auto it = router.find("minAppVersion"); it != router.end() && !it->is_null())
        entry.minAppVersion = text(*it, "minAppVersion");
    if (const auto it = router.find("releaseNote"); it != router.end() && !it->is_null()) {
        if (!it->is_object())
            throw DecodingError(DecodingError::Kind::typeMismatch, "releaseNote is no object");
        std::map<std::string, std::string> notes;
        for (const auto& [language, note] : it->items())
            notes[language] = text(note, "releaseNote");
        entry.releaseNote = std::move(notes);
    }
    return manifest;
}

nlohmann::json encodeEntry(const ModelUpdateManifest::Entry& entry) {
    Json json = {{"fileName", entry.fileName},
                 {"url", entry.url},
                 {"sizeBytes", entry.sizeBytes},
                 {"sha256", entry.sha256}};
    if (entry.minAppVersion) json["minAppVersion"] = *entry.minAppVersion;
    if (entry.releaseNote) json["releaseNote"] = *entry.releaseNote;
    return json;
}

ModelUpdateManifest liveFetch(const base::Url& from, base::HttpSession& session,
                              const ModelDownloader::NetworkLogFn& networkLog,
                              std::chrono::milliseconds timeout) {
    if (networkLog) networkLog(from.host(), from.path());
    base::HttpRequest request;
    request.url = from;
    request.timeout = timeout;
    request.maxBodyBytes = 1024 * 1024;
    // Never a cached copy: the manifest is the news.
    request.headers = {{"Cache-Control", "no-cache"}};
    const auto response = session.send(request);
    if (response.status < 200 || response.status > 299)
        throw DecodingError(DecodingError::Kind::dataCorrupted,
                            "the manifest request gave HTTP " + std::to_string(response.status));
    return decodeManifest(response.body);
}

}  // namespace nuvrel::llm::ModelUpdateChecker
