#include "core/slot_enums.h"

#include <gtest/gtest.h>

#include <string_view>

namespace nuvrel::core {
namespace {

// The calendar vocabulary is built: every weekday in both forms, and the plain ranges.
TEST(SlotEnums, CalendarRangesHaveBothWeekdayFormsAndLookForward) {
    const auto& calendar = SlotEnums::calendarDateRange();
    for (std::string_view day :
         {"monday", "tuesday", "wednesday", "thursday", "friday", "saturday", "sunday"}) {
        EXPECT_TRUE(calendar.contains("this_" + std::string(day))) << day;
        EXPECT_TRUE(calendar.contains("next_" + std::string(day))) << day;
        EXPECT_FALSE(calendar.contains(day)) << day;
    }
    for (std::string_view range : {"day_after_tomorrow", "next_weekend", "next_month"}) {
        EXPECT_TRUE(calendar.contains(range)) << range;
    }
    // The file-search and calendar vocabularies differ on purpose.
    EXPECT_FALSE(calendar.contains("last_week"));
    EXPECT_TRUE(SlotEnums::finderDateRange().contains("last_week"));
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
