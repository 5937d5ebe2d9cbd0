#include "platform/linux/private_state_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "base/files.h"

namespace nuvrel::platform {

std::optional<std::string> readPrivateFile(const std::filesystem::path& path) {
    return base::readFile(path);
}

void writePrivateFile(const std::filesystem::path& path, std::string_view bytes) {
    const std::filesystem::path folder = path.parent_path();
    std::error_code error;
    if (!std::filesystem::exists(folder, error)) {
        std::filesystem::create_directories(folder.parent_path(), error);
        if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST)
            throw std::system_error(errno, std::generic_category(), "mkdir");
    }
    // The atomic write's temporary file comes from mkstemp, so it is 0600 from its first
    // moment, and the rename keeps that mode.
    base::writeFileAtomically(path, bytes);
}

}  // namespace nuvrel::platform
