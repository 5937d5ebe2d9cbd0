#include "app/network_activity_log.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "app/network_activity_json.h"
#include "base/files.h"
#include "base/text.h"
#include "base/utf8.h"

namespace nuvrel::app {

namespace {

constexpr std::array<std::string_view, 5> purposeRawValues{"webSearch", "weather", "currency",
                                                           "modelDownload", "modelUpdateCheck"};

}  // namespace

std::string_view purposeRawValue(NetworkActivityLog::Purpose purpose) {
    return purposeRawValues.at(static_cast<std::size_t>(purpose));
}

std::optional<NetworkActivityLog::Purpose> purposeFromRawValue(std::string_view raw) {
    const auto found = std::find(purposeRawValues.begin(), purposeRawValues.end(), raw);
    if (found == purposeRawValues.end()) return std::nullopt;
    return static_cast<NetworkActivityLog::Purpose>(found - purposeRawValues.begin());
}

bool isLoopbackHost(std::string_view host) {
    const std::string lowered = base::text::lower(host);
    return lowered == "localhost" || lowered == "127.0.0.1" || lowered == "::1" ||
           lowered.ends_with(".localhost");
}

std::string NetworkActivityLog::readablePath(const base::Url& url) {
    std::string path = base::percentDecode(url.path());
    return base::text::isValidUtf8(path) ? path : url.path();
}

NetworkActivityLog::NetworkActivityLog(Clock now, std::optional<std::filesystem::path> fileURL)
    : now_(std::move(now)), fileURL_(std::move(fileURL)) {}

void NetworkActivityLog::record(const std::string& host, const std::string& path, Purpose purpose,
                                std::optional<std::int64_t> bytes) {
    if (isLoopbackHost(host)) return;
    // Whole seconds, as the file keeps them: an entry read back equals the one recorded.
    const auto stamp = std::chrono::floor<std::chrono::seconds>(now_());
    std::lock_guard lock(mutex_);
    loadIfNeeded();
    if (!fileURL_) {
        addNewest(Entry{stamp, host, path, purpose, bytes});
        return;
    }
    // Another process of the program may have recorded since this one read the file: under
    // the file lock, what the file holds now is the list the new entry joins, so that no
    // process's entries are written over.
    base::withExclusiveFileLock(fileURL_->string() + ".lock", [&] {
        if (const auto current = base::readFile(*fileURL_)) {
            if (auto decoded = decodeNetworkActivity(*current)) entries_ = std::move(*decoded);
        }
        std::erase_if(entries_, [](const Entry& entry) { return isLoopbackHost(entry.host); });
        addNewest(Entry{stamp, host, path, purpose, bytes});
        persist();
    });
}

void NetworkActivityLog::addNewest(Entry entry) const {
    entries_.insert(entries_.begin(), std::move(entry));
    if (entries_.size() > capacity) entries_.resize(capacity);
}

std::vector<NetworkActivityLog::Entry> NetworkActivityLog::recentEntries(std::size_t limit) const {
    std::lock_guard lock(mutex_);
    loadIfNeeded();
    const auto count = std::min(limit, entries_.size());
    return {entries_.begin(), entries_.begin() + static_cast<std::ptrdiff_t>(count)};
}

std::size_t NetworkActivityLog::count(std::chrono::seconds within) const {
    const auto cutoff = now_() - within;
    std::lock_guard lock(mutex_);
    loadIfNeeded();
    return static_cast<std::size_t>(
        std::count_if(entries_.begin(), entries_.end(),
                      [&](const Entry& entry) { return entry.timestamp >= cutoff; }));
}

bool NetworkActivityLog::isAtCapacity() const {
    std::lock_guard lock(mutex_);
    loadIfNeeded();
    return entries_.size() >= capacity;
}

void NetworkActivityLog::loadIfNeeded() const {
    if (loadedFromDisk_) return;
    loadedFromDisk_ = true;
    if (!fileURL_) return;
    // A missing or damaged file reads as empty; the next record replaces it.
    const auto bytes = base::readFile(*fileURL_);
    auto loaded =
        bytes ? decodeNetworkActivity(*bytes).value_or(std::vector<Entry>{}) : std::vector<Entry>{};
    // A file from before loopback calls were left out may still hold some.
    std::erase_if(loaded, [](const Entry& entry) { return isLoopbackHost(entry.host); });
    entries_ = std::move(loaded);
}

void NetworkActivityLog::persist() const {
    if (!fileURL_) return;
    try {
        base::writeFileAtomically(*fileURL_, encodeNetworkActivity(entries_));
    } catch (const std::filesystem::filesystem_error&) {
        // Logging never fails the request it describes.
    }
}

}  // namespace nuvrel::app
