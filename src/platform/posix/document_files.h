#pragma once
// The live forms behind document summary: finding the file that the user named and reading
// its text. PDF text comes from poppler in reading order (columns one after the other),
// through a module loaded on the first PDF; any other file is read as UTF-8 text.
//
// Threading: both block on the caller's task and touch only the file system; safe from any
// thread.

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/result_records.h"

namespace nuvrel::platform {

struct DocumentSearch {
    // Searched in order, each at most `maxDepth` folders deep; hidden entries are skipped.
    std::vector<std::filesystem::path> roots;
    int maxDepth = 4;
    std::chrono::milliseconds timeout{3'000};

    // Documents, Desktop and Downloads of the home folder (the XDG user folders where they
    // are set), then the home folder itself.
    static DocumentSearch userFolders();
};

// The named file: a path to a regular file (absolute, "~/...", or relative to the working
// folder) as it stands; else the first regular file below the roots whose name equals the
// name without regard to case, else the first whose name contains it. Nothing when none is
// found before the time-out.
std::optional<core::FileHit> liveFindFile(std::string_view name, const DocumentSearch& search);

// Files larger than this, and PDF pages beyond this, are not read.
inline constexpr std::uintmax_t documentMaxBytes = 64u << 20;
inline constexpr int documentMaxPages = 500;

// The text of a PDF (by its lower-cased extension) or a UTF-8 text file. Nothing for a file
// that will not open, an encrypted or image-only PDF, a file too large, text that is not
// UTF-8, or a PDF when the PDF module is not installed.
std::optional<std::string> liveExtractText(const std::string& path);

}  // namespace nuvrel::platform
