#include "llm/model_downloader.h"

#include <algorithm>
#include <charconv>
#include <condition_variable>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "base/cancellation.h"
#include "base/sha256.h"
#include "base/task.h"
#include "base/text.h"
#include "llm/gguf_header.h"

namespace nuvrel::llm::ModelDownloader {

namespace {

using Clock = std::chrono::steady_clock;

// The staging file can no longer be trusted (the server's file changed, or a write failed
// half-way): it is deleted before the error reaches the caller.
struct StagingDiscarded : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The bytes go to the digest and the staging file together, in order; the digest never reads
// the file back.
class DigestingSink {
public:
    DigestingSink(base::Sha256& digest, std::unique_ptr<StagingWriter> file,
                  const std::filesystem::path& path)
        : digest_(digest), file_(std::move(file)), path_(path) {}

    void append(std::string_view bytes) {
        digest_.update(bytes);
        try {
            file_->append(bytes);
        } catch (const std::system_error& error) {
            throw StagingDiscarded("couldn't write " + path_.string() + ": " +
                                   error.code().message());
        }
    }

private:
    base::Sha256& digest_;
    std::unique_ptr<StagingWriter> file_;
    std::filesystem::path path_;
};

struct RemoteHead {
    std::optional<std::uint64_t> length;
    bool acceptsRanges = false;
};

RemoteHead fetchHead(base::HttpSession& session, const base::Url& source) {
    base::HttpRequest request;
    request.method = "HEAD";
    request.url = source;
    request.timeout = std::chrono::seconds(60);
    const auto response = session.send(request);
    if (response.status < 200 || response.status > 299) return {};
    // Simple servers that ignore Range say nothing about ranges; model hosts say "bytes".
    const auto ranges = response.header("Accept-Ranges");
    return {response.contentLength(), ranges && base::text::lower(*ranges) == "bytes"};
}

// "bytes first-last/total" of a 206; nothing when malformed. A total of "*" reads as nothing.
struct ContentRange {
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    std::optional<std::uint64_t> total;
};

std::optional<std::uint64_t> number(std::string_view text) {
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

std::optional<ContentRange> parseContentRange(std::string_view text) {
    if (!text.starts_with("bytes ")) return std::nullopt;
    text.remove_prefix(6);
    const auto dash = text.find('-');
    const auto slash = text.find('/');
    if (dash == std::string_view::npos || slash == std::string_view::npos || slash < dash)
        return std::nullopt;
    const auto first = number(text.substr(0, dash));
    const auto last = number(text.substr(dash + 1, slash - dash - 1));
    if (!first || !last) return std::nullopt;
    return ContentRange{*first, *last, number(text.substr(slash + 1))};
}

[[noreturn]] void sizeChanged(std::uint64_t before, std::uint64_t now) {
    throw StagingDiscarded("the file on the server changed size during the download (" +
                           std::to_string(before) + " bytes, now " + std::to_string(now) + ")");
}

// Feeds what an earlier attempt left to the digest: the one read of those bytes.
std::uint64_t digestExisting(const std::filesystem::path& path, base::Sha256& digest) {
    std::ifstream in(path, std::ios::binary);
    std::vector<char> block(8 * 1024 * 1024);
    std::uint64_t total = 0;
    while (in) {
        in.read(block.data(), static_cast<std::streamsize>(block.size()));
        const auto got = static_cast<std::size_t>(in.gcount());
        if (got == 0) break;
        digest.update(std::string_view(block.data(), got));
        total += got;
        base::checkCancellation();
    }
    return total;
}

class Download {
public:
    Download(const DownloadSettings& settings, const base::Url& source,
             const std::filesystem::path& partPath, const ProgressFn& onProgress)
        : settings_(settings), source_(source), partPath_(partPath), onProgress_(onProgress) {}

    DownloadResult run() {
        const RemoteHead head = fetchHead(*settings_.session, source_);
        std::error_code error;
        std::uint64_t existing = std::filesystem::file_size(partPath_, error);
        if (error || (head.length && existing > *head.length)) existing = 0;
        if (existing > 0) existing = digestExisting(partPath_, digest_);
        resumedFrom_ = existing;
        if (head.length) {
            const std::uint64_t needed = *head.length - existing;
            const auto available = settings_.availableSpace
                                       ? settings_.availableSpace(partPath_.parent_path())
                                       : std::nullopt;
            if (available && *available < needed)
                throw ModelDownloadError::notEnoughSpace(needed, *available);
        }
        if (head.length && existing == *head.length) {
            report(existing, head.length);
        } else if (head.length && *head.length >= parallelThreshold && head.acceptsRanges) {
            parallel(existing, *head.length);
        } else {
            single(existing, head.length);
        }
        return {digest_.hex(), written_};
    }

private:
    void report(std::uint64_t received, std::optional<std::uint64_t> total) {
        written_ = received;
        if (onProgress_) onProgress_(Progress{received, total, resumedFrom_});
    }

    base::HttpRequest rangeRequest(std::uint64_t first, std::optional<std::uint64_t> last) const {
        base::HttpRequest request;
        request.url = source_;
        request.timeout = std::chrono::milliseconds(0);
        request.idleTimeout = settings_.idleTimeout;
        if (first > 0 || last) request.range = std::make_pair(first, last);
        return request;
    }

    // One stream from `existing` on: a 206 continues the staging file, a 200 starts it over.
    void single(std::uint64_t existing, std::optional<std::uint64_t> length) {
        std::unique_ptr<DigestingSink> sink;
        std::uint64_t received = existing;
        std::string buffer;
        const auto flush = [&] {
            sink->append(buffer);
            buffer.clear();
        };
        const auto onHead = [&](const base::HttpResponse& response) {
            if (response.status == 206 && existing > 0) {
                const auto range = parseContentRange(response.header("Content-Range").value_or(""));
                if (!range || range->first != existing)
                    throw ModelDownloadError::transferFailed("server sent the wrong byte range");
                if (length && range->total && *range->total != *length)
                    sizeChanged(*length, *range->total);
            } else if (response.status >= 200 && response.status <= 299) {
                if (existing > 0) {  // the server ignored the range: start again from 0
                    digest_.reset();
                    existing = received = resumedFrom_ = 0;
                }
                const auto sent = response.contentLength();
                if (length && sent && *sent != *length) sizeChanged(*length, *sent);
            } else {
                if (response.status == 416) throw StagingDiscarded("HTTP 416");
                return false;
            }
            sink = std::make_unique<DigestingSink>(
                digest_, settings_.openStaging(partPath_, existing), partPath_);
            return true;
        };
        const auto onChunk = [&](std::string_view piece) {
            buffer.append(piece);
            received += piece.size();
            if (buffer.size() >= 1024 * 1024) flush();
            report(received, length);
            return true;
        };
        const auto response = send(rangeRequest(existing, std::nullopt), "", onHead, onChunk);
        if (!sink)
            throw ModelDownloadError::transferFailed("HTTP " + std::to_string(response.status));
        flush();
        if (length && received != *length) {
            throw ModelDownloadError::transferFailed("connection closed after " +
                                                     std::to_string(received) + " of " +
                                                     std::to_string(*length) + " bytes");
        }
        report(received, length ? length : std::optional(received));
    }

    base::HttpResponse send(const base::HttpRequest& request, const std::string& what,
                            const base::HttpHeadHandler& onHead,
                            const base::HttpChunkHandler& onChunk) {
        try {
            return settings_.session->send(request, onHead, onChunk);
        } catch (const base::HttpError& error) {
            throw ModelDownloadError::transferFailed(what + error.description());
        }
    }

    // Ranges fetched by several connections at once, kept in memory until the digest reaches
    // them, then digested and appended in order by whichever worker completed the frontier.
    void parallel(std::uint64_t existing, std::uint64_t length) {
        const auto pieces = pieceRanges(existing, length, settings_.pieceBytes);
        DigestingSink sink(digest_, settings_.openStaging(partPath_, existing), partPath_);
        MultiChunkProgressTracker tracker(length, existing, [&](const Progress& progress) {
            if (onProgress_) onProgress_(progress);
        });
        struct Shared {
            std::mutex mutex;
            std::condition_variable changed;
            std::size_t nextPiece = 0;
            std::size_t frontier = 0;
            bool writing = false;
            bool failed = false;
            bool sealed = false;
            std::map<std::size_t, std::string> ready;
        } shared;

        const auto claim = [&]() -> std::optional<std::size_t> {
            std::unique_lock lock(shared.mutex);
            while (true) {
                if (shared.failed || shared.nextPiece >= pieces.size()) return std::nullopt;
                if (shared.nextPiece < shared.frontier + settings_.windowPieces)
                    return shared.nextPiece++;
                shared.changed.wait_for(lock, std::chrono::milliseconds(50));
                if (base::isCancelled()) throw base::Cancelled();
            }
        };
        const auto deliver = [&](std::size_t index, std::string bytes) {
            std::unique_lock lock(shared.mutex);
            shared.ready.emplace(index, std::move(bytes));
            if (shared.writing || shared.failed) return;
            shared.writing = true;
            try {
                while (!shared.failed && !shared.ready.empty() &&
                       shared.ready.begin()->first == shared.frontier) {
                    auto node = shared.ready.extract(shared.ready.begin());
                    lock.unlock();
                    sink.append(node.mapped());
                    lock.lock();
                    ++shared.frontier;
                    written_ = pieces[shared.frontier - 1].second + 1;
                }
            } catch (...) {
                if (!lock.owns_lock()) lock.lock();
                shared.sealed = true;  // the file takes nothing more
                shared.writing = false;
                throw;
            }
            shared.writing = false;
            shared.changed.notify_all();
        };
        // After a failure or a stop, what the piece at the frontier received continues the
        // staging file byte for byte: it is kept for the next attempt.
        const auto fail = [&](std::optional<std::size_t> index, const std::string& partial) {
            std::unique_lock lock(shared.mutex);
            shared.failed = true;
            shared.changed.notify_all();
            if (shared.sealed || shared.writing || index != shared.frontier || partial.empty())
                return;
            shared.sealed = true;
            lock.unlock();
            try {
                sink.append(partial);
            } catch (const std::exception&) {
                // Already failing; whatever part of it landed is still a valid prefix.
            }
        };

        base::TaskGroup<bool> workers;
        const std::size_t count = std::min(settings_.connections, pieces.size());
        for (std::size_t w = 0; w < count; ++w) {
            workers.add([&] {
                std::optional<std::size_t> index;
                std::string bytes;
                try {
                    while ((index = claim())) {
                        fetchPiece(*index, pieces[*index], length, tracker, bytes);
                        deliver(*index, std::move(bytes));
                        bytes = std::string();
                    }
                } catch (...) {
                    fail(index, bytes);
                    throw;
                }
                return true;
            });
        }
        workers.waitAll();
        written_ = length;
    }

    void fetchPiece(std::size_t index, std::pair<std::uint64_t, std::uint64_t> range,
                    std::uint64_t length, MultiChunkProgressTracker& tracker, std::string& bytes) {
        const std::string label = "chunk " + std::to_string(index) + ": ";
        const std::uint64_t expected = range.second - range.first + 1;
        bytes.reserve(expected);
        const auto onHead = [&](const base::HttpResponse& response) {
            if (response.status == 200)
                throw ModelDownloadError::transferFailed(label + "server did not honor Range");
            if (response.status == 416) throw StagingDiscarded(label + "HTTP 416");
            if (response.status != 206)
                throw ModelDownloadError::transferFailed(label + "HTTP " +
                                                         std::to_string(response.status));
            const auto got = parseContentRange(response.header("Content-Range").value_or(""));
            if (got && got->total && *got->total != length) sizeChanged(length, *got->total);
            if (!got || got->first != range.first || got->last != range.second)
                throw ModelDownloadError::transferFailed(label + "server sent the wrong range");
            return true;
        };
        const auto onChunk = [&](std::string_view piece) {
            if (bytes.size() + piece.size() > expected)
                throw ModelDownloadError::transferFailed(label + "more bytes than asked for");
            bytes.append(piece);
            tracker.setBytes(index, bytes.size());
            return true;
        };
        send(rangeRequest(range.first, range.second), label, onHead, onChunk);
        if (bytes.empty()) throw ModelDownloadError::transferFailed(label + "no data");
        if (bytes.size() != expected) {
            throw ModelDownloadError::transferFailed(label + "connection closed after " +
                                                     std::to_string(bytes.size()) + " of " +
                                                     std::to_string(expected) + " bytes");
        }
    }

    const DownloadSettings& settings_;
    const base::Url& source_;
    const std::filesystem::path& partPath_;
    const ProgressFn& onProgress_;
    base::Sha256 digest_;
    std::uint64_t resumedFrom_ = 0;
    std::uint64_t written_ = 0;
};

}  // namespace

Recommendation recommendedModel(std::uint64_t physicalMemory) {
    if ((physicalMemory >> 29) >= 31)
        return {std::string(router2BSourceURL), std::string(router2BFileName)};
    return {std::string(defaultModelSourceURL), std::string(defaultModelFileName)};
}

double Progress::fraction() const {
    if (!totalBytes || *totalBytes == 0) return 0.0;
    return std::min(1.0, static_cast<double>(receivedBytes) / static_cast<double>(*totalBytes));
}

std::vector<std::pair<std::uint64_t, std::uint64_t>> pieceRanges(std::uint64_t start,
                                                                 std::uint64_t length,
                                                                 std::uint64_t pieceBytes) {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> ranges;
    for (std::uint64_t first = start; first < length; first += pieceBytes) {
        ranges.emplace_back(first, std::min(first + pieceBytes, length) - 1);
    }
    return ranges;
}

MultiChunkProgressTracker::MultiChunkProgressTracker(std::uint64_t totalBytes,
                                                     std::uint64_t resumedFromBytes,
                                                     ProgressFn onProgress)
    : totalBytes_(totalBytes),
      resumedFromBytes_(resumedFromBytes),
      onProgress_(std::move(onProgress)) {}

void MultiChunkProgressTracker::setBytes(std::size_t chunkIndex, std::uint64_t bytes) {
    std::lock_guard lock(mutex_);
    std::uint64_t& known = perChunkBytes_[chunkIndex];
    sum_ = sum_ - known + bytes;
    known = bytes;
    if (onProgress_)
        onProgress_(Progress{resumedFromBytes_ + sum_, totalBytes_, resumedFromBytes_});
}

DownloadFn liveDownload(DownloadSettings settings) {
    return [settings = std::move(settings)](const base::Url& source,
                                            const std::filesystem::path& partPath,
                                            const ProgressFn& onProgress) {
        // An empty staging file holds nothing to resume from.
        const auto dropIfEmpty = [&] {
            std::error_code error;
            if (std::filesystem::file_size(partPath, error) == 0 && !error)
                std::filesystem::remove(partPath, error);
        };
        try {
            return Download(settings, source, partPath, onProgress).run();
        } catch (const StagingDiscarded& error) {
            std::error_code ignored;
            std::filesystem::remove(partPath, ignored);
            throw ModelDownloadError::transferFailed(error.what());
        } catch (const base::HttpError& error) {
            dropIfEmpty();
            throw ModelDownloadError::transferFailed(error.description());
        } catch (...) {
            dropIfEmpty();
            throw;
        }
    };
}

std::filesystem::path install(const base::Url& from, const std::filesystem::path& to,
                              const ModelFileManager& fileManager, const ProgressFn& onProgress,
                              const DownloadFn& download, const NetworkLogFn& networkLog,
                              const std::optional<std::string>& expectedSHA256) {
    if (fileManager.fileExists(to)) return to;
    std::filesystem::path staging = to;
    staging += ".part";
    DownloadResult result;
    try {
        fileManager.createDirectories(to.parent_path());
        if (networkLog) networkLog(from.host().empty() ? "unknown host" : from.host(), from.path());
        result = download(from, staging, onProgress);
    } catch (const base::Cancelled&) {
        throw;
    } catch (const ModelDownloadError&) {
        throw;
    } catch (const std::exception& error) {
        throw ModelDownloadError::transferFailed(error.what());
    }
    const auto discard = [&] {
        std::error_code ignored;
        std::filesystem::remove(staging, ignored);
    };
    if (expectedSHA256 && base::text::lower(*expectedSHA256) != result.sha256) {
        discard();
        throw ModelDownloadError::checksumMismatch(base::text::lower(*expectedSHA256),
                                                   result.sha256);
    }
    if (const auto problem = ggufFileProblem(staging)) {
        discard();
        throw ModelDownloadError::notAGGUF(to.filename().string(), *problem);
    }
    try {
        if (fileManager.fileExists(to)) fileManager.removeFile(to);
        fileManager.moveFile(staging, to);
    } catch (const std::exception& error) {
        throw ModelDownloadError::transferFailed(error.what());
    }
    return to;
}

}  // namespace nuvrel::llm::ModelDownloader
