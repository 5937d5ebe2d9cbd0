#pragma once
// Turns a FinderQuery into a metadata search. For now it holds the file-type categories, which
// the slot validator also uses to tell a broad file type from a narrow one.

#include <array>
#include <span>
#include <string_view>

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

}  // namespace nuvrel::desktop::FinderQueryBuilder
