#include "core/slot_enums.h"

#include <gtest/gtest.h>

#include <string_view>

namespace nuvrel::core {
namespace {

TEST(SlotEnums, VocabulariesHaveTheirFullSize) {
    EXPECT_EQ(SlotEnums::finderFileType().size(), 48u);
    EXPECT_EQ(SlotEnums::finderLocation().size(), 10u);
    EXPECT_EQ(SlotEnums::finderDateRange().size(), 10u);
    EXPECT_EQ(SlotEnums::calendarDateRange().size(), 24u);
    EXPECT_EQ(SlotEnums::messageChannel().size(), 3u);
    EXPECT_EQ(SlotEnums::musicAction().size(), 4u);
}

TEST(SlotEnums, CalendarRangesHaveBothWeekdayFormsAndLookForward) {
    const auto& calendar = SlotEnums::calendarDateRange();
    for (std::string_view day :
         {"monday", "tuesday", "wednesday", "thursday", "friday", "saturday", "sunday"}) {
        EXPECT_TRUE(calendar.contains("this_" + std::string(day))) << day;
        EXPECT_TRUE(calendar.contains("next_" + std::string(day))) << day;
        EXPECT_FALSE(calendar.contains(day)) << day;
    }
    EXPECT_TRUE(calendar.contains(std::string_view("day_after_tomorrow")));
    EXPECT_TRUE(calendar.contains("next_weekend"));
    // The file-search and calendar vocabularies differ on purpose.
    EXPECT_FALSE(calendar.contains("last_week"));
    EXPECT_TRUE(SlotEnums::finderDateRange().contains("last_week"));
    EXPECT_FALSE(SlotEnums::finderDateRange().contains("next_week"));
    EXPECT_TRUE(SlotEnums::finderDateRange().contains("recent_30_days"));
}

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
