#include "platform/linux/ics_folder_cache.h"

#include <libical/ical.h>
#include <sys/stat.h>

#include <system_error>

#include "base/diagnostics.h"
#include "base/files.h"
#include "base/text.h"
#include "platform/linux/ical_library.h"

namespace nuvrel::platform {
namespace {

namespace fs = std::filesystem;
using personal::TimePoint;

struct ComponentFree {
    void operator()(icalcomponent* component) const {
        if (component) ical().componentFree(component);
    }
};

// An iCalendar time as an instant: a date or a floating time is read in the user's calendar,
// a zoned one by its zone (the file's VTIMEZONE, else the zone database of that name).
std::optional<TimePoint> instant(icaltimetype time, const personal::GregorianCalendar& calendar) {
    if (ical().timeIsNullTime(time) || !ical().timeIsValidTime(time)) return std::nullopt;
    if (time.is_date) return calendar.date(time.year, time.month, time.day);
    if (!time.zone && !ical().timeIsUtc(time)) {
        const auto minute = calendar.date(time.year, time.month, time.day, time.hour, time.minute);
        if (!minute) return std::nullopt;
        return *minute + std::chrono::seconds(time.second);
    }
    const time_t seconds =
        ical().timeAsTimetWithZone(time, time.zone ? time.zone : ical().timezoneGetUtcTimezone());
    return std::chrono::system_clock::from_time_t(seconds);
}

// The time of a property, its TZID resolved through the component's calendar.
icaltimetype timeOf(icalproperty* property, icalcomponent* component) {
    if (!property) return ical().timeNullTime();
    return ical().propertyGetDatetimeWithComponent(property, component);
}

std::optional<IcsItem> readItem(icalcomponent* component,
                                const personal::GregorianCalendar& calendar, bool isEvent) {
    IcsItem item;
    if (const char* uid = ical().componentGetUid(component)) item.uid = uid;
    // A file may hold bytes of another encoding; cards and JSON output need UTF-8.
    if (const char* summary = ical().componentGetSummary(component))
        item.summary = base::text::validUtf8(summary);
    if (const char* location = ical().componentGetLocation(component))
        item.location = base::text::validUtf8(location);

    icalproperty* dtstart = ical().componentGetFirstProperty(component, ICAL_DTSTART_PROPERTY);
    const icaltimetype start = timeOf(dtstart, component);
    item.start = instant(start, calendar);
    if (isEvent && !item.start) return std::nullopt;
    item.isAllDay = dtstart && start.is_date;
    item.startTime = start;
    if (item.start) {
        icalproperty* dtend = ical().componentGetFirstProperty(component, ICAL_DTEND_PROPERTY);
        icalproperty* duration =
            ical().componentGetFirstProperty(component, ICAL_DURATION_PROPERTY);
        std::optional<TimePoint> end;
        if (dtend) {
            end = instant(timeOf(dtend, component), calendar);
        } else if (duration) {
            const icaldurationtype length = ical().propertyGetDuration(duration);
            end = *item.start + std::chrono::seconds(ical().durationtypeAsInt(length));
        } else if (item.isAllDay) {
            end = calendar.addingDays(*item.start, 1);
        }
        item.end = end && *end >= *item.start ? *end : *item.start;
    }
    if (icalproperty* recurrence =
            ical().componentGetFirstProperty(component, ICAL_RECURRENCEID_PROPERTY))
        item.recurrenceID = instant(timeOf(recurrence, component), calendar);
    if (icalproperty* rule = ical().componentGetFirstProperty(component, ICAL_RRULE_PROPERTY)) {
        icalrecurrencetype recurrence = ical().propertyGetRrule(rule);
        if (const char* text = ical().recurrencetypeAsString(&recurrence)) item.rrule = text;
    }
    for (icalproperty* exdate = ical().componentGetFirstProperty(component, ICAL_EXDATE_PROPERTY);
         exdate; exdate = ical().componentGetNextProperty(component, ICAL_EXDATE_PROPERTY)) {
        if (const auto when = instant(timeOf(exdate, component), calendar))
            item.exdates.insert(*when);
    }
    if (!isEvent) {
        if (icalproperty* due = ical().componentGetFirstProperty(component, ICAL_DUE_PROPERTY)) {
            const icaltimetype dueTime = timeOf(due, component);
            if (const auto when = instant(dueTime, calendar)) {
                item.due = calendar.parts(*when);
                item.dueHasTime = !dueTime.is_date;
            }
        }
        icalproperty* status = ical().componentGetFirstProperty(component, ICAL_STATUS_PROPERTY);
        item.completed =
            (status && ical().propertyGetStatus(status) == ICAL_STATUS_COMPLETED) ||
            ical().componentGetFirstProperty(component, ICAL_COMPLETED_PROPERTY) != nullptr;
    }
    return item;
}

}  // namespace

std::shared_ptr<IcsFile> parseIcs(const std::string& text, const fs::path& path,
                                  const personal::GregorianCalendar& calendar) {
    std::shared_ptr<icalcomponent> root(ical().parserParseString(text.c_str()), ComponentFree{});
    if (!root || ical().componentIsa(root.get()) != ICAL_VCALENDAR_COMPONENT) return nullptr;
    auto file = std::make_shared<IcsFile>();
    file->path = path;
    file->root = root;
    for (const auto& [kind, isEvent] :
         {std::pair{ICAL_VEVENT_COMPONENT, true}, std::pair{ICAL_VTODO_COMPONENT, false}}) {
        for (icalcomponent* component = ical().componentGetFirstComponent(root.get(), kind);
             component; component = ical().componentGetNextComponent(root.get(), kind)) {
            auto item = readItem(component, calendar, isEvent);
            if (!item) return nullptr;
            (isEvent ? file->events : file->todos).push_back(std::move(*item));
        }
    }
    if (file->events.empty() && file->todos.empty()) return nullptr;
    return file;
}

IcsFolderCache::IcsFolderCache(personal::GregorianCalendar calendar, base::Diagnostics diagnostics)
    : calendar_(std::move(calendar)), diagnostics_(std::move(diagnostics)) {}

namespace {

// Modification time in nanoseconds and size; nothing when the path cannot be read.
std::optional<std::pair<std::int64_t, std::int64_t>> stamp(const char* path) {
    struct stat info {};
    if (::stat(path, &info) != 0) return std::nullopt;
    return std::pair{
        static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1'000'000'000 + info.st_mtim.tv_nsec,
        static_cast<std::int64_t>(info.st_size)};
}

}  // namespace

std::vector<std::shared_ptr<const IcsFile>> IcsFolderCache::files(const fs::path& folder) {
    const std::string folderKey = folder.string();
    const auto folderStamp = stamp(folderKey.c_str());
    if (!folderStamp) return {};
    {
        std::lock_guard lock(mutex_);
        const auto known = folders_.find(folderKey);
        if (known != folders_.end() && known->second.modifiedNs == folderStamp->first)
            return known->second.files;
    }
    std::vector<std::shared_ptr<const IcsFile>> files;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        const fs::path& path = it->path();
        if (path.extension() != ".ics") continue;
        const std::string key = path.string();
        const auto fileStamp = stamp(key.c_str());
        if (!fileStamp) continue;
        {
            std::lock_guard lock(mutex_);
            const auto found = entries_.find(key);
            if (found != entries_.end() && found->second.modifiedNs == fileStamp->first &&
                found->second.size == fileStamp->second) {
                if (found->second.file) files.push_back(found->second.file);
                continue;
            }
        }
        const auto text = base::readFile(path);
        std::shared_ptr<const IcsFile> parsed = text ? parseIcs(*text, path, calendar_) : nullptr;
        std::lock_guard lock(mutex_);
        if (!parsed) {
            ++skipped_;
            diagnostics_.event("skipped an iCalendar file that does not parse: " +
                               path.filename().string());
        }
        entries_[key] = Entry{fileStamp->first, fileStamp->second, parsed};
        if (parsed) files.push_back(std::move(parsed));
    }
    std::lock_guard lock(mutex_);
    folders_[folderKey] = Folder{folderStamp->first, files};
    return files;
}

std::size_t IcsFolderCache::skippedFileCount() const {
    std::lock_guard lock(mutex_);
    return skipped_;
}

}  // namespace nuvrel::platform
