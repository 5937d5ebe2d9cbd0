#pragma once
// The closed vocabularies of the router's enumerated slots. Callers lower-case a slot value
// before testing membership. Each set is built once, on first use, and never changes.

#include <functional>
#include <set>
#include <string>

namespace nuvrel::core::SlotEnums {

// Ordered, with lookup by std::string_view as well as by std::string.
using Vocabulary = std::set<std::string, std::less<>>;

const Vocabulary& finderFileType();     // 48 file types and kinds ("pdf", "image", ...)
const Vocabulary& finderLocation();     // 10 folders ("downloads", ...)
const Vocabulary& finderDateRange();    // 10 ranges that look back ("last_week", ...)
const Vocabulary& calendarDateRange();  // 24 ranges that look forward ("next_week", ...)
const Vocabulary& messageChannel();     // "imessage", "sms", "mail"
const Vocabulary& musicAction();        // "play", "pause", "next", "prev"

}  // namespace nuvrel::core::SlotEnums
