#include "platform/posix/document_files.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

#include "base/shared_library.h"
#include "base/text.h"
#include "platform/posix/pdf_text_module.h"

namespace nuvrel::platform {
namespace fs = std::filesystem;

namespace {

std::optional<fs::path> homeFolder() {
    const char* home = std::getenv("HOME");
    if (!home || !*home) return std::nullopt;
    return fs::path(home);
}

// A user folder from user-dirs.dirs ("XDG_DOCUMENTS_DIR="$HOME/Docs""), else the default.
fs::path userFolder(const fs::path& home, std::string_view key, std::string_view fallback) {
    const char* config = std::getenv("XDG_CONFIG_HOME");
    std::ifstream dirs((config && *config ? fs::path(config) : home / ".config") /
                       "user-dirs.dirs");
    for (std::string line; std::getline(dirs, line);) {
        if (line.rfind(std::string(key) + "=\"", 0) != 0 || line.back() != '"') continue;
        std::string value = line.substr(key.size() + 2, line.size() - key.size() - 3);
        if (value.rfind("$HOME", 0) == 0)
            return home / value.substr(std::min<std::size_t>(6, value.size()));
        return fs::path(value);
    }
    return home / fallback;
}

core::FileHit hitFor(const fs::path& path) {
    return core::FileHit{
        .name = path.filename().string(), .path = path.string(), .modifiedDate = ""};
}

std::optional<fs::path> explicitPath(std::string_view name) {
    std::string text(name);
    if (text.rfind("~/", 0) == 0) {
        const auto home = homeFolder();
        if (!home) return std::nullopt;
        text = (*home / text.substr(2)).string();
    }
    std::error_code error;
    if (!fs::is_regular_file(text, error)) return std::nullopt;
    return fs::absolute(text, error);
}

// Installed beside the program (<prefix>/lib/nuvrel), else where the build put it.
std::optional<base::SharedLibrary> openPdfTextModule() {
    std::vector<fs::path> candidates;
    std::error_code error;
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    if (!error)
        candidates.push_back(self.parent_path().parent_path() / "lib" / "nuvrel" /
                             pdfTextModuleName);
#ifdef NUVREL_MODULE_DIR
    candidates.push_back(fs::path(NUVREL_MODULE_DIR) / pdfTextModuleName);
#endif
    for (const fs::path& candidate : candidates) {
        try {
            return base::SharedLibrary(candidate.string());
        } catch (const base::SharedLibraryError&) {
            // The next place, if any.
        }
    }
    return std::nullopt;
}

std::optional<std::string> pdfText(const std::string& path) {
    struct Module {
        std::optional<base::SharedLibrary> library;
        decltype(&::nuvrel_pdf_text) text = nullptr;
        decltype(&::nuvrel_pdf_text_free) release = nullptr;
    };
    // Opened once and kept for the life of the process.
    static const Module* const module = [] {
        auto* found = new Module{openPdfTextModule(), nullptr, nullptr};
        try {
            if (found->library) {
                found->library->resolve(found->text, "nuvrel_pdf_text");
                found->library->resolve(found->release, "nuvrel_pdf_text_free");
            }
        } catch (const base::SharedLibraryError&) {
            found->text = nullptr;
            found->release = nullptr;
        }
        return found;
    }();
    if (!module->text || !module->release) return std::nullopt;
    char* extracted = module->text(path.c_str(), documentMaxPages);
    if (!extracted) return std::nullopt;
    std::string text(extracted);
    module->release(extracted);
    if (base::text::trimView(text).empty()) return std::nullopt;
    return text;
}

}  // namespace

DocumentSearch DocumentSearch::userFolders() {
    DocumentSearch search;
    if (const auto home = homeFolder()) {
        search.roots = {userFolder(*home, "XDG_DOCUMENTS_DIR", "Documents"),
                        userFolder(*home, "XDG_DESKTOP_DIR", "Desktop"),
                        userFolder(*home, "XDG_DOWNLOAD_DIR", "Downloads"), *home};
    }
    return search;
}

std::optional<core::FileHit> liveFindFile(std::string_view name, const DocumentSearch& search) {
    if (const auto path = explicitPath(name)) return hitFor(*path);
    const std::string wanted = base::text::lower(name);
    if (wanted.empty()) return std::nullopt;
    const auto deadline = std::chrono::steady_clock::now() + search.timeout;
    std::optional<fs::path> containing;
    for (const fs::path& root : search.roots) {
        std::error_code error;
        fs::recursive_directory_iterator walk(root, fs::directory_options::skip_permission_denied,
                                              error);
        for (; !error && walk != fs::recursive_directory_iterator(); walk.increment(error)) {
            if (std::chrono::steady_clock::now() > deadline)
                return containing ? std::optional(hitFor(*containing)) : std::nullopt;
            const fs::path& path = walk->path();
            const std::string fileName = path.filename().string();
            if (fileName.starts_with('.')) {
                if (walk->is_directory(error)) walk.disable_recursion_pending();
                continue;
            }
            if (walk->is_directory(error)) {
                if (walk.depth() + 1 >= search.maxDepth) walk.disable_recursion_pending();
                continue;
            }
            if (!walk->is_regular_file(error)) continue;
            const std::string lowered = base::text::lower(fileName);
            if (lowered == wanted) return hitFor(path);
            if (!containing && base::text::contains(lowered, wanted)) containing = path;
        }
    }
    if (containing) return hitFor(*containing);
    return std::nullopt;
}

std::optional<std::string> liveExtractText(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    if (error || size > documentMaxBytes) return std::nullopt;
    if (base::text::lower(fs::path(path).extension().string()) == ".pdf") return pdfText(path);
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!base::text::isValidUtf8(text)) return std::nullopt;
    return text;
}

}  // namespace nuvrel::platform
