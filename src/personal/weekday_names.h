#pragma once
// The weekdays by name, Monday first, in the languages a query may use them in. The English
// word is also the tail of the date tokens ("next_friday").

#include <array>
#include <string_view>

namespace nuvrel::personal {

struct WeekdayName {
    std::string_view korean;
    std::string_view japanese;
    std::string_view chinese;
    std::string_view english;
};

inline constexpr std::array<WeekdayName, 7> weekdayNames{{
    {"월요일", "月曜日", "星期一", "monday"},
    {"화요일", "火曜日", "星期二", "tuesday"},
    {"수요일", "水曜日", "星期三", "wednesday"},
    {"목요일", "木曜日", "星期四", "thursday"},
    {"금요일", "金曜日", "星期五", "friday"},
    {"토요일", "土曜日", "星期六", "saturday"},
    {"일요일", "日曜日", "星期日", "sunday"},
}};

}  // namespace nuvrel::personal
