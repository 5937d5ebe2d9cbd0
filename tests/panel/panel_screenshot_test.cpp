// The panel with every kind of card, drawn by the real widgets on Qt's offscreen platform and
// compared with the saved images in testdata/panel-screenshots/.
#include <gtest/gtest.h>

#include <QApplication>
#include <QBuffer>
#include <QPainter>
#include <QStyleFactory>
#include <atomic>
#include <chrono>
#include <map>
#include <set>
#include <thread>

#include "app/json_settings_store.h"
#include "base/paths.h"
#include "panel/panel_window.h"
#include "panel/screenshot_comparison.h"
#include "support/environment_override.h"
#include "support/offscreen_application.h"
#include "support/temporary_home.h"

namespace nuvrel::panel {
namespace {

using namespace std::chrono_literals;
using Result = core::CapabilityResult;
using core::PipelineOutcome;

const std::filesystem::path references = NUVREL_SCREENSHOT_REFERENCES;

// Answers each query with the outcome filed under it; "download" thinks until released.
class ShowcasePipeline final : public pipeline::PipelineRunning {
public:
    std::map<std::string, PipelineOutcome, std::less<>> outcomes;
    std::map<std::string, std::vector<std::string>, std::less<>> chains;
    mutable std::atomic<bool> released{false};

    PipelineOutcome run(std::string_view query) const override {
        while (query == "download" && !released) std::this_thread::sleep_for(1ms);
        const auto found = outcomes.find(query);
        return found != outcomes.end() ? found->second : PipelineOutcome::cancelled();
    }
    std::optional<std::vector<std::string>> decomposeIfChain(
        std::string_view query) const override {
        const auto found = chains.find(query);
        if (found == chains.end()) return std::nullopt;
        return found->second;
    }
};

// One outcome of every result case, with made-up values.
std::vector<PipelineOutcome> everyResult() {
    const auto at = std::chrono::system_clock::from_time_t(1767254400);  // 2026-01-01 08:00 UTC
    const core::EventItem standup{
        .title = "Standup", .location = "Room 4", .startTime = "09:30", .endTime = "09:45"};
    const core::WebAnswer answer{
        .summary = "Paris is the capital of France, on the Seine.",
        .sources = {{"Paris - Wikipedia", "en.wikipedia.org",
                     "https://en.wikipedia.org/wiki/Paris"},
                    {"Paris travel guide", "example.org", "https://example.org/paris"}},
        .summaryModelName = "qwen2.5-1.5b-instruct"};
    const core::MessageDraft draft{
        .recipientQuery = "mom", .resolvedName = "Mom", .body = "On my way"};
    const core::FileHit report{"report.pdf", "/home/me/Documents/report.pdf", "yesterday"};
    std::vector<Result> results{
        Result::Files{{report, {"notes.txt", "/home/me/notes.txt", "today"}}},
        Result::Events{{standup, {.title = "Holiday", .isAllDay = true}}, "Today"},
        Result::MessageDraft{draft},
        Result::MessageSent{draft},
        Result::NowPlaying{{.track = "Clair de Lune", .artist = "Debussy", .isPlaying = true}},
        Result::WebAnswer{answer},
        Result::Empty{core::IntentID::finderSearch, "tax 2019"},
        Result::NeedsPermission{core::PermissionKind::calendar},
        Result::TimerSet{at, "10 minutes"},
        Result::TimerCancelled{2},
        Result::Calculation{"15% of 80 = 12"},
        Result::CurrencyConversion{"100 USD = 92.40 EUR"},
        Result::Weather{{.locationName = "Seoul",
                         .temperatureC = 21.4,
                         .condition = "Clear",
                         .highC = 24,
                         .lowC = 15}},
        Result::AppLaunched{"Firefox"},
        Result::DocumentSummary{"report.pdf", report.path, "Sales rose 4% in the third quarter."},
        Result::SystemCommandExecuted{core::SystemCommand::lockScreen},
        Result::ScreenshotTaken{"/home/me/Pictures/Screenshot.png"},
        Result::ClipboardHistory{{"first copied text", "second\nline"}},
        Result::DeleteFileConfirmation{report},
        Result::CalendarDeleteConfirmation{{standup}, "Today"},
        Result::CalendarEventDeleted{"Standup"},
        Result::FileDeleted{"report.pdf"},
        Result::ReminderSet{"Call the bank", at},
        Result::ReminderDeleteConfirmation{
            {{"Call the bank", "Tomorrow", "r1"}, {"Buy milk", {}, "r2"}}},
        Result::ReminderDeleted{"Buy milk"},
        Result::NoteDeleteConfirmation{{{"Groceries", "n1"}, {"Ideas", "n2"}}},
        Result::NoteDeleted{"Ideas"},
        Result::WindowArranged{core::WindowAction::leftHalf, "Firefox"},
        Result::NoteSaved{"Buy milk and eggs"},
        Result::Translation{"Bonjour", "French", "qwen2.5-1.5b-instruct"},
        Result::HelpOverview{},
    };
    std::vector<PipelineOutcome> outcomes;
    for (auto& result : results) outcomes.push_back(PipelineOutcome::result(std::move(result)));
    return outcomes;
}

class PanelScreenshotTest : public testing::Test {
protected:
    QApplication& app = test::offscreenApplication();
    test::TemporaryHome home;
    test::EnvironmentOverride timeZone{"TZ", "UTC"};
    base::MainQueue queue;
    std::shared_ptr<ShowcasePipeline> showcase = std::make_shared<ShowcasePipeline>();
    std::shared_ptr<app::AppState> state = makeState();
    std::unique_ptr<PanelWindow> panel;

    PanelScreenshotTest() {
        // What makes rendering vary is pinned: the style, the fonts (the CJK ones for Korean
        // and Japanese), their size, and a caret that does not blink.
        QApplication::setStyle(QStyleFactory::create("Fusion"));
        QFont font("DejaVu Sans");
        font.setFamilies({"DejaVu Sans", "Noto Sans CJK JP"});
        font.setPixelSize(13);
        QApplication::setFont(font);
        QApplication::setCursorFlashTime(0);
        panel = std::make_unique<PanelWindow>(state, PanelEffects{},
                                              PanelWindow::Options{.followPalette = false});
    }

    std::shared_ptr<app::AppState> makeState() {
        app::AppState::Environment environment;
        environment.userDefaults = std::make_shared<app::JsonSettingsStore>(
            base::XdgPaths::fromEnvironment().settingsFile());
        environment.languageOverride = core::AppLanguage::en;
        auto created = app::AppState::create(queue, environment);
        created->makePipeline = [this](core::AppLanguage) { return showcase; };
        return created;
    }

    bool waitUntil(const std::function<bool()>& done) { return test::turnLoopsUntil(queue, done); }

    // Runs `query`, and compares the panel once its card (or, for "download", the thinking
    // state) is on show.
    void expectPanel(const std::string& query, const std::string& name) {
        panel->showPanel();
        state->setQuery(query);
        state->run(query);
        const bool thinking = query == "download";
        ASSERT_TRUE(waitUntil([&] {
            return thinking ? panel->card() != nullptr
                            : state->isSettled() && !state->phase().is(app::Phase::Kind::thinking);
        })) << name;
        QApplication::processEvents();
        EXPECT_TRUE(
            test::matchesReference(panel->grab().toImage(), references, name,
                                   std::filesystem::current_path() / "screenshot-mismatches"));
        showcase->released = true;
        ASSERT_TRUE(waitUntil([&] { return state->isSettled(); }));
        showcase->released = false;
    }
};

TEST_F(PanelScreenshotTest, EveryCardInBothThemes) {
    std::vector<std::pair<std::string, PipelineOutcome>> shown;
    std::set<std::size_t> cases;
    for (auto& outcome : everyResult()) {
        cases.insert(outcome.asResult()->index());
        shown.emplace_back(std::string(core::caseName(*outcome.asResult())), std::move(outcome));
    }
    ASSERT_EQ(cases.size(), Result::caseCount) << "a result case has no screenshot";
    shown.emplace_back("error", PipelineOutcome::error(core::UserFacingError(
                                    "Couldn't reach the web", "Check your connection.", true)));
    shown.emplace_back("confirmation", PipelineOutcome::confirm(core::MessageDraft{
                                           .recipientQuery = "Alex", .body = "Running late"}));
    for (const auto& [query, outcome] : shown) showcase->outcomes.emplace(query, outcome);
    showcase->chains["chain"] = {"calculation", "currencyConversion", "timerCancelled"};
    shown.emplace_back("chain", PipelineOutcome::cancelled());
    shown.emplace_back("download", PipelineOutcome::cancelled());
    state->setModelDownloadProgress(0.42);

    for (const bool dark : {false, true}) {
        state->setDark(dark);
        for (const auto& entry : shown)
            expectPanel(entry.first, std::string(dark ? "dark-" : "light-") + entry.first);
    }
}

// Hangul, Han and kana lay out differently from Latin: wider glyphs, taller lines, breaks
// anywhere. A long Japanese name and path have no blank to break at and must be cut short.
TEST_F(PanelScreenshotTest, KoreanAndJapaneseCards) {
    const core::FileHit report{"분기 보고서.pdf", "/home/me/문서/분기 보고서.pdf", "어제"};
    const std::string longName =
        "令和七年度第三四半期営業成績報告書と来期の販売計画および地域別顧客動向の詳細資料（改訂第二"
        "版・最終確認用）.pdf";
    const std::pair<std::string, PipelineOutcome> korean[] = {
        {"ko-calculation", PipelineOutcome::result(Result::Calculation{"80의 15% = 12"})},
        {"ko-webAnswer", PipelineOutcome::result(Result::WebAnswer{
                             {.summary = "서울은 대한민국의 수도이며 한강을 끼고 있는 도시입니다.",
                              .sources = {{"서울특별시 - 위키백과", "ko.wikipedia.org",
                                           "https://ko.wikipedia.org/wiki/서울특별시"}}}})},
        {"ko-files", PipelineOutcome::result(
                         Result::Files{{report, {"회의록.txt", "/home/me/회의록.txt", "오늘"}}})},
        {"ko-error", PipelineOutcome::error(core::UserFacingError("웹에 연결할 수 없습니다",
                                                                  "연결을 확인하세요.", true))},
        {"ko-confirmation", PipelineOutcome::confirm(core::MessageDraft{.recipientQuery = "엄마",
                                                                        .body = "지금 가는 중"})},
    };
    state->setDark(false);
    state->setLang(core::AppLanguage::ko);
    for (const auto& [name, outcome] : korean) {
        showcase->outcomes.emplace(name, outcome);
        expectPanel(name, name);
    }
    showcase->outcomes.emplace(
        "報告書を探して",
        PipelineOutcome::result(Result::Files{
            {{longName, "/home/me/ドキュメント/営業部/二〇二六年/" + longName, "昨日"}}}));
    state->setLang(core::AppLanguage::ja);
    expectPanel("報告書を探して", "ja-long-files");
}

// The comparator itself, on the saved references: it must see a broken layout and overlook
// what a font version or an encoder changes.
QImage shifted(const QImage& image, int dx, int dy) {
    QImage out(image.size(), QImage::Format_RGB32);
    out.fill(image.pixel(0, 0));
    QPainter(&out).drawImage(dx, dy, image);
    return out;
}

TEST(ScreenshotComparison, FailsOnALayoutChangeAndPassesOnRenderingNoise) {
    const QImage files(QString::fromStdString((references / "light-files.png").string()));
    const QImage dark(QString::fromStdString((references / "dark-files.png").string()));
    ASSERT_FALSE(files.isNull());
    const auto reencoded = [](const QImage& image) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        image.save(&buffer, "JPG", 90);
        return QImage::fromData(bytes, "JPG");
    };
    const auto blurred = [](const QImage& image) {
        return image
            .scaled(image.width() * 2, image.height() * 2, Qt::IgnoreAspectRatio,
                    Qt::SmoothTransformation)
            .scaled(image.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    };
    const auto rowGone = [](const QImage& image) {
        QImage out = image.copy();
        // The second file row: its place is painted over with the card's background.
        QPainter(&out).fillRect(0, out.height() - 40, out.width(), 36,
                                image.pixel(2, out.height() - 3));
        return out;
    };
    const struct {
        const char* change;
        QImage changed;
        bool matches;
    } cases[] = {
        {"re-encoded", reencoded(files), true},
        {"blurred by a pixel", blurred(files), true},
        {"shifted by a pixel", shifted(files, 1, 1), true},
        {"shifted by a pixel, blurred, re-encoded", reencoded(blurred(shifted(files, 0, 1))), true},
        {"shifted by four pixels", shifted(files, 4, 0), false},
        {"a row painted over", rowGone(files), false},
        {"the other theme", dark, false},
        {"cut by a row", files.copy(0, 0, files.width(), files.height() - 36), false},
    };
    for (const auto& c : cases) {
        const auto difference = test::compareScreenshots(files, c.changed);
        EXPECT_EQ(difference.matches, c.matches)
            << c.change << ": " << difference.reason.toStdString();
    }
}

}  // namespace
}  // namespace nuvrel::panel
