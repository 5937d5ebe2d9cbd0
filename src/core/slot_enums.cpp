#include "core/slot_enums.h"

#include <string_view>

namespace nuvrel::core::SlotEnums {

const Vocabulary& finderFileType() {
    static const Vocabulary set{
        "hwp",   "hwpx",     "pdf",          "doc",         "docx",    "xls",    "xlsx",  "ppt",
        "pptx",  "key",      "pages",        "numbers",     "txt",     "md",     "csv",   "zip",
        "dmg",   "psd",      "ai",           "mp3",         "mp4",     "mov",    "jpg",   "png",
        "gif",   "py",       "js",           "html",        "ipynb",   "c",      "cpp",   "h",
        "java",  "swift",    "ts",           "json",        "css",     "sh",     "image", "video",
        "audio", "document", "presentation", "spreadsheet", "archive", "folder", "app",   "code",
    };
    return set;
}

const Vocabulary& finderLocation() {
    static const Vocabulary set{"downloads", "desktop",  "documents", "home",  "icloud",
                                "trash",     "pictures", "movies",    "music", "applications"};
    return set;
}

const Vocabulary& finderDateRange() {
    static const Vocabulary set{"today",      "yesterday",  "this_week",     "last_week",
                                "this_month", "last_month", "recent_7_days", "recent_30_days",
                                "this_year",  "last_year"};
    return set;
}

const Vocabulary& calendarDateRange() {
    // Built rather than listed, so that every weekday has both its "this_" and "next_" form.
    static const Vocabulary set = [] {
        Vocabulary tokens{"today",      "tomorrow",  "day_after_tomorrow", "yesterday",
                          "this_week",  "next_week", "this_weekend",       "next_weekend",
                          "this_month", "next_month"};
        for (std::string_view day :
             {"monday", "tuesday", "wednesday", "thursday", "friday", "saturday", "sunday"}) {
            for (std::string_view prefix : {"this_", "next_"}) {
                tokens.insert(std::string(prefix).append(day));
            }
        }
        return tokens;
    }();
    return set;
}

const Vocabulary& messageChannel() {
    static const Vocabulary set{"imessage", "sms", "mail"};
    return set;
}

const Vocabulary& musicAction() {
    static const Vocabulary set{"play", "pause", "next", "prev"};
    return set;
}

}  // namespace nuvrel::core::SlotEnums
