#pragma once
// Turns a FinderQuery into a metadata search: a predicate text in the metadata query language
// and the folders to search. Pure: it reads no clock and no file. The file-type categories are
// also what the slot validator uses to tell a broad file type from a narrow one.

#include <array>
#include <filesystem>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/plan_records.h"
#include "personal/gregorian_calendar.h"

namespace nuvrel::desktop::FinderQueryBuilder {

// One file-type category and its extensions: lower case, without a dot, in search order.
struct CategoryExtensions {
    std::string_view category;
    std::span<const std::string_view> extensions;
};

// The eight categories ("image", "video", "audio", "document", "presentation", "spreadsheet",
// "archive", "code"), fixed at compile time.
const std::array<CategoryExtensions, 8>& categoryExtensions();

// The extensions of `category`, or null when it is not a category. Exact, case-sensitive
// comparison: callers lower-case first.
const std::span<const std::string_view>* extensionsOfCategory(std::string_view category);

// Whether `extension` is one of the extensions of `category`; false when `category` is not one.
bool categoryContains(std::string_view category, std::string_view extension);

struct Built {
    std::string predicateFormat;
    // Empty means the user's home folder.
    std::vector<std::string> scopeDirectories;

    bool operator==(const Built&) const = default;
};

// The predicate of the keyword, file type and date range clauses, joined by " && ", and the one
// folder of a known location. `home` is the user's home folder.
Built build(const core::FinderQuery& query, personal::TimePoint now,
            const personal::GregorianCalendar& calendar, const std::filesystem::path& home);

// The folder of a location ("downloads", "desktop", ...), compared in lower case; nothing for
// an unknown one.
std::optional<std::string> scopeDirectory(std::string_view location,
                                          const std::filesystem::path& home);

// The lower-case extensions a hit must have: a category's, or the one type itself; nothing for
// "folder", "app" or no type.
std::optional<std::set<std::string, std::less<>>> expectedExtensions(
    const std::optional<std::string>& fileType);

// A path with a component that begins with "." or "build-", or is a noise folder
// ("node_modules", ".git", "DerivedData", ...).
bool isNoisyPath(std::string_view path);

// Blanks and line ends collapsed to one blank; then "\\" doubled and "'" escaped as "\\'".
std::string escapeLiteral(std::string_view text);

// "CAST(\"2026-11-22 00:00:00 +0000\", \"NSDate\")": the literal of an instant in UTC.
std::string dateLiteral(personal::TimePoint instant);

}  // namespace nuvrel::desktop::FinderQueryBuilder
