#include "desktop/finder_query_builder.h"

#include <algorithm>
#include <array>

#include "base/text.h"
#include "base/time_text.h"

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

constexpr std::array<std::string_view, 10> noiseDirectoryComponents{
    "node_modules", ".git",   "build", ".build", "DerivedData",
    "Pods",         "vendor", "dist",  "target", "CMakeFiles"};

struct Location {
    std::string_view key;
    std::string_view belowHome;  // empty: home itself; "/..." an absolute folder
};

constexpr std::array<Location, 10> locations{{
    {"downloads", "Downloads"},
    {"desktop", "Desktop"},
    {"documents", "Documents"},
    {"home", ""},
    {"icloud", "Library/Mobile Documents/com~apple~CloudDocs"},
    {"trash", ".Trash"},
    {"pictures", "Pictures"},
    {"movies", "Movies"},
    {"music", "Music"},
    {"applications", "/Applications"},
}};

std::string extensionClause(std::string_view extension) {
    return "kMDItemFSName ENDSWITH[cd] '" + std::string(extension) + "'";
}

std::optional<std::string> fileTypeClause(const std::string& fileType) {
    const std::string type = base::text::lower(fileType);
    if (type == "folder") return "kMDItemContentType == 'public.folder'";
    if (type == "app") return "kMDItemContentType == 'com.apple.application-bundle'";
    if (const auto* extensions = extensionsOfCategory(type)) {
        std::string clause;
        for (const std::string_view extension : *extensions) {
            if (!clause.empty()) clause += " || ";
            clause += extensionClause(extension);
        }
        return clause;
    }
    return extensionClause(type);
}

std::optional<std::string> dateRangeClause(const std::string& dateRange, personal::TimePoint now,
                                           const personal::GregorianCalendar& calendar) {
    using personal::TimePoint;
    const std::string range = base::text::lower(dateRange);
    const TimePoint startOfDay = calendar.startOfDay(now);
    const auto startOfYear = [&]() -> std::optional<TimePoint> {
        return calendar.date(calendar.parts(now).year, 1, 1);
    };
    std::optional<TimePoint> lower;
    std::optional<TimePoint> upper;
    const auto days = [&](int count) { return calendar.addingDays(startOfDay, count); };
    if (range == "today") {
        lower = startOfDay;
    } else if (range == "yesterday") {
        lower = days(-1);
        upper = startOfDay;
    } else if (range == "this_week") {
        lower = calendar.startOfWeek(now);
    } else if (range == "last_week") {
        upper = calendar.startOfWeek(now);
        if (upper) lower = calendar.addingDays(*upper, -7);
    } else if (range == "this_month") {
        lower = calendar.startOfMonth(now);
    } else if (range == "last_month") {
        upper = calendar.startOfMonth(now);
        if (upper) lower = calendar.addingMonths(*upper, -1);
    } else if (range == "recent_7_days") {
        lower = days(-7);
    } else if (range == "recent_30_days") {
        lower = days(-30);
    } else if (range == "this_year") {
        lower = startOfYear();
    } else if (range == "last_year") {
        upper = startOfYear();
        if (upper) lower = calendar.date(calendar.parts(now).year - 1, 1, 1);
    } else {
        return std::nullopt;
    }
    if (!lower) return std::nullopt;
    std::string clause = "kMDItemContentModificationDate >= " + dateLiteral(*lower);
    if (upper) clause += " && kMDItemContentModificationDate < " + dateLiteral(*upper);
    return clause;
}

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

Built build(const core::FinderQuery& query, personal::TimePoint now,
            const personal::GregorianCalendar& calendar, const std::filesystem::path& home) {
    std::vector<std::string> clauses;
    if (query.keyword) {
        const std::string keyword = base::text::trim(*query.keyword);
        if (!keyword.empty())
            clauses.push_back("kMDItemFSName CONTAINS[cd] '" + escapeLiteral(keyword) + "'");
    }
    if (query.fileType) {
        if (auto clause = fileTypeClause(*query.fileType)) clauses.push_back(std::move(*clause));
    }
    if (query.dateRange) {
        if (auto clause = dateRangeClause(*query.dateRange, now, calendar))
            clauses.push_back(std::move(*clause));
    }
    Built built;
    if (clauses.empty()) {
        built.predicateFormat = "kMDItemFSName LIKE[cd] '*'";
    } else {
        for (const std::string& clause : clauses) {
            if (!built.predicateFormat.empty()) built.predicateFormat += " && ";
            built.predicateFormat += "(" + clause + ")";
        }
    }
    if (query.location) {
        if (auto folder = scopeDirectory(*query.location, home))
            built.scopeDirectories.push_back(std::move(*folder));
    }
    return built;
}

std::optional<std::string> scopeDirectory(std::string_view location,
                                          const std::filesystem::path& home) {
    const std::string key = base::text::lower(location);
    for (const Location& row : locations) {
        if (row.key != key) continue;
        if (row.belowHome.empty()) return home.string();
        if (row.belowHome.starts_with('/')) return std::string(row.belowHome);
        return (home / row.belowHome).string();
    }
    return std::nullopt;
}

std::optional<std::set<std::string, std::less<>>> expectedExtensions(
    const std::optional<std::string>& fileType) {
    if (!fileType) return std::nullopt;
    const std::string type = base::text::lower(*fileType);
    if (type == "folder" || type == "app") return std::nullopt;
    if (const auto* extensions = extensionsOfCategory(type))
        return std::set<std::string, std::less<>>(extensions->begin(), extensions->end());
    return std::set<std::string, std::less<>>{type};
}

bool isNoisyPath(std::string_view path) {
    std::size_t start = 0;
    while (start <= path.size()) {
        std::size_t end = path.find('/', start);
        if (end == std::string_view::npos) end = path.size();
        const std::string_view component = path.substr(start, end - start);
        if (!component.empty() &&
            (component.starts_with('.') || component.starts_with("build-") ||
             std::find(noiseDirectoryComponents.begin(), noiseDirectoryComponents.end(),
                       component) != noiseDirectoryComponents.end()))
            return true;
        start = end + 1;
    }
    return false;
}

std::string escapeLiteral(std::string_view text) {
    std::string joined;
    for (const std::string& word : base::text::splitBlanks(text)) {
        if (!joined.empty()) joined += ' ';
        joined += word;
    }
    return base::text::replaceAll(base::text::replaceAll(joined, "\\", "\\\\"), "'", "\\'");
}

std::string dateLiteral(personal::TimePoint instant) {
    return "CAST(\"" + base::formatTime(instant, "%Y-%m-%d %H:%M:%S +0000", true) +
           "\", \"NSDate\")";
}

}  // namespace nuvrel::desktop::FinderQueryBuilder
