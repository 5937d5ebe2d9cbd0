#include "desktop/finder_query_builder.h"

#include <algorithm>

namespace nuvrel::desktop::FinderQueryBuilder {
namespace {

constexpr std::array<std::string_view, 9> imageExtensions{"jpg",  "jpeg", "png", "gif", "heic",
                                                          "tiff", "bmp",  "psd", "ai"};
constexpr std::array<std::string_view, 5> videoExtensions{"mp4", "mov", "m4v", "avi", "mkv"};
constexpr std::array<std::string_view, 5> audioExtensions{"mp3", "wav", "aac", "m4a", "flac"};
constexpr std::array<std::string_view, 9> documentExtensions{"pdf", "doc", "docx", "hwp",  "hwpx",
                                                             "txt", "md",  "rtf",  "pages"};
constexpr std::array<std::string_view, 3> presentationExtensions{"ppt", "pptx", "key"};
constexpr std::array<std::string_view, 4> spreadsheetExtensions{"xls", "xlsx", "csv", "numbers"};
constexpr std::array<std::string_view, 6> archiveExtensions{"zip", "dmg", "tar", "gz", "rar", "7z"};
constexpr std::array<std::string_view, 13> codeExtensions{
    "py", "js", "html", "ipynb", "swift", "json", "css", "c", "cpp", "h", "java", "ts", "sh"};

constexpr std::array<CategoryExtensions, 8> table{{
    {"image", imageExtensions},
    {"video", videoExtensions},
    {"audio", audioExtensions},
    {"document", documentExtensions},
    {"presentation", presentationExtensions},
    {"spreadsheet", spreadsheetExtensions},
    {"archive", archiveExtensions},
    {"code", codeExtensions},
}};

}  // namespace

const std::array<CategoryExtensions, 8>& categoryExtensions() {
    return table;
}

const std::span<const std::string_view>* extensionsOfCategory(std::string_view category) {
    for (const CategoryExtensions& row : table) {
        if (row.category == category) return &row.extensions;
    }
    return nullptr;
}

bool categoryContains(std::string_view category, std::string_view extension) {
    const auto* extensions = extensionsOfCategory(category);
    return extensions &&
           std::find(extensions->begin(), extensions->end(), extension) != extensions->end();
}

}  // namespace nuvrel::desktop::FinderQueryBuilder
