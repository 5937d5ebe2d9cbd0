#pragma once
// Events as iCalendar files in vdir folders: one VEVENT per ".ics" file, read and written with
// libical, so that khal, vdirsyncer and Evolution's file calendars see the same data.
//
// Queries cover every folder, expand repeating events (RRULE, EXDATE, moved instances by
// RECURRENCE-ID) over the asked interval and honour TZID and all-day dates. A new event is
// written atomically into the folder for new events, which is created on the first write.
// A removal deletes exactly the file of the event; of a repeating event, it adds an EXDATE
// for that one occurrence instead.

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "personal/calendar_store.h"
#include "platform/linux/ics_folder_cache.h"

namespace nuvrel::platform {

struct VdirCalendarFolders {
    // Read by queries; the folder for new events is read too.
    std::vector<std::filesystem::path> calendars;
    std::filesystem::path newEvents;
};

class VdirCalendarStore final : public personal::CalendarStore {
public:
    VdirCalendarStore(VdirCalendarFolders folders, std::shared_ptr<IcsFolderCache> cache);

    bool hasAccess() override { return true; }
    std::vector<personal::StoredEvent> events(personal::TimePoint start,
                                              personal::TimePoint end) override;
    std::optional<personal::StoredEvent> addEvent(const personal::NewEvent& event) override;
    std::optional<std::string> removeEvent(const std::string& identifier) override;

private:
    std::vector<std::filesystem::path> allFolders() const;

    VdirCalendarFolders folders_;
    std::shared_ptr<IcsFolderCache> cache_;
};

// The folders of the settings: `calendarFolders` is a ":"-separated list (empty: every folder
// under $XDG_DATA_HOME/nuvrel/calendars/); new events go to `newEventFolder`, else the first
// listed folder, else ".../calendars/personal".
VdirCalendarFolders calendarFoldersFromSettings(const std::filesystem::path& dataHome,
                                                const std::string& calendarFolders,
                                                const std::string& newEventFolder);

// An iCalendar date-time property value in the calendar's zone, with the zone's VTIMEZONE
// added to the calendar component when libical knows the zone (UTC otherwise).
icalproperty* zonedTimeProperty(icalproperty_kind kind, personal::TimePoint when, bool isDate,
                                const personal::GregorianCalendar& calendar,
                                icalcomponent* vcalendar);

// Writes a VCALENDAR holding `component` to `path` atomically.
void writeCalendarFile(const std::filesystem::path& path, icalcomponent* vcalendar);

}  // namespace nuvrel::platform
