#include "platform/linux/markdown_notes_folder.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "base/graphemes.h"
#include "base/text.h"
#include "platform/linux/freedesktop_trash.h"

namespace nuvrel::platform {
namespace {

constexpr std::size_t maxStemCharacters = 80;
// Leaves room for " 999.md" within the 255 bytes of a file name.
constexpr std::size_t maxStemBytes = 240;

std::string firstLine(std::string_view content) {
    return base::text::trim(content.substr(0, content.find('\n')));
}

// The title of a file's first line: a Markdown heading shows without its marks.
std::string titleOf(std::string_view line) {
    std::string title = base::text::trim(line);
    std::size_t hashes = 0;
    while (hashes < title.size() && title[hashes] == '#') ++hashes;
    if (hashes > 0 && hashes < title.size() && title[hashes] == ' ')
        return base::text::trim(std::string_view(title).substr(hashes));
    return title;
}

bool isHidden(const std::filesystem::path& name) {
    return name.string().starts_with('.');
}

// Writes a new file, refusing to replace one; false when the name is taken.
bool writeNew(const std::filesystem::path& path, std::string_view bytes) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0) {
        if (errno == EEXIST) return false;
        throw personal::NotesStoreError(std::string("cannot create a note file: ") +
                                        std::strerror(errno));
    }
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            const int saved = errno;
            ::close(fd);
            ::unlink(path.c_str());
            throw personal::NotesStoreError(std::string("cannot write a note file: ") +
                                            std::strerror(saved));
        }
        written += static_cast<std::size_t>(n);
    }
    if (::close(fd) != 0)
        throw personal::NotesStoreError(std::string("cannot write a note file: ") +
                                        std::strerror(errno));
    return true;
}

}  // namespace

std::string MarkdownNotesFolder::fileStem(std::string_view title) {
    std::string cleaned;
    for (const char c : title) {
        const auto byte = static_cast<unsigned char>(c);
        const bool refused =
            byte < 0x20 || byte == 0x7f || std::strchr("/\\:*?\"<>|", c) != nullptr;
        cleaned += refused ? '-' : c;
    }
    std::string stem = base::text::prefix(base::text::trim(cleaned), maxStemCharacters);
    while (stem.size() > maxStemBytes) stem = base::text::dropLast(stem);
    stem = base::text::trim(stem);
    while (!stem.empty() && stem.front() == '.') stem.erase(0, 1);
    return stem.empty() ? std::string("Note") : stem;
}

void MarkdownNotesFolder::create(const std::string& content) {
    std::error_code error;
    std::filesystem::create_directories(folder_, error);
    if (error)
        throw personal::NotesStoreError("cannot create the notes folder: " + error.message());
    const std::string stem = fileStem(titleOf(firstLine(content)));
    const std::string bytes = content.ends_with('\n') ? content : content + '\n';
    for (int n = 1; n < 10000; ++n) {
        const std::string name = n == 1 ? stem + ".md" : stem + " " + std::to_string(n) + ".md";
        if (writeNew(folder_ / name, bytes)) return;
    }
    throw personal::NotesStoreError("every file name for the note is taken");
}

std::vector<core::NoteListItem> MarkdownNotesFolder::notesMatching(std::string_view keyword) {
    const std::string lowered = base::text::lower(keyword);
    std::error_code error;
    if (!std::filesystem::is_directory(folder_, error)) return {};
    std::filesystem::recursive_directory_iterator walk(
        folder_, std::filesystem::directory_options::skip_permission_denied, error);
    if (error) throw personal::NotesStoreError("cannot read the notes folder: " + error.message());

    std::vector<std::pair<std::filesystem::file_time_type, core::NoteListItem>> found;
    for (auto end = std::filesystem::recursive_directory_iterator(); walk != end;
         walk.increment(error)) {
        if (error) break;
        const std::filesystem::path& path = walk->path();
        if (isHidden(path.filename())) {
            if (walk->is_directory(error)) walk.disable_recursion_pending();
            continue;
        }
        if (path.extension() != ".md" || !walk->is_regular_file(error)) continue;
        std::ifstream in(path);
        std::string line;
        if (!in || (!std::getline(in, line) && !in.eof()) || in.bad()) {
            diagnostics_.event("note file skipped, unreadable: " + path.filename().string());
            continue;
        }
        std::string title = titleOf(line);
        if (!base::text::contains(base::text::lower(title), lowered)) continue;
        const auto modified = walk->last_write_time(error);
        found.push_back(
            {modified, {std::move(title), path.lexically_relative(folder_).generic_string()}});
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    std::vector<core::NoteListItem> notes;
    for (auto& entry : found) notes.push_back(std::move(entry.second));
    return notes;
}

bool MarkdownNotesFolder::remove(const std::string& identifier) {
    const std::filesystem::path relative(identifier);
    // An identifier comes back from a card: it must still name a file inside the folder.
    if (identifier.empty() || relative.is_absolute() ||
        std::any_of(relative.begin(), relative.end(),
                    [](const auto& part) { return part == ".."; }))
        return false;
    const std::filesystem::path path = folder_ / relative;
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return false;
    try {
        moveToTrash(path);
    } catch (const TrashError&) {
        // GIO's reason quotes the path, and with it the note's title.
        throw personal::NotesStoreError("cannot move a note to the Trash");
    }
    return true;
}

}  // namespace nuvrel::platform
