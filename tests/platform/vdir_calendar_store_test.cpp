#include "platform/linux/vdir_calendar_store.h"

#include <gtest/gtest.h>

#include <fstream>

#include "personal/calendar_capabilities.h"
#include "personal/event_item.h"
#include "personal/reminder_capability.h"
#include "platform/linux/vdir_reminder_store.h"
#include "support/temporary_home.h"

namespace nuvrel::platform {
namespace {

namespace fs = std::filesystem;

void write(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

std::string vcalendar(const std::string& body) {
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//test//EN\r\n" + body + "END:VCALENDAR\r\n";
}

// Europe/Berlin as khal and Evolution write it beside a TZID.
const std::string berlinZone =
    "BEGIN:VTIMEZONE\r\nTZID:Europe/Berlin\r\n"
    "BEGIN:DAYLIGHT\r\nTZOFFSETFROM:+0100\r\nTZOFFSETTO:+0200\r\nTZNAME:CEST\r\n"
    "DTSTART:19700329T020000\r\nRRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU\r\nEND:DAYLIGHT\r\n"
    "BEGIN:STANDARD\r\nTZOFFSETFROM:+0200\r\nTZOFFSETTO:+0100\r\nTZNAME:CET\r\n"
    "DTSTART:19701025T030000\r\nRRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU\r\nEND:STANDARD\r\n"
    "END:VTIMEZONE\r\n";

class VdirCalendarStoreTest : public testing::Test {
protected:
    test::TemporaryHome home;
    fs::path work = home.path() / "cal" / "work";
    fs::path own = home.path() / "cal" / "personal";
    personal::GregorianCalendar calendar{"America/New_York", "en_US"};
    std::shared_ptr<IcsFolderCache> cache = std::make_shared<IcsFolderCache>(calendar);
    VdirCalendarStore store{{{work, own}, own}, cache};

    void SetUp() override {
        write(work / "displayname", "Work\n");
        write(work / "color", "#3a87ad\n");
        // 09:00 Berlin in summer time is 03:00 in New York.
        write(work / "zoned.ics",
              vcalendar(berlinZone +
                        "BEGIN:VEVENT\r\nUID:zoned\r\nSUMMARY:Standup\r\nLOCATION:  Room 4 \r\n"
                        "DTSTART;TZID=Europe/Berlin:20260610T090000\r\n"
                        "DTEND;TZID=Europe/Berlin:20260610T093000\r\nEND:VEVENT\r\n"));
        write(work / "allday.ics",
              vcalendar(
                  // A byte of another encoding comes back as U+FFFD.
                  "BEGIN:VEVENT\r\nUID:allday\r\nSUMMARY:Offsite\xff\r\n"
                  "DTSTART;VALUE=DATE:20260611\r\nDTEND;VALUE=DATE:20260613\r\nEND:VEVENT\r\n"));
        // Weekly on Wednesdays at 14:00 local, 3 June skipped, 17 June moved to the Thursday.
        write(own / "weekly.ics",
              vcalendar("BEGIN:VEVENT\r\nUID:weekly\r\nSUMMARY:Piano\r\nDTSTART:20260527T140000\r\n"
                        "DTEND:20260527T150000\r\nRRULE:FREQ=WEEKLY;COUNT=10\r\n"
                        "EXDATE:20260603T140000\r\nEND:VEVENT\r\n"
                        "BEGIN:VEVENT\r\nUID:weekly\r\nSUMMARY:Piano (moved)\r\n"
                        "RECURRENCE-ID:20260617T140000\r\nDTSTART:20260618T160000\r\n"
                        "DTEND:20260618T170000\r\nEND:VEVENT\r\n"));
        write(own / "broken.ics", "BEGIN:VCALENDAR\r\nthis is not iCalendar\r\n");
        write(own / "nostart.ics",
              vcalendar("BEGIN:VEVENT\r\nUID:nostart\r\nSUMMARY:Secret\r\nEND:VEVENT\r\n"));
    }

    std::vector<std::string> listing(int fromDay, int toDay) {
        auto events =
            store.events(*calendar.date(2026, 6, fromDay), *calendar.date(2026, 6, toDay));
        personal::sortByStart(events);
        std::vector<std::string> lines;
        for (const auto& event : events)
            lines.push_back(calendar.format(event.start, "MM-dd HH:mm", "en_US_POSIX") + " " +
                            event.title + (event.isAllDay ? " (all day)" : ""));
        return lines;
    }
};

TEST_F(VdirCalendarStoreTest, QueriesExpandSeriesAndHonourZonesAndAllDayDates) {
    using Lines = std::vector<std::string>;
    EXPECT_EQ(listing(1, 8), Lines{});
    EXPECT_EQ(listing(8, 15), (Lines{"06-10 03:00 Standup", "06-10 14:00 Piano",
                                     "06-11 00:00 Offsite\uFFFD (all day)"}));
    EXPECT_EQ(listing(12, 13), (Lines{"06-11 00:00 Offsite\uFFFD (all day)"}));
    EXPECT_EQ(listing(15, 22), (Lines{"06-18 16:00 Piano (moved)"}));
    EXPECT_EQ(listing(22, 29), (Lines{"06-24 14:00 Piano"}));
    // Broken and start-less files are skipped, once each, and counted.
    EXPECT_EQ(cache->skippedFileCount(), 2u);

    const auto standup = store.events(*calendar.date(2026, 6, 10), *calendar.date(2026, 6, 10, 4));
    ASSERT_EQ(standup.size(), 1u);
    EXPECT_EQ(standup[0].calendarName, "Work");
    EXPECT_EQ(standup[0].colorHex, "#3A87AD");
}

TEST_F(VdirCalendarStoreTest, AddQueryAndDeleteRoundTripThroughTheCapabilities) {
    const auto fileCount = [](const fs::path& folder) {
        return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
    };
    personal::Clock clock{[&] { return *calendar.date(2026, 6, 9, 16); }, calendar};
    auto shared = std::shared_ptr<personal::CalendarStore>(&store, [](auto*) {});
    const personal::CalendarAddEventCapability add{core::AppLanguage::en, shared, clock};
    const auto added = add.execute({"Dentist", "tomorrow", 15, 0, true});
    const auto* card = added.get<core::CapabilityResult::Events>();
    ASSERT_TRUE(card && card->events.size() == 1);
    EXPECT_EQ(card->events[0].startTime, "15:00");
    EXPECT_EQ(fileCount(own), 4);

    personal::CalendarQueryCapability query(core::AppLanguage::en, shared, clock);
    const auto listed = query.execute(core::CalendarRange{"tomorrow", std::nullopt});
    const auto* day = listed.get<core::CapabilityResult::Events>();
    ASSERT_TRUE(day);
    EXPECT_EQ(day->dayLabel, "Tomorrow, June 10");
    ASSERT_EQ(day->events.size(), 3u);
    EXPECT_EQ(day->events[2].title, "Dentist");
    EXPECT_EQ(day->events[2].location, std::nullopt);
    EXPECT_EQ(day->events[0].location, "Room 4");

    const personal::CalendarDeleteCapability remove{core::AppLanguage::en, shared, clock};
    EXPECT_FALSE(remove.findCandidates({"tomorrow", "nothing like it", true}));
    const auto found = remove.findCandidates({"tomorrow", "dentist", true});
    ASSERT_TRUE(found);
    const auto rows = found->get<core::CapabilityResult::CalendarDeleteConfirmation>()->events;
    ASSERT_EQ(rows.size(), 1u);
    const auto deleted = [&](const std::string& id) {
        return remove.confirmDelete(id).get<core::CapabilityResult::CalendarEventDeleted>()->title;
    };
    EXPECT_EQ(deleted(*rows[0].eventIdentifier), "Dentist");
    EXPECT_EQ(fileCount(own), 3);
    EXPECT_EQ(deleted(*rows[0].eventIdentifier), "");

    // One occurrence of a series goes by an EXDATE; the series and its file stay.
    const auto piano = store.events(*calendar.date(2026, 6, 24), *calendar.date(2026, 6, 25));
    ASSERT_EQ(piano.size(), 1u);
    EXPECT_EQ(deleted(piano[0].identifier), "Piano");
    EXPECT_EQ(listing(22, 29), std::vector<std::string>{});
    EXPECT_EQ(listing(8, 15).size(), 3u);
    EXPECT_EQ(fileCount(own), 3);
}

TEST(VdirReminderStore, AddsListsAndRemovesTodos) {
    test::TemporaryHome home;
    const personal::GregorianCalendar calendar("Asia/Seoul", "ko_KR");
    auto store = std::make_shared<VdirReminderStore>(home.path() / "reminders",
                                                     std::make_shared<IcsFolderCache>(calendar));
    personal::Clock clock{[&] { return *calendar.date(2026, 3, 7, 16); }, calendar};
    const personal::ReminderCapability reminders{core::AppLanguage::en, store, clock, nullptr};
    const auto withTime = reminders.execute({"call mom", "today", 15, 0, false});
    EXPECT_EQ(withTime.get<core::CapabilityResult::ReminderSet>()->fireDate,
              calendar.date(2026, 3, 8, 15));
    reminders.execute({"buy milk", "today", std::nullopt, 0, false});
    reminders.execute({"pay rent", "tomorrow", 9, 0, true});

    const auto found = reminders.findCandidates({""});
    ASSERT_TRUE(found);
    const auto rows = found->get<core::CapabilityResult::ReminderDeleteConfirmation>()->reminders;
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].title, "buy milk");  // due today, no time: the start of the day
    EXPECT_EQ(rows[1].title, "pay rent");
    EXPECT_EQ(rows[2].title, "call mom");
    EXPECT_EQ(rows[2].dueLabel, "3/8, 15:00");
    EXPECT_EQ(reminders.confirmDelete(rows[2].identifier)
                  .get<core::CapabilityResult::ReminderDeleted>()
                  ->title,
              "call mom");
    EXPECT_EQ(store->incompleteReminders().size(), 2u);
    EXPECT_FALSE(reminders.findCandidates({"mom"}));
}

}  // namespace
}  // namespace nuvrel::platform
