// What asks for confirmation on the command line: a terminal's answer per row, --yes, or
// nothing carried out with exit status 3; through AppState, as the panel's confirm row.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <sstream>

#include "app/app_state.h"
#include "app/app_test_support.h"
#include "app/terminal_session.h"
#include "base/files.h"
#include "base/main_queue.h"
#include "base/paths.h"
#include "support/helper_process.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

using Result = core::CapabilityResult;

// Shows two events for deletion, or a message draft; records what was carried out.
class ConfirmingPipeline final : public pipeline::PipelineRunning {
public:
    core::PipelineOutcome run(std::string_view query) const override {
        if (query.starts_with("text "))
            return core::PipelineOutcome::confirm(core::MessageDraft{
                .recipientQuery = std::string(query.substr(5, 3)), .body = "hi"});
        return core::PipelineOutcome::result(
            Result::CalendarDeleteConfirmation{{{.title = "Dentist", .eventIdentifier = "a"},
                                                {.title = "Yoga", .eventIdentifier = "b"}},
                                               "Today"});
    }
    std::optional<std::vector<std::string>> decomposeIfChain(std::string_view) const override {
        return std::nullopt;
    }
    std::optional<core::PipelineOutcome> carryOutConfirmed(const core::PipelineOutcome& shown,
                                                           std::size_t row) const override {
        std::lock_guard lock(mutex);
        carriedOut->push_back(row);
        if (shown.asConfirm())
            return core::PipelineOutcome::result(
                Result::MessageSent{*shown.asConfirm()->get<core::MessageDraft>()});
        const auto& events = shown.asResult()->get<Result::CalendarDeleteConfirmation>()->events;
        return core::PipelineOutcome::result(Result::CalendarEventDeleted{events[row].title});
    }
    // Two contacts answer to "kim", one to "mom".
    std::vector<personal::ContactMatch> recipientCandidates(
        const core::MessageDraft& draft) const override {
        if (draft.recipientQuery == "mom") return {{"Mom", "010-1", "M"}};
        if (draft.recipientQuery == "kim")
            return {{"Kim A", "010-2", "K"}, {"Kim B", "010-3", "K"}};
        return {};
    }
    std::shared_ptr<std::vector<std::size_t>> carriedOut =
        std::make_shared<std::vector<std::size_t>>();
    mutable std::mutex mutex;
};

TEST(CommandLineConfirmation, OnlyAYesCarriesOutAndNothingIsDoneWithoutAnAnswer) {
    struct Case {
        const char* sentence;
        bool confirmAll;
        std::optional<std::string> answers;  // a terminal's lines; nothing for no terminal
        int status;
        std::vector<std::size_t> carriedOut;
        const char* printed;  // a text the output must hold
    };
    const Case cases[] = {
        {"delete events", false, std::nullopt, exitNotConfirmed, {}, "Nothing was done"},
        {"delete events", true, std::nullopt, exitResult, {0, 1}, "Yoga"},
        {"delete events", false, "y\nno\n", exitNotConfirmed, {0}, "Delete “Yoga”? [y/N]"},
        {"delete events", false, "N\n네\n", exitNotConfirmed, {1}, "✓"},
        {"delete events", false, " YES \nはい\n", exitResult, {0, 1}, "Delete “Dentist”? [y/N]"},
        {"delete events", false, "", exitNotConfirmed, {}, "[y/N]"},
        {"text mom hi", false, "是\n", exitResult, {0}, "Go ahead? [y/N]"},
        {"text mom hi", false, std::nullopt, exitNotConfirmed, {}, "Nothing was done"},
        {"text mom hi", true, std::nullopt, exitResult, {0}, "→ Mom (imessage)"},
        // Several contacts: a numbered choice on a terminal, never a guess without one.
        {"text kim hi", false, "2\ny\n", exitResult, {0}, "→ Kim B (imessage)"},
        {"text kim hi", true, "1\n", exitResult, {0}, "→ Kim A (imessage)"},
        {"text kim hi", false, "3\ny\n", exitNotConfirmed, {}, "Send to which one? [1–2]"},
        {"text kim hi",
         true,
         std::nullopt,
         exitNotConfirmed,
         {},
         "Several contacts match: Kim A, Kim B"},
    };
    for (const Case& c : cases) {
        base::MainQueue queue;
        AppState::Environment environment;
        environment.userDefaults = std::make_shared<test::InMemorySettingsStore>();
        environment.languageOverride = core::AppLanguage::en;
        auto state = AppState::create(queue, environment);
        auto pipeline = std::make_shared<ConfirmingPipeline>();
        state->makePipeline = [pipeline](core::AppLanguage) { return pipeline; };
        std::ostringstream out;
        std::istringstream answers(c.answers.value_or(""));
        TerminalSession session(queue, state, out, false);
        session.setConfirmationPolicy({c.confirmAll, c.answers ? &answers : nullptr});
        EXPECT_EQ(session.ask(c.sentence), c.status) << c.sentence << " " << out.str();
        EXPECT_EQ(*pipeline->carriedOut, c.carriedOut) << out.str();
        EXPECT_NE(out.str().find(c.printed), std::string::npos) << out.str();
        queue.runUntil([&] { return state->tasksInFlight() == 0; });
    }
}

TEST(CommandLineConfirmation, TheProgramDeletesAnEventFileOnlyWithYes) {
    using namespace std::chrono_literals;
    nuvrel::test::TemporaryHome home;
    const auto folder = base::XdgPaths::fromEnvironment().dataHome / "nuvrel" / "calendars";
    const auto ask = [](std::vector<std::string> words) {
        words.insert(words.begin(), {NUVREL_PATH, "ask", "--lang", "en", "--no-network"});
        const auto run = nuvrel::test::runToEnd(std::move(words), 30s);
        return std::pair(run.exitCode, run.output);
    };
    const auto files = [&] {
        std::vector<std::filesystem::path> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
            if (entry.is_regular_file()) found.push_back(entry.path());
        return found;
    };
    ASSERT_EQ(ask({"add event Dentist tomorrow at 3pm"}).first, exitResult);
    ASSERT_EQ(ask({"add event Yoga tomorrow at 7pm"}).first, exitResult);
    ASSERT_EQ(files().size(), 2u);
    const auto unconfirmed = ask({"delete the dentist event tomorrow"});
    EXPECT_EQ(unconfirmed.first, exitNotConfirmed) << unconfirmed.second;
    EXPECT_NE(unconfirmed.second.find("15:00–16:00  Dentist"), std::string::npos);
    EXPECT_EQ(files().size(), 2u);
    EXPECT_EQ(ask({"--yes", "delete the dentist event tomorrow"}).first, exitResult);
    ASSERT_EQ(files().size(), 1u);
    EXPECT_NE(base::readFile(files()[0]).value_or("").find("SUMMARY:Yoga"), std::string::npos);
}

}  // namespace
}  // namespace nuvrel::app
