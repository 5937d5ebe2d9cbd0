// The iCalendar reader: a file either does not parse or every event in it has a start, an end
// not before it, and the text fields come back as valid UTF-8.

#include "base/text.h"
#include "fuzz_support.h"
#include "platform/linux/ics_folder_cache.h"

using namespace nuvrel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const personal::GregorianCalendar calendar("Europe/Berlin", "de_DE");
    const auto file = platform::parseIcs(std::string(fuzz::text(data, size)), "fuzz.ics", calendar);
    if (!file) return 0;
    for (const auto& event : file->events) {
        FUZZ_CHECK(event.start.has_value());
        FUZZ_CHECK(event.end >= *event.start);
    }
    for (const auto* items : {&file->events, &file->todos}) {
        for (const auto& item : *items) {
            FUZZ_CHECK(base::text::isValidUtf8(item.summary));
            if (item.location) FUZZ_CHECK(base::text::isValidUtf8(*item.location));
        }
    }
    return 0;
}
