#include "desktop/finder_query_builder.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "core/slot_enums.h"

namespace nuvrel::desktop {
namespace {

using namespace FinderQueryBuilder;

TEST(FinderQueryBuilderCategories, CategoriesAreFileTypesOfPlainDistinctExtensions) {
    const auto& rows = categoryExtensions();
    std::set<std::string_view> allExtensions;
    std::size_t total = 0;
    for (const CategoryExtensions& row : rows) {
        // Every category is itself a file type the router may send.
        EXPECT_TRUE(core::SlotEnums::finderFileType().contains(row.category)) << row.category;
        for (const std::string_view extension : row.extensions) {
            ++total;
            allExtensions.insert(extension);
            EXPECT_FALSE(extension.empty());
            for (const char c : extension) {
                EXPECT_TRUE((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
                    << row.category << ": " << extension;
            }
        }
    }
    EXPECT_EQ(allExtensions.size(), total);  // no extension belongs to two categories
}

TEST(FinderQueryBuilderCategories, MembershipIsByExactCategoryAndExtension) {
    EXPECT_TRUE(categoryContains("image", "psd"));
    EXPECT_TRUE(categoryContains("image", "ai"));
    EXPECT_TRUE(categoryContains("document", "hwp"));
    EXPECT_TRUE(categoryContains("code", "c"));
    EXPECT_TRUE(categoryContains("archive", "7z"));
    EXPECT_FALSE(categoryContains("code", "cs"));
    EXPECT_FALSE(categoryContains("document", "xlsx"));
    EXPECT_FALSE(categoryContains("Image", "png"));
    EXPECT_FALSE(categoryContains("pdf", "pdf"));  // a plain extension is no category
    EXPECT_FALSE(categoryContains("", ""));

    ASSERT_NE(extensionsOfCategory("presentation"), nullptr);
    const auto& presentation = *extensionsOfCategory("presentation");
    EXPECT_EQ(std::vector<std::string_view>(presentation.begin(), presentation.end()),
              (std::vector<std::string_view>{"ppt", "pptx", "key"}));
    EXPECT_EQ(extensionsOfCategory("folder"), nullptr);
}

}  // namespace
}  // namespace nuvrel::desktop
