#pragma once
// A small on-disk record of every outbound request that leaves the machine: host and path
// only, never a query text. Calls to loopback hosts (the local model servers) are not kept.
//
// Threading: an actor. Every operation takes one mutex; record writes the whole file under
// it (a local file write, never a network call). Created once at the top of the program and
// passed down; tests build their own. Processes share the file: record takes a lock file
// beside it ("<file>.lock") and adds its entry to what the file holds at that moment.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/url.h"

namespace nuvrel::app {

class NetworkActivityLog {
public:
    enum class Purpose { webSearch, weather, currency, modelDownload, modelUpdateCheck };

    struct Entry {
        std::chrono::system_clock::time_point timestamp;
        std::string host;
        std::string path;
        Purpose purpose = Purpose::webSearch;
        std::optional<std::int64_t> bytes;

        friend bool operator==(const Entry&, const Entry&) = default;
    };

    using Clock = std::function<std::chrono::system_clock::time_point()>;

    static constexpr std::size_t capacity = 500;

    // The URL's path as the log keeps it: decoded, for people to read ("/wiki/서울"); bytes that
    // decode to no text stay escaped.
    static std::string readablePath(const base::Url& url);

    // No file: memory only.
    explicit NetworkActivityLog(Clock now = std::chrono::system_clock::now,
                                std::optional<std::filesystem::path> fileURL = std::nullopt);

    NetworkActivityLog(const NetworkActivityLog&) = delete;
    NetworkActivityLog& operator=(const NetworkActivityLog&) = delete;

    // Adds an entry stamped now, unless the host is a loopback host. A failed write is
    // ignored: logging never fails a request.
    void record(const std::string& host, const std::string& path, Purpose purpose,
                std::optional<std::int64_t> bytes = std::nullopt);
    // Newest first, at most `limit`.
    std::vector<Entry> recentEntries(std::size_t limit) const;
    // Entries whose timestamp is not older than now minus `within`.
    std::size_t count(std::chrono::seconds within) const;
    bool isAtCapacity() const;

private:
    void loadIfNeeded() const;
    void addNewest(Entry entry) const;
    void persist() const;

    mutable std::mutex mutex_;
    mutable std::vector<Entry> entries_;  // newest first
    const Clock now_;
    const std::optional<std::filesystem::path> fileURL_;
    mutable bool loadedFromDisk_ = false;
};

// The raw value of a purpose: its case name ("webSearch", ...).
std::string_view purposeRawValue(NetworkActivityLog::Purpose purpose);
std::optional<NetworkActivityLog::Purpose> purposeFromRawValue(std::string_view raw);

// "localhost", "127.0.0.1", "::1" or a name ending in ".localhost", in any case.
bool isLoopbackHost(std::string_view host);

}  // namespace nuvrel::app
