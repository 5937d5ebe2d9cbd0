#include "core/slot_enums.h"

#include <gtest/gtest.h>

#include <string_view>

namespace nuvrel::core {
namespace {

TEST(SlotEnums, MembershipIsExactText) {
    EXPECT_TRUE(SlotEnums::finderFileType().contains("hwpx"));
    EXPECT_TRUE(SlotEnums::finderFileType().contains("c"));
    EXPECT_TRUE(SlotEnums::finderFileType().contains("spreadsheet"));
    EXPECT_FALSE(SlotEnums::finderFileType().contains("PDF"));
    EXPECT_FALSE(SlotEnums::finderFileType().contains("jpeg"));
    EXPECT_TRUE(SlotEnums::finderLocation().contains("icloud"));
    EXPECT_FALSE(SlotEnums::finderLocation().contains("library"));
    EXPECT_TRUE(SlotEnums::messageChannel().contains("sms"));
    EXPECT_FALSE(SlotEnums::musicAction().contains("stop"));
}

}  // namespace
}  // namespace nuvrel::core
