#pragma once
// The parsed iCalendar files of vdir folders (one item per ".ics" file, as vdirsyncer, khal,
// todoman and Evolution's file calendars keep them), cached by each file's modification time
// and size, so that a query over an unchanged folder parses nothing. Writers of vdir folders
// replace files by renaming, which changes the folder's own time: while that stays the same,
// the folder's files are not looked at one by one.
//
// A file that does not parse, or whose items lack their start, is skipped with one diagnostic
// line naming the file (never its text) and counted; it is never rewritten.
//
// Thread-safe: one mutex around the cache, never held while a caller uses the result.

#include <libical/ical.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/diagnostics.h"
#include "personal/gregorian_calendar.h"

namespace nuvrel::platform {

// One VEVENT or VTODO of a file, with its times read in the calendar's zone (floating times
// and dates as local ones, TZID through the file's VTIMEZONE).
struct IcsItem {
    std::string uid;
    std::string summary;
    std::optional<std::string> location;
    bool isAllDay = false;
    std::optional<personal::TimePoint> start;  // DTSTART; a VTODO may lack it
    // DTSTART as written, for expanding the rule; its zone lives as long as the file.
    icaltimetype startTime{};
    personal::TimePoint end{};  // DTEND, or start plus DURATION (or a day)
    std::optional<personal::TimePoint> recurrenceID;
    // RRULE text, when the item repeats.
    std::optional<std::string> rrule;
    std::set<personal::TimePoint> exdates;
    // VTODO: due date parts, and whether it is done.
    std::optional<personal::DateParts> due;
    bool dueHasTime = false;
    bool completed = false;
};

struct IcsFile {
    std::filesystem::path path;
    // The parsed text; the items' zones point into it.
    std::shared_ptr<icalcomponent> root;
    std::vector<IcsItem> events;
    std::vector<IcsItem> todos;
};

class IcsFolderCache {
public:
    explicit IcsFolderCache(personal::GregorianCalendar calendar,
                            base::Diagnostics diagnostics = {});

    // The parsed ".ics" files of the folder; a missing folder has none.
    std::vector<std::shared_ptr<const IcsFile>> files(const std::filesystem::path& folder);
    // Files skipped so far because they did not parse or had no start.
    std::size_t skippedFileCount() const;
    const personal::GregorianCalendar& calendar() const { return calendar_; }

private:
    struct Entry {
        std::int64_t modifiedNs = 0;
        std::int64_t size = 0;
        std::shared_ptr<const IcsFile> file;  // null for a skipped file
    };
    struct Folder {
        std::int64_t modifiedNs = 0;
        std::vector<std::shared_ptr<const IcsFile>> files;
    };

    personal::GregorianCalendar calendar_;
    base::Diagnostics diagnostics_;
    mutable std::mutex mutex_;
    std::unordered_map<std::string, Entry> entries_;
    std::unordered_map<std::string, Folder> folders_;
    std::size_t skipped_ = 0;
};

// Parses one iCalendar text; nothing when it does not parse or an event has no DTSTART.
std::shared_ptr<IcsFile> parseIcs(const std::string& text, const std::filesystem::path& path,
                                  const personal::GregorianCalendar& calendar);

}  // namespace nuvrel::platform
