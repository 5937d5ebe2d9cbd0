// The interactive mode at a terminal edits lines and keeps its history across runs; without
// a terminal it reads plain lines and keeps nothing.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "app/query_history.h"
#include "base/files.h"
#include "base/paths.h"
#include "support/helper_process.h"
#include "support/recording_sink.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

// nuvrel's interactive mode on a pseudo-terminal, typed at as a person would.
class TerminalProgram {
public:
    TerminalProgram() {
        pid_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
        if (pid_ == 0) {
            ::execl(NUVREL_PATH, NUVREL_PATH, "--lang", "en", "--no-network", nullptr);
            ::_exit(127);
        }
    }
    ~TerminalProgram() {
        if (pid_ > 0 && ::kill(pid_, SIGKILL) == 0) test::waitForChild(pid_, 5s);
        ::close(terminal_);
    }
    // The wait status once the program has ended.
    std::optional<int> ends() {
        const auto status = test::waitForChild(pid_, 30s);
        if (status) pid_ = -1;
        return status;
    }
    void type(std::string_view keys) {
        ASSERT_EQ(::write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }
    // True once `text` shows after what earlier waits found.
    bool shows(std::string_view text) {
        for (auto deadline = std::chrono::steady_clock::now() + 30s;
             std::chrono::steady_clock::now() < deadline;) {
            if (const auto at = shown_.find(text, seen_); at != std::string::npos) {
                seen_ = at + text.size();
                return true;
            }
            pollfd fd{terminal_, POLLIN, 0};
            char buffer[512];
            if (::poll(&fd, 1, 200) > 0 && (fd.revents & POLLIN)) {
                const ssize_t got = ::read(terminal_, buffer, sizeof buffer);
                if (got <= 0) return false;
                shown_.append(buffer, static_cast<std::size_t>(got));
            }
        }
        return false;
    }
    // The prompt is up and the line editor holds the terminal: keys typed sooner would meet
    // the terminal's own line editing, which swallows Ctrl-R.
    bool prompts() {
        if (!shows("> ")) return false;
        for (int waited = 0; waited < 100; ++waited, ::usleep(100'000)) {
            if (!(modes().c_lflag & ICANON)) return true;
        }
        return false;
    }
    termios modes() const {
        termios modes{};
        ::tcgetattr(terminal_, &modes);
        return modes;
    }

private:
    pid_t pid_ = -1;
    int terminal_ = -1;
    std::string shown_;
    std::size_t seen_ = 0;
};

mode_t modeOf(const fs::path& path) {
    struct stat info {};
    ::stat(path.c_str(), &info);
    return info.st_mode & 0777;
}

TEST(InteractiveHistory, UpAndCtrlRRecallSentencesKeptPrivatelyAcrossRuns) {
    test::TemporaryHome home;
    const fs::path file = QueryHistory::fileIn(base::XdgPaths::fromEnvironment().stateHome);
    {
        TerminalProgram program;
        for (const auto& [keys, card] : {std::pair{"6*7\r", "= 42"},
                                         {"5+5\r", "= 10"},
                                         {"\x1b[A\x1b[A\r", "= 42"}}) {  // Up twice: 6*7
            ASSERT_TRUE(program.prompts());
            program.type(keys);
            ASSERT_TRUE(program.shows(card));
        }
        ASSERT_TRUE(program.prompts());
        program.type("\x04");  // Ctrl-D on an empty line
        const auto status = program.ends();
        ASSERT_TRUE(status && WIFEXITED(*status) && WEXITSTATUS(*status) == 0);
    }
    EXPECT_EQ(base::readFile(file), "6*7\n5+5\n6*7\n");
    EXPECT_EQ(modeOf(file), 0600u);
    EXPECT_EQ(modeOf(file.parent_path()), 0700u);

    TerminalProgram again;
    ASSERT_TRUE(again.prompts());
    again.type(
        "\x12"
        "5+\r");  // Ctrl-R searches backwards
    ASSERT_TRUE(again.shows("= 10"));
    ASSERT_TRUE(again.prompts());
    again.type("\x03");  // Ctrl-C at the prompt quits and gives the terminal back as it was
    ASSERT_TRUE(again.ends());
    EXPECT_TRUE(again.modes().c_lflag & ICANON);
    EXPECT_TRUE(again.modes().c_lflag & ECHO);
}

TEST(InteractiveHistory, WithoutATerminalNothingIsKept) {
    test::TemporaryHome home;
    test::HelperProcess program({NUVREL_PATH, "--lang", "en", "--no-network"});
    ASSERT_TRUE(program.writeLine("6*7"));
    std::optional<std::string> line;
    while ((line = program.readLine(30s)) && line->find("= 42") == std::string::npos) {
    }
    program.closeInput();
    ASSERT_TRUE(program.waitForExit(30s));
    EXPECT_FALSE(fs::exists(QueryHistory::fileIn(base::XdgPaths::fromEnvironment().stateHome)));
}

TEST(InteractiveHistory, TheFileKeepsTheNewestLinesAndAFailedWriteLogsNoSentence) {
    test::TemporaryHome home;
    const fs::path file = home.path() / "history";
    std::string lines;
    for (int i = 0; i < 600; ++i) lines += "q" + std::to_string(i) + "\n";
    base::writeFileAtomically(file, lines);
    QueryHistory history(file, {});
    EXPECT_EQ(history.entries().front(), "q100");
    for (const char* line : {"q600", "  q600 ", "   ", "pasted\nline"}) history.add(line);
    const auto kept = QueryHistory(file, {}).entries();
    ASSERT_EQ(kept.size(), QueryHistory::capacity);
    EXPECT_EQ(kept.front() + "," + kept[kept.size() - 2] + "," + kept.back(),
              "q102,q600,pasted line");

    base::writeFileAtomically(home.path() / "blocked", "a file where a folder should be");
    const test::RecordedDiagnostics recorded;
    QueryHistory(home.path() / "blocked" / "history", recorded.diagnostics).add("text mom hi");
    EXPECT_NE(recorded.sink->text(), "");
    EXPECT_EQ(recorded.sink->text().find("mom"), std::string::npos);
}

}  // namespace
}  // namespace nuvrel::app
