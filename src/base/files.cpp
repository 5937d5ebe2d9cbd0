#include "base/files.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>

namespace nuvrel::base {

namespace {

[[noreturn]] void fail(const char* what, const std::filesystem::path& path) {
    throw std::filesystem::filesystem_error(what, path,
                                            std::error_code(errno, std::generic_category()));
}

// A write past the file size limit (RLIMIT_FSIZE) raises SIGXFSZ, whose default action ends
// the whole program. Held back on this thread, the signal is dropped and the write fails with
// EFBIG instead, which a caller reports like a full disk.
class FileSizeSignalHeld {
public:
    FileSizeSignalHeld() {
        sigemptyset(&held_);
        sigaddset(&held_, SIGXFSZ);
        ::pthread_sigmask(SIG_BLOCK, &held_, &previous_);
    }
    ~FileSizeSignalHeld() {
        const timespec none{};
        while (::sigtimedwait(&held_, nullptr, &none) == SIGXFSZ) {
        }
        ::pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
    }
    FileSizeSignalHeld(const FileSizeSignalHeld&) = delete;
    FileSizeSignalHeld& operator=(const FileSizeSignalHeld&) = delete;

private:
    sigset_t held_;
    sigset_t previous_;
};

void writeAll(int fd, std::string_view bytes, const std::filesystem::path& path) {
    const FileSizeSignalHeld held;
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) fail("write", path);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace

std::optional<std::string> readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream contents;
    contents << in.rdbuf();
    if (in.bad()) return std::nullopt;
    return std::move(contents).str();
}

void writeFileAtomically(const std::filesystem::path& path, std::string_view bytes) {
    if (path.has_parent_path()) std::filesystem::create_directories(path.parent_path());
    std::string temporary = path.string() + ".XXXXXX";
    const int fd = ::mkstemp(temporary.data());
    if (fd < 0) fail("mkstemp", path);
    try {
        writeAll(fd, bytes, temporary);
        if (::fsync(fd) != 0) fail("fsync", temporary);
        if (::close(fd) != 0) {
            ::unlink(temporary.c_str());
            fail("close", temporary);
        }
    } catch (...) {
        ::close(fd);
        ::unlink(temporary.c_str());
        throw;
    }
    if (::rename(temporary.c_str(), path.c_str()) != 0) {
        const int saved = errno;
        ::unlink(temporary.c_str());
        errno = saved;
        fail("rename", path);
    }
}

void withExclusiveFileLock(const std::filesystem::path& lockFile,
                           const std::function<void()>& body) {
    if (lockFile.has_parent_path()) {
        std::error_code ignored;
        std::filesystem::create_directories(lockFile.parent_path(), ignored);
    }
    const int fd = ::open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd >= 0) {
        while (::flock(fd, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    try {
        body();
    } catch (...) {
        if (fd >= 0) ::close(fd);
        throw;
    }
    // Closing the descriptor releases the lock.
    if (fd >= 0) ::close(fd);
}

std::filesystem::path createdOnDemand(std::filesystem::path directory) {
    std::error_code ignored;
    std::filesystem::create_directories(directory, ignored);
    return directory;
}

}  // namespace nuvrel::base
