#include "base/diagnostics.h"

#include <unistd.h>

#include <cerrno>
#include <string>

namespace nuvrel::base {

void DiagnosticWriter::line(std::string_view message) const {
    std::string text;
    text.reserve(tag_.size() + message.size() + 1);
    text.append(tag_).append(message).push_back('\n');
    const char* data = text.data();
    std::size_t left = text.size();
    while (left > 0) {
        const ssize_t written = ::write(STDERR_FILENO, data, left);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;  // nowhere to report a failure to report
        data += written;
        left -= static_cast<std::size_t>(written);
    }
}

}  // namespace nuvrel::base
