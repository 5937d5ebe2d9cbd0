#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>

#include "personal/date_time_expression_parser.h"
#include "personal/timer_capability.h"
#include "pipeline/pipeline.h"
#include "platform/linux/vdir_calendar_store.h"
#include "platform/linux/vdir_reminder_store.h"

namespace {

using namespace nuvrel;
namespace fs = std::filesystem;

void BM_DateTimeExpressionParser(benchmark::State& state, const char* text) {
    if (!personal::DateTimeExpressionParser::parse(text)) {
        state.SkipWithError("no parse");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(personal::DateTimeExpressionParser::parse(text));
}
BENCHMARK_CAPTURE(BM_DateTimeExpressionParser, korean, "내일 오후 3시에 치과 예약 추가해줘");
BENCHMARK_CAPTURE(BM_DateTimeExpressionParser, english, "dentist tomorrow at 3pm");
BENCHMARK_CAPTURE(BM_DateTimeExpressionParser, japanese, "来週金曜日 午後3時 会議");
BENCHMARK_CAPTURE(BM_DateTimeExpressionParser, chinese, "明天下午3点半 开会");

const personal::GregorianCalendar& benchCalendar() {
    static const personal::GregorianCalendar calendar("Europe/Berlin", "de_DE");
    return calendar;
}

// 5,000 one-off events over 2026 and 200 weekly series, written once per process.
const fs::path& generatedFolder() {
    static const fs::path folder = [] {
        const fs::path made =
            fs::temp_directory_path() / ("nuvrel-bench-" + std::to_string(::getpid()));
        fs::create_directories(made / "work");
        char line[64];
        for (int i = 0; i < 5200; ++i) {
            const bool weekly = i >= 5000;
            std::snprintf(line, sizeof line, "2026%02d%02dT%02d%02d00", 1 + i % 12, 1 + i % 28,
                          8 + i % 10, (i % 4) * 15);
            std::ofstream(made / "work" / ("e" + std::to_string(i) + ".ics"))
                << "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//bench//EN\r\nBEGIN:VEVENT\r\nUID:e"
                << i << "\r\nSUMMARY:Event " << i << "\r\nDTSTART;TZID=Europe/Berlin:" << line
                << "\r\nDURATION:PT1H\r\n"
                << (weekly ? "RRULE:FREQ=WEEKLY\r\nEXDATE;TZID=Europe/Berlin:20260302T090000\r\n"
                           : "")
                << "END:VEVENT\r\nEND:VCALENDAR\r\n";
        }
        std::atexit([] { fs::remove_all(generatedFolder()); });
        return made;
    }();
    return folder;
}

void queryWeek(platform::VdirCalendarStore& store, benchmark::State& state) {
    const auto start = *benchCalendar().date(2026, 6, 8);
    const auto events = store.events(start, *benchCalendar().addingDays(start, 7));
    if (events.size() < 200) state.SkipWithError("too few events in the week");
    benchmark::DoNotOptimize(events.data());
}

void BM_CalendarWeekQueryCold(benchmark::State& state) {
    const fs::path& folder = generatedFolder();
    for (auto _ : state) {
        platform::VdirCalendarStore store(
            {{folder / "work"}, folder / "work"},
            std::make_shared<platform::IcsFolderCache>(benchCalendar()));
        queryWeek(store, state);
    }
}
BENCHMARK(BM_CalendarWeekQueryCold)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_CalendarWeekQueryUnchangedFolder(benchmark::State& state) {
    const fs::path& folder = generatedFolder();
    platform::VdirCalendarStore store({{folder / "work"}, folder / "work"},
                                      std::make_shared<platform::IcsFolderCache>(benchCalendar()));
    queryWeek(store, state);
    for (auto _ : state) queryWeek(store, state);
}
BENCHMARK(BM_CalendarWeekQueryUnchangedFolder)->Unit(benchmark::kMillisecond);

// Never shows anything: the full miss must not reach a notification.
class NoNotifications : public personal::NotificationCenterProviding {
public:
    bool requestAuthorization() override { return true; }
    bool isAuthorized() override { return true; }
    void scheduleNotification(const std::string&, const std::string&, const std::string&,
                              std::chrono::seconds) override {}
    int cancelPendingNotifications(std::string_view) override { return 0; }
};

class InstantUnknownBackend : public llm::LLMBackend {
public:
    using LLMBackend::complete;
    std::string complete(std::string_view, std::string_view, std::string_view) override {
        return R"({"intent":"unknown","confidence":0.2,"slots":{}})";
    }
};

// A query that every step, the personal ones live, lets go on to the router.
void BM_PipelineFullMissWithPersonalSteps(benchmark::State& state) {
    pipeline::Pipeline pipeline;
    pipeline.router.backend = std::make_shared<InstantUnknownBackend>();
    pipeline.networkFeaturesEnabled = false;
    auto cache = std::make_shared<platform::IcsFolderCache>(benchCalendar());
    const fs::path folder = generatedFolder();
    pipeline.calendarStore = std::make_shared<platform::VdirCalendarStore>(
        platform::VdirCalendarFolders{{folder / "work"}, folder / "work"}, cache);
    pipeline.reminderStore = std::make_shared<platform::VdirReminderStore>(folder / "todo", cache);
    pipeline.timerCapability = {core::AppLanguage::en, std::make_shared<NoNotifications>()};
    const char* query = "what did the committee decide about the harbour bridge last spring";
    for (auto _ : state) benchmark::DoNotOptimize(pipeline.run(query));
}
BENCHMARK(BM_PipelineFullMissWithPersonalSteps);

}  // namespace
