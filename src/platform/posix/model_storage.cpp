#include "platform/model_storage.h"

#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <system_error>

#include "base/files.h"

namespace nuvrel::platform {

namespace {

class PosixAppendFile final : public llm::ModelDownloader::StagingWriter {
public:
    PosixAppendFile(const std::filesystem::path& path, std::uint64_t keepBytes) : path_(path) {
        fd_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        if (fd_ < 0) throw std::system_error(errno, std::generic_category(), path.string());
        if (::ftruncate(fd_, static_cast<off_t>(keepBytes)) != 0 ||
            ::lseek(fd_, static_cast<off_t>(keepBytes), SEEK_SET) < 0) {
            const int error = errno;
            ::close(fd_);
            throw std::system_error(error, std::generic_category(), path.string());
        }
    }
    ~PosixAppendFile() override { ::close(fd_); }

    void append(std::string_view bytes) override {
        while (!bytes.empty()) {
            const ssize_t written = ::write(fd_, bytes.data(), bytes.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0)
                throw std::system_error(errno, std::generic_category(), path_.string());
            bytes.remove_prefix(static_cast<std::size_t>(written));
        }
    }

private:
    std::filesystem::path path_;
    int fd_ = -1;
};

}  // namespace

std::unique_ptr<llm::ModelDownloader::StagingWriter> liveOpenStaging(
    const std::filesystem::path& path, std::uint64_t keepBytes) {
    return std::make_unique<PosixAppendFile>(path, keepBytes);
}

std::optional<std::uint64_t> liveAvailableSpace(const std::filesystem::path& directory) {
    struct statvfs info {};
    if (::statvfs(directory.c_str(), &info) != 0) return std::nullopt;
    return static_cast<std::uint64_t>(info.f_bavail) * info.f_frsize;
}

std::optional<std::uint64_t> physicalMemoryFromMeminfo(std::string_view meminfo) {
    // "MemTotal:       16314612 kB"
    constexpr std::string_view key = "MemTotal:";
    std::size_t at = meminfo.find(key);
    if (at == std::string_view::npos || (at > 0 && meminfo[at - 1] != '\n')) return std::nullopt;
    std::string_view rest = meminfo.substr(at + key.size());
    rest.remove_prefix(std::min(rest.find_first_not_of(" \t"), rest.size()));
    std::uint64_t kibibytes = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), kibibytes);
    if (error != std::errc() || end == rest.data()) return std::nullopt;
    if (!std::string_view(end, rest.data() + rest.size() - end).starts_with(" kB"))
        return std::nullopt;
    return kibibytes * 1024;
}

std::optional<std::uint64_t> livePhysicalMemory() {
    const auto text = base::readFile("/proc/meminfo");
    return text ? physicalMemoryFromMeminfo(*text) : std::nullopt;
}

}  // namespace nuvrel::platform
