#include "platform/linux/private_state_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "base/files.h"

namespace nuvrel::platform {
namespace {

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

std::optional<std::string> readPrivateFile(const std::filesystem::path& path) {
    return base::readFile(path);
}

void writePrivateFile(const std::filesystem::path& path, std::string_view bytes) {
    const std::filesystem::path folder = path.parent_path();
    std::error_code error;
    if (!std::filesystem::exists(folder, error)) {
        std::filesystem::create_directories(folder.parent_path(), error);
        if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) fail("mkdir");
    }
    std::string temporary = (folder / ("." + path.filename().string() + ".XXXXXX")).string();
    // mkstemp makes the file with mode 0600 whatever the umask says.
    const int fd = ::mkstemp(temporary.data());
    if (fd < 0) fail("mkstemp");
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            const int saved = errno;
            ::close(fd);
            ::unlink(temporary.c_str());
            errno = saved;
            fail("write");
        }
        written += static_cast<std::size_t>(n);
    }
    if (::fsync(fd) != 0 || ::close(fd) != 0) {
        ::unlink(temporary.c_str());
        fail("fsync");
    }
    if (::rename(temporary.c_str(), path.c_str()) != 0) {
        const int saved = errno;
        ::unlink(temporary.c_str());
        errno = saved;
        fail("rename");
    }
}

}  // namespace nuvrel::platform
