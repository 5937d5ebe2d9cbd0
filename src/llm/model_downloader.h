#pragma once
// Fetches a model file of up to a few gigabytes into "<destination>.part", checks its digest
// and moves it into place. Large files come as parallel byte ranges; the SHA-256 is computed
// while the bytes arrive, so a multi-gigabyte file is never read a second time. What arrived
// before a stop (Ctrl-C, a dropped connection) stays in the staging file and the next install
// of the same file resumes from there.
//
// Threading: install and the download block on the caller's task; a stop request of that task
// ends every transfer at once and throws base::Cancelled. Progress callbacks may come from
// any thread.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/http.h"
#include "base/url.h"
#include "llm/model_download_error.h"
#include "llm/model_file_manager.h"

namespace nuvrel::llm::ModelDownloader {

// Where the curated files come from (a mirror setting replaces the host, see model_sources.h).
inline constexpr std::string_view defaultModelSourceURL =
    "https://models.nuvrel.app/v1/nuvrel-nano-router-v5-q4_k_m.gguf";
inline constexpr std::string_view router2BSourceURL =
    "https://models.nuvrel.app/v1/kestrune-mini-router-ep6-q4_k_m.gguf";
inline constexpr std::string_view router2BFileName = "kestrune-mini-router-ep6-q4_k_m.gguf";
inline constexpr std::string_view summaryModelSourceURL =
    "https://models.nuvrel.app/v1/Qwen3-1.7B-Q4_K_M.gguf";
inline constexpr std::string_view summaryModelFileName = "Qwen3-1.7B-Q4_K_M.gguf";

// From this size on a file is fetched as parallel ranges.
inline constexpr std::uint64_t parallelThreshold = 8'388'608;

struct Recommendation {
    std::string sourceURL;
    std::string fileName;
    friend bool operator==(const Recommendation&, const Recommendation&) = default;
};
// The mini router from 15.5 GiB of memory up (31 units of 512 MiB), else the default router.
Recommendation recommendedModel(std::uint64_t physicalMemory);

struct Progress {
    // Bytes in the staging file so far, what an earlier attempt left included.
    std::uint64_t receivedBytes = 0;
    // Nothing while the size is unknown.
    std::optional<std::uint64_t> totalBytes;
    // What an earlier attempt had left when this one began.
    std::uint64_t resumedFromBytes = 0;
    // From 0 to 1; 0 while the size is unknown.
    double fraction() const;
};
using ProgressFn = std::function<void(const Progress&)>;

// Records one outbound request (host and path) under the purpose of model downloads.
using NetworkLogFn = std::function<void(std::string_view host, std::string_view path)>;

// What a download leaves in the staging file.
struct DownloadResult {
    std::string sha256;  // lower case, of every byte of the staging file
    std::uint64_t bytes = 0;
};
using DownloadFn = std::function<DownloadResult(
    const base::Url& source, const std::filesystem::path& partPath, const ProgressFn& onProgress)>;

// The staging file, open for appending. append throws std::system_error when a write fails
// (a full disk, a file size limit); what was written before stays.
class StagingWriter {
public:
    virtual ~StagingWriter() = default;
    virtual void append(std::string_view bytes) = 0;
};
// Opens the staging file keeping its first `keepBytes` bytes (0: empty), creating it if
// needed. The live form is platform::liveOpenStaging.
using OpenStagingFn = std::function<std::unique_ptr<StagingWriter>(
    const std::filesystem::path& path, std::uint64_t keepBytes)>;
// Free bytes for a file in that folder; nothing when unknown. The live form is
// platform::liveAvailableSpace.
using AvailableSpaceFn = std::function<std::optional<std::uint64_t>(const std::filesystem::path&)>;

struct DownloadSettings {
    std::shared_ptr<base::HttpSession> session;
    OpenStagingFn openStaging{};
    AvailableSpaceFn availableSpace{};
    // Large files: ranges of this size, this many at once, and at most this many ranges held
    // in memory ahead of the digest (pieceBytes times windowPieces of memory at most).
    std::uint64_t pieceBytes = 4'194'304;
    std::size_t connections = 4;
    std::size_t windowPieces = 8;
    // No byte for this long fails the transfer.
    std::chrono::milliseconds idleTimeout{60'000};
};

// The download over HTTP: a HEAD for the size (and the free-space check), then parallel
// ranges from parallelThreshold on when the host answers "Accept-Ranges: bytes", else one
// stream. Throws ModelDownloadError; a chunk that
// fails is not retried: the download fails as a whole, and the next attempt resumes.
DownloadFn liveDownload(DownloadSettings settings);

// The pieces [first, last] (inclusive) of the bytes from `start` to `length` - 1.
std::vector<std::pair<std::uint64_t, std::uint64_t>> pieceRanges(std::uint64_t start,
                                                                 std::uint64_t length,
                                                                 std::uint64_t pieceBytes);

// Sums the bytes of concurrent ranges into one progress.
class MultiChunkProgressTracker {
public:
    MultiChunkProgressTracker(std::uint64_t totalBytes, std::uint64_t resumedFromBytes,
                              ProgressFn onProgress);
    void setBytes(std::size_t chunkIndex, std::uint64_t bytes);

private:
    std::mutex mutex_;
    const std::uint64_t totalBytes_;
    const std::uint64_t resumedFromBytes_;
    std::map<std::size_t, std::uint64_t> perChunkBytes_;
    std::uint64_t sum_ = 0;
    ProgressFn onProgress_;
};

// Installs `from` at `to`. A file already at `to` returns at once, without a request or a log
// entry. Otherwise: the log entry, the download into "<to>.part", the digest check (a mismatch
// deletes the staging file and throws checksumMismatch), the GGUF header check, the rename.
// Throws ModelDownloadError or base::Cancelled (the staging file then stays for a resume).
std::filesystem::path install(const base::Url& from, const std::filesystem::path& to,
                              const ModelFileManager& fileManager, const ProgressFn& onProgress,
                              const DownloadFn& download, const NetworkLogFn& networkLog,
                              const std::optional<std::string>& expectedSHA256);

}  // namespace nuvrel::llm::ModelDownloader
