#include "platform/linux/vdir_calendar_store.h"

#include <algorithm>
#include <map>
#include <system_error>

#include "base/files.h"
#include "base/regex.h"
#include "base/text.h"
#include "personal/timer_capability.h"
#include "platform/linux/ical_library.h"

namespace nuvrel::platform {
namespace {

namespace fs = std::filesystem;
using personal::StoredEvent;
using personal::TimePoint;

// Repeating events are expanded at most this far, whatever the rule says.
constexpr int maxOccurrences = 100000;

// A vdir's own metadata files (vdirsyncer's "displayname" and "color"), else its name.
struct FolderInfo {
    std::string name;
    std::optional<std::string> colorHex;
};

FolderInfo folderInfo(const fs::path& folder) {
    static const base::Regex hexColor(R"(^#[0-9A-Fa-f]{6})");
    FolderInfo info{folder.filename().string(), std::nullopt};
    if (const auto name = base::readFile(folder / "displayname")) {
        const std::string trimmed = base::text::trim(*name);
        if (!trimmed.empty()) info.name = trimmed;
    }
    if (const auto color = base::readFile(folder / "color")) {
        const std::string trimmed = base::text::trim(*color);
        if (hexColor.search(trimmed)) info.colorHex = base::text::upper(trimmed.substr(0, 7));
    }
    return info;
}

std::string identifierOf(const fs::path& file, std::optional<TimePoint> occurrence) {
    std::string identifier = file.string();
    if (occurrence)
        identifier += "#" + std::to_string(std::chrono::duration_cast<std::chrono::seconds>(
                                               occurrence->time_since_epoch())
                                               .count());
    return identifier;
}

StoredEvent stored(const IcsItem& item, TimePoint start, TimePoint end, const fs::path& file,
                   std::optional<TimePoint> occurrence, const FolderInfo& folder) {
    return StoredEvent{.identifier = identifierOf(file, occurrence),
                       .title = item.summary,
                       .location = item.location,
                       .start = start,
                       .end = end,
                       .isAllDay = item.isAllDay,
                       .calendarName = folder.name,
                       .colorHex = folder.colorHex};
}

bool overlaps(TimePoint start, TimePoint end, TimePoint from, TimePoint to) {
    // An event of no length counts when it starts inside the interval.
    return start < to && (end > from || (end == start && start >= from));
}

// Every occurrence of a repeating item that overlaps [from, to), without those that EXDATE
// removes or a RECURRENCE-ID item replaces.
void expand(const IcsItem& master, const std::set<TimePoint>& moved, TimePoint from, TimePoint to,
            const personal::GregorianCalendar& calendar,
            const std::function<void(TimePoint, TimePoint)>& add) {
    icalrecurrencetype rule = ical().recurrencetypeFromString(master.rrule->c_str());
    if (rule.freq == ICAL_NO_RECURRENCE) return;
    icalrecur_iterator* iterator = ical().recurIteratorNew(rule, master.startTime);
    if (!iterator) return;
    const auto length = master.end - *master.start;
    for (int n = 0; n < maxOccurrences; ++n) {
        icaltimetype next = ical().recurIteratorNext(iterator);
        if (ical().timeIsNullTime(next)) break;
        next.zone = master.startTime.zone;
        std::optional<TimePoint> start;
        if (next.is_date) {
            start = calendar.date(next.year, next.month, next.day);
        } else if (!next.zone && !ical().timeIsUtc(next)) {
            start = calendar.date(next.year, next.month, next.day, next.hour, next.minute);
        } else {
            start = std::chrono::system_clock::from_time_t(ical().timeAsTimetWithZone(
                next, next.zone ? next.zone : ical().timezoneGetUtcTimezone()));
        }
        if (!start) continue;
        if (*start >= to) break;
        if (master.exdates.contains(*start) || moved.contains(*start)) continue;
        // All-day occurrences span calendar days, whatever the day's length.
        TimePoint end = *start + length;
        if (master.isAllDay) {
            const auto days = std::chrono::round<std::chrono::days>(length).count();
            end = calendar.addingDays(*start, static_cast<int>(days)).value_or(end);
        }
        if (overlaps(*start, end, from, to)) add(*start, end);
    }
    ical().recurIteratorFree(iterator);
}

}  // namespace

VdirCalendarStore::VdirCalendarStore(VdirCalendarFolders folders,
                                     std::shared_ptr<IcsFolderCache> cache)
    : folders_(std::move(folders)), cache_(std::move(cache)) {}

std::vector<fs::path> VdirCalendarStore::allFolders() const {
    std::vector<fs::path> all = folders_.calendars;
    if (std::find(all.begin(), all.end(), folders_.newEvents) == all.end())
        all.push_back(folders_.newEvents);
    return all;
}

std::vector<StoredEvent> VdirCalendarStore::events(TimePoint from, TimePoint to) {
    const personal::GregorianCalendar& calendar = cache_->calendar();
    std::vector<StoredEvent> found;
    for (const fs::path& folder : allFolders()) {
        const FolderInfo info = folderInfo(folder);
        for (const auto& file : cache_->files(folder)) {
            // Moved instances of a series, by the series' UID.
            std::map<std::string, std::set<TimePoint>> moved;
            for (const IcsItem& item : file->events) {
                if (item.recurrenceID) moved[item.uid].insert(*item.recurrenceID);
            }
            for (const IcsItem& item : file->events) {
                if (item.recurrenceID) {
                    if (overlaps(*item.start, item.end, from, to))
                        found.push_back(stored(item, *item.start, item.end, file->path,
                                               item.recurrenceID, info));
                } else if (item.rrule) {
                    expand(item, moved[item.uid], from, to, calendar,
                           [&](TimePoint start, TimePoint end) {
                               found.push_back(stored(item, start, end, file->path, start, info));
                           });
                } else if (overlaps(*item.start, item.end, from, to)) {
                    found.push_back(
                        stored(item, *item.start, item.end, file->path, std::nullopt, info));
                }
            }
        }
    }
    return found;
}

icalproperty* zonedTimeProperty(icalproperty_kind kind, TimePoint when, bool isDate,
                                const personal::GregorianCalendar& calendar,
                                icalcomponent* vcalendar) {
    icalproperty* property = ical().propertyNew(kind);
    const personal::DateParts parts = calendar.parts(when);
    if (isDate) {
        icaltimetype date = ical().timeNullDate();
        date.year = parts.year;
        date.month = parts.month;
        date.day = parts.day;
        ical().propertySetValue(property, ical().valueNewDate(date));
        return property;
    }
    icaltimezone* zone = ical().timezoneGetBuiltinTimezone(calendar.zoneID().c_str());
    if (!zone) {
        const time_t seconds = std::chrono::system_clock::to_time_t(when);
        ical().propertySetValue(property, ical().valueNewDatetime(ical().timeFromTimetWithZone(
                                              seconds, 0, ical().timezoneGetUtcTimezone())));
        return property;
    }
    // The TZID as other calendars write it ("Asia/Seoul"), not with libical's own prefix.
    const char* tzid = calendar.zoneID().c_str();
    if (!ical().componentGetFirstComponent(vcalendar, ICAL_VTIMEZONE_COMPONENT)) {
        icalcomponent* vtimezone = ical().componentNewClone(ical().timezoneGetComponent(zone));
        if (icalproperty* id = ical().componentGetFirstProperty(vtimezone, ICAL_TZID_PROPERTY))
            ical().propertySetTzid(id, tzid);
        ical().componentAddComponent(vcalendar, vtimezone);
    }
    icaltimetype local = ical().timeNullTime();
    local.year = parts.year;
    local.month = parts.month;
    local.day = parts.day;
    local.hour = parts.hour;
    local.minute = parts.minute;
    ical().propertySetValue(property, ical().valueNewDatetime(local));
    ical().propertyAddParameter(property, ical().parameterNewTzid(tzid));
    return property;
}

void writeCalendarFile(const fs::path& path, icalcomponent* vcalendar) {
    char* text = ical().componentAsIcalStringR(vcalendar);
    const std::string bytes(text ? text : "");
    free(text);
    base::writeFileAtomically(path, bytes);
}

std::optional<StoredEvent> VdirCalendarStore::addEvent(const personal::NewEvent& event) {
    const personal::GregorianCalendar& calendar = cache_->calendar();
    icalcomponent* vcalendar = ical().componentNew(ICAL_VCALENDAR_COMPONENT);
    ical().componentAddProperty(vcalendar, ical().propertyNewVersion("2.0"));
    ical().componentAddProperty(vcalendar, ical().propertyNewProdid("-//Nuvrel//Nuvrel//EN"));
    icalcomponent* vevent = ical().componentNew(ICAL_VEVENT_COMPONENT);
    const std::string uid = base::text::lower(personal::makeUUIDString());
    ical().componentAddProperty(vevent, ical().propertyNewUid(uid.c_str()));
    ical().componentAddProperty(
        vevent, ical().propertyNewDtstamp(ical().timeFromTimetWithZone(
                    std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()), 0,
                    ical().timezoneGetUtcTimezone())));
    ical().componentAddProperty(vevent, ical().propertyNewSummary(event.title.c_str()));
    ical().componentAddProperty(vevent, zonedTimeProperty(ICAL_DTSTART_PROPERTY, event.start,
                                                          event.isAllDay, calendar, vcalendar));
    ical().componentAddProperty(vevent, zonedTimeProperty(ICAL_DTEND_PROPERTY, event.end,
                                                          event.isAllDay, calendar, vcalendar));
    ical().componentAddComponent(vcalendar, vevent);
    const fs::path path = folders_.newEvents / (uid + ".ics");
    try {
        writeCalendarFile(path, vcalendar);
    } catch (...) {
        ical().componentFree(vcalendar);
        throw;
    }
    ical().componentFree(vcalendar);
    IcsItem item;
    item.summary = event.title;
    item.isAllDay = event.isAllDay;
    return stored(item, event.start, event.end, path, std::nullopt, folderInfo(folders_.newEvents));
}

std::optional<std::string> VdirCalendarStore::removeEvent(const std::string& identifier) {
    const auto hash = identifier.rfind('#');
    const fs::path path = identifier.substr(0, hash);
    // Only files of our folders are ever touched.
    const auto folders = allFolders();
    if (std::find(folders.begin(), folders.end(), path.parent_path()) == folders.end())
        return std::nullopt;
    const auto text = base::readFile(path);
    if (!text) return std::nullopt;
    const auto file = parseIcs(*text, path, cache_->calendar());
    if (!file || file->events.empty()) return std::nullopt;
    if (hash == std::string::npos) {
        const std::string title = file->events.front().summary;
        std::error_code error;
        if (!fs::remove(path, error) && error) throw fs::filesystem_error("remove", path, error);
        return title;
    }

    // One occurrence of a series: an EXDATE on the series, and its moved instance goes.
    const TimePoint occurrence{std::chrono::seconds(std::stoll(identifier.substr(hash + 1)))};
    icalcomponent* root = file->root.get();
    // The components stand in the order of the parsed items.
    std::optional<std::string> title;
    icalcomponent* master = nullptr;
    const IcsItem* series = nullptr;
    std::vector<icalcomponent*> replaced;
    std::size_t index = 0;
    for (icalcomponent* vevent = ical().componentGetFirstComponent(root, ICAL_VEVENT_COMPONENT);
         vevent && index < file->events.size();
         vevent = ical().componentGetNextComponent(root, ICAL_VEVENT_COMPONENT), ++index) {
        const IcsItem& item = file->events[index];
        if (!item.recurrenceID && item.rrule) {
            master = vevent;
            series = &item;
        } else if (item.recurrenceID == occurrence) {
            title = item.summary;
            replaced.push_back(vevent);
        }
    }
    if (!master) return std::nullopt;
    if (!title) title = series->summary;
    for (icalcomponent* vevent : replaced) {
        ical().componentRemoveComponent(root, vevent);
        ical().componentFree(vevent);
    }
    icalproperty* exdate = ical().propertyNew(ICAL_EXDATE_PROPERTY);
    const icaltimetype start = series->startTime;
    icaltimetype excluded;
    if (start.is_date) {
        const personal::DateParts parts = cache_->calendar().parts(occurrence);
        excluded = ical().timeNullDate();
        excluded.year = parts.year;
        excluded.month = parts.month;
        excluded.day = parts.day;
    } else if (start.zone) {
        excluded = ical().timeFromTimetWithZone(std::chrono::system_clock::to_time_t(occurrence), 0,
                                                const_cast<icaltimezone*>(start.zone));
        excluded.zone = nullptr;
        ical().propertyAddParameter(
            exdate,
            ical().parameterNewTzid(ical().timezoneGetTzid(const_cast<icaltimezone*>(start.zone))));
    } else {
        excluded = ical().timeFromTimetWithZone(std::chrono::system_clock::to_time_t(occurrence), 0,
                                                ical().timezoneGetUtcTimezone());
    }
    ical().propertySetValue(
        exdate, start.is_date ? ical().valueNewDate(excluded) : ical().valueNewDatetime(excluded));
    ical().componentAddProperty(master, exdate);
    writeCalendarFile(path, root);
    return title;
}

VdirCalendarFolders calendarFoldersFromSettings(const fs::path& dataHome,
                                                const std::string& calendarFolders,
                                                const std::string& newEventFolder) {
    VdirCalendarFolders folders;
    const fs::path root = dataHome / "nuvrel" / "calendars";
    std::string_view rest = calendarFolders;
    while (!rest.empty()) {
        const auto colon = rest.find(':');
        const std::string folder = base::text::trim(rest.substr(0, colon));
        if (!folder.empty()) folders.calendars.emplace_back(folder);
        rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
    }
    if (folders.calendars.empty()) {
        std::error_code error;
        for (fs::directory_iterator it(root, error), end; !error && it != end; it.increment(error))
            if (it->is_directory()) folders.calendars.push_back(it->path());
        std::sort(folders.calendars.begin(), folders.calendars.end());
    }
    folders.newEvents = !newEventFolder.empty() ? fs::path(newEventFolder)
                        : !calendarFolders.empty() && !folders.calendars.empty()
                            ? folders.calendars.front()
                            : root / "personal";
    return folders;
}

}  // namespace nuvrel::platform
