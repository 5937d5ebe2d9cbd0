#include "platform/linux/shared_mime_types.h"

#include <fcntl.h>
#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <map>

namespace nuvrel::platform {
namespace {

using Table = std::map<std::string, std::vector<std::string>, std::less<>>;

// globs2 lines read "weight:type:glob[:flags]"; only plain "*.ext" globs name an extension.
Table readGlobs() {
    Table table;
    for (const gchar* const* folder = g_content_type_get_mime_dirs(); folder && *folder; ++folder) {
        std::ifstream globs(std::string(*folder) + "/globs2");
        for (std::string line; std::getline(globs, line);) {
            if (line.starts_with('#')) continue;
            const std::size_t first = line.find(':');
            const std::size_t second = line.find(':', first + 1);
            if (first == std::string::npos || second == std::string::npos) continue;
            const std::string type = line.substr(first + 1, second - first - 1);
            std::string glob = line.substr(second + 1);
            glob = glob.substr(0, glob.find(':'));
            if (!glob.starts_with("*.") || glob.size() < 3) continue;
            std::string extension = glob.substr(2);
            bool plain = true;
            for (char& c : extension) {
                if (!g_ascii_isalnum(c)) plain = false;
                c = g_ascii_tolower(c);
            }
            if (!plain) continue;
            auto& extensions = table[type];
            if (std::find(extensions.begin(), extensions.end(), extension) == extensions.end())
                extensions.push_back(std::move(extension));
        }
    }
    return table;
}

}  // namespace

const std::vector<std::string>& extensionsOfMimeType(std::string_view mimeType) {
    static const Table table = readGlobs();
    static const std::vector<std::string> none;
    const auto found = table.find(mimeType);
    return found == table.end() ? none : found->second;
}

bool nameTellsType(std::string_view name) {
    const std::string copy(name);
    gboolean uncertain = FALSE;
    gchar* type = g_content_type_guess(copy.c_str(), nullptr, 0, &uncertain);
    g_free(type);
    return !uncertain;
}

std::vector<std::string> contentExtensions(int folder, const char* name) {
    if (nameTellsType(name)) return {};
    const int file = ::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) return {};
    struct stat status {};
    std::array<guchar, 4096> head{};
    ssize_t length = -1;
    if (::fstat(file, &status) == 0 && S_ISREG(status.st_mode))
        length = ::read(file, head.data(), head.size());
    ::close(file);
    if (length <= 0) return {};
    gboolean uncertain = FALSE;
    gchar* type =
        g_content_type_guess(nullptr, head.data(), static_cast<gsize>(length), &uncertain);
    gchar* mime = type ? g_content_type_get_mime_type(type) : nullptr;
    std::vector<std::string> extensions;
    if (mime && !uncertain) extensions = extensionsOfMimeType(mime);
    g_free(mime);
    g_free(type);
    return extensions;
}

}  // namespace nuvrel::platform
