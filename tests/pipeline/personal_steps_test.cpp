// The cascade steps and routed intents of timers, reminders and calendars, on real calendar
// folders in a temporary home, with a fixed clock.
#include <gtest/gtest.h>

#include <filesystem>

#include "core/capability_result.h"
#include "personal/calendar_capabilities.h"
#include "pipeline/pipeline_test_support.h"
#include "platform/linux/vdir_calendar_store.h"
#include "platform/linux/vdir_reminder_store.h"
#include "support/temporary_home.h"

namespace nuvrel::pipeline {
namespace {

using core::IntentID;
using testing::reply;
using testing::routerReply;

// Notifications cannot be shown here without a desktop; this one keeps them pending.
class PendingNotifications : public personal::NotificationCenterProviding {
public:
    bool requestAuthorization() override { return true; }
    bool isAuthorized() override { return true; }
    void scheduleNotification(const std::string& id, const std::string&, const std::string& body,
                              std::chrono::seconds) override {
        pending.emplace_back(id, body);
    }
    int cancelPendingNotifications(std::string_view prefix) override {
        return static_cast<int>(std::erase_if(
            pending, [&](const auto& p) { return std::string_view(p.first).starts_with(prefix); }));
    }
    std::vector<std::pair<std::string, std::string>> pending;
};

class PersonalStepsTest : public ::testing::Test {
protected:
    test::TemporaryHome home;
    personal::GregorianCalendar calendar{"Asia/Seoul", "ko_KR"};
    personal::Clock clock{[this] { return *calendar.date(2026, 3, 7, 10); }, calendar};
    std::shared_ptr<platform::IcsFolderCache> cache =
        std::make_shared<platform::IcsFolderCache>(calendar);
    std::shared_ptr<PendingNotifications> notifications = std::make_shared<PendingNotifications>();
    std::shared_ptr<platform::VdirCalendarStore> events =
        std::make_shared<platform::VdirCalendarStore>(
            platform::VdirCalendarFolders{{}, home.path() / "calendars" / "personal"}, cache);
    std::shared_ptr<platform::VdirReminderStore> reminders =
        std::make_shared<platform::VdirReminderStore>(home.path() / "reminders", cache);

    testing::PipelineUnderTest pipelineWith(std::vector<testing::ScriptedBackend::Step> script) {
        auto made = testing::pipelineWith(
            std::move(script), {std::make_shared<testing::FakeCapability>(IntentID::webSearch),
                                std::make_shared<personal::CalendarQueryCapability>(
                                    core::AppLanguage::en, events, clock)});
        made.pipeline.timerCapability = {core::AppLanguage::en, notifications};
        made.pipeline.calendarStore = events;
        made.pipeline.reminderStore = reminders;
        made.pipeline.clock = clock;
        return made;
    }

    void SetUp() override {
        events->addEvent(
            {"Dentist", *calendar.date(2026, 3, 8, 15), *calendar.date(2026, 3, 8, 16), false});
        reminders->addReminder({"buy milk", {2026, 3, 7}, std::nullopt});
    }
};

TEST_F(PersonalStepsTest, TheCascadeGivesAQueryThatTwoStepsWantToTheEarlierOne) {
    struct Case {
        const char* query;
        const char* result;  // the case name; "webAnswer" when the router had it
    };
    const Case cases[] = {
        {"5분 타이머", "timerSet"},
        {"미리알림 타이머 취소", "timerCancelled"},       // a reminder deletion too
        {"5분 타이머 미리알림 추가해줘", "reminderSet"},  // the timer yields to the reminder
        {"remind me to call mom at 3pm", "reminderSet"},
        {"delete the milk reminder", "reminderDeleteConfirmation"},
        {"delete the dentist event tomorrow", "calendarDeleteConfirmation"},
        {"delete the yoga event tomorrow", "webAnswer"},  // nothing to delete: falls through
        {"add event Dentist tomorrow at 3pm", "events"},
        {"2+2", "calculation"},
    };
    for (const Case& c : cases) {
        auto made = pipelineWith({reply(routerReply(IntentID::unknown, 0.9))});
        const auto outcome = made.pipeline.run(c.query);
        ASSERT_TRUE(outcome.asResult()) << c.query;
        EXPECT_EQ(core::caseName(*outcome.asResult()), c.result) << c.query;
    }
    // One timer set and one cancelled; the reminder with a time rings through the same centre.
    ASSERT_EQ(notifications->pending.size(), 1u);
    EXPECT_TRUE(notifications->pending[0].first.starts_with("nuvrel.reminder."));
    EXPECT_EQ(notifications->pending[0].second, "call mom");
}

TEST_F(PersonalStepsTest, RoutedIntentsActOnlyOnWhatTheQueryHolds) {
    const auto run = [&](const char* query, IntentID intent, nlohmann::json slots) {
        auto made = pipelineWith({reply(routerReply(intent, 0.9, std::move(slots)))});
        return made.pipeline.run(query);
    };
    const auto listed = run("what's on my calendar tomorrow", IntentID::calendarQuery,
                            {{"date_range", "tomorrow"}});
    const auto* day = listed.asResult()->get<core::CapabilityResult::Events>();
    ASSERT_TRUE(day);
    EXPECT_EQ(day->dayLabel, "Tomorrow, March 8");
    ASSERT_EQ(day->events.size(), 1u);
    EXPECT_EQ(day->events[0].startTime, "15:00");

    // The invented date is dropped: the reminder is for today, rolled past 10:00 to tomorrow.
    const auto reminder = run("ping me about rent at 9am", IntentID::reminderSet,
                              {{"title", "rent"}, {"date", "friday"}, {"time", "9am"}});
    const auto* set = reminder.asResult()->get<core::CapabilityResult::ReminderSet>();
    ASSERT_TRUE(set);
    EXPECT_EQ(set->title, "rent");
    EXPECT_EQ(set->fireDate, calendar.date(2026, 3, 8, 9));

    const auto added =
        run("put lunch with Jo on next friday at 12:30", IntentID::calendarAdd,
            {{"title", "lunch with Jo"}, {"date", "next friday"}, {"time", "at 12:30"}});
    const auto* event = added.asResult()->get<core::CapabilityResult::Events>();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->events[0].title, "lunch with Jo");
    EXPECT_EQ(
        events->events(*calendar.date(2026, 3, 13, 12, 30), *calendar.date(2026, 3, 13, 13)).size(),
        1u);

    EXPECT_TRUE(run("a timer please", IntentID::timerSet, {{"duration", "10 minutes"}})
                    .asResult()
                    ->is<core::CapabilityResult::TimerSet>());
    EXPECT_TRUE(run("a timer please", IntentID::timerSet, {{"duration", "soon"}})
                    .asResult()
                    ->is<core::CapabilityResult::WebAnswer>());
}

TEST_F(PersonalStepsTest, AConfirmedRowDeletesThatItemOnly) {
    auto made = pipelineWith({});
    const auto card = made.pipeline.run("delete the dentist event tomorrow");
    EXPECT_FALSE(made.pipeline.carryOutConfirmed(card, 1));
    const auto deleted = made.pipeline.carryOutConfirmed(card, 0);
    ASSERT_TRUE(deleted && deleted->asResult());
    EXPECT_EQ(deleted->asResult()->get<core::CapabilityResult::CalendarEventDeleted>()->title,
              "Dentist");
    EXPECT_TRUE(events->events(*calendar.date(2026, 3, 1), *calendar.date(2026, 4, 1)).empty());

    const auto list = made.pipeline.run("미리알림 삭제");
    const auto gone = made.pipeline.carryOutConfirmed(list, 0);
    ASSERT_TRUE(gone && gone->asResult());
    EXPECT_EQ(gone->asResult()->get<core::CapabilityResult::ReminderDeleted>()->title, "buy milk");
    EXPECT_TRUE(reminders->incompleteReminders().empty());
}

TEST_F(PersonalStepsTest, ExplainNamesTheStepThatRunThenTakesAndActsOnNothing) {
    struct Case {
        const char* query;
        int step;
        const char* matcher;
        const char* value;  // the claim's value as JSON
    };
    const Case cases[] = {
        {"미리알림 타이머 취소", 1, "TimerFastPath", R"({"cancel":true})"},
        {"10분 타이머", 2, "TimerFastPath", R"({"displayText":"10분","seconds":600})"},
        {"15% of 80", 3, "CalculatorFastPath", R"({"result":"15% of 80 = 12"})"},
        {"100 dollars to won", 4, "CurrencyFastPath",
         R"({"amount":100.0,"from":"USD","to":"KRW"})"},
        {"weather in Paris", 5, "WeatherFastPath", R"({"place":"Paris"})"},
        {"delete the milk reminder", 10, "ReminderDeleteFastPath", R"({"keyword":"milk"})"},
        {"delete the dentist event tomorrow", 11, "CalendarDeleteFastPath",
         R"({"dateToken":"tomorrow","keyword":"dentist"})"},
        {"remind me to call mom at 3pm", 15, "ReminderFastPath",
         R"({"dateToken":"today","hour":15,"minute":0,"title":"call mom"})"},
        {"add event Dentist tomorrow at 3pm", 16, "CalendarAddEventFastPath",
         R"({"dateToken":"tomorrow","hour":15,"minute":0,"title":"Dentist"})"},
        {"help", 20, "HelpFastPath", "{}"},
        {"아 오늘 진짜 피곤하다", 21, "router", "null"},
    };
    const auto filesIn = [&] {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& entry :
             std::filesystem::recursive_directory_iterator(home.path()))
            ++count;
        return count;
    };
    const std::size_t filesBefore = filesIn();
    auto made = pipelineWith({});
    for (const Case& c : cases) {
        const CascadeClaim claim = made.pipeline.explain(c.query);
        EXPECT_EQ(claim.step, c.step) << c.query;
        EXPECT_EQ(claim.matcher, c.matcher) << c.query;
        EXPECT_EQ(claim.value.dump(), c.value) << c.query;
    }
    EXPECT_TRUE(made.backend->calls.empty());
    EXPECT_TRUE(notifications->pending.empty());
    EXPECT_EQ(reminders->incompleteReminders().size(), 1u);
    EXPECT_EQ(filesIn(), filesBefore);

    // Run takes the same road: the fast paths answer without the model, the router's sentence
    // asks it. The network is off, so that currency and weather answer here.
    for (const Case& c : cases) {
        auto running = pipelineWith({reply(routerReply(IntentID::unknown, 0.9))});
        running.pipeline.networkFeaturesEnabled = false;
        running.pipeline.run(c.query);
        EXPECT_EQ(running.backend->calls.size(), c.step == CascadeClaim::routerStep ? 1u : 0u)
            << c.query;
    }
}

}  // namespace
}  // namespace nuvrel::pipeline
