#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <thread>

#include "base/files.h"
#include "base/paths.h"
#include "platform/linux/clipboard_watcher.h"
#include "platform/linux/markdown_notes_folder.h"
#include "support/environment_override.h"
#include "support/helper_process.h"
#include "support/recording_sink.h"
#include "support/temporary_home.h"

namespace nuvrel::platform {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

TEST(MarkdownNotesFolder, CreatesFindsAndTrashesNotesWithoutOverwriting) {
    test::TemporaryHome home;
    test::RecordedDiagnostics recorded;
    const fs::path folder = home.path() / "vault";
    MarkdownNotesFolder notes(folder, recorded.diagnostics);

    notes.create("buy milk");
    notes.create("buy milk\nand eggs");
    notes.create("a/b: c?\n");
    notes.create("# 우유 🥛 사기");
    notes.create("..hidden");
    EXPECT_EQ(base::readFile(folder / "buy milk.md"), "buy milk\n");
    EXPECT_EQ(base::readFile(folder / "buy milk 2.md"), "buy milk\nand eggs\n");
    for (const char* name : {"a-b- c-.md", "우유 🥛 사기.md", "hidden.md"})
        EXPECT_TRUE(fs::exists(folder / name)) << name;
    EXPECT_EQ(MarkdownNotesFolder::fileStem(std::string(300, 'x')).size(), 80u);

    fs::create_directories(folder / ".obsidian");
    std::ofstream(folder / ".obsidian" / "milk.md") << "milk\n";
    std::ofstream(folder / "unreadable milk.md") << "milk\n";
    fs::permissions(folder / "unreadable milk.md", fs::perms::none);
    auto found = notes.notesMatching("MILK");
    std::sort(found.begin(), found.end(),
              [](const auto& a, const auto& b) { return a.identifier < b.identifier; });
    ASSERT_EQ(found.size(), ::geteuid() == 0 ? 3u : 2u);
    EXPECT_EQ(found[0].identifier, "buy milk 2.md");
    EXPECT_EQ(found[1].title, "buy milk");
    EXPECT_EQ(notes.notesMatching("우유").at(0).title, "우유 🥛 사기");
    if (::geteuid() != 0) {
        EXPECT_EQ(recorded.sink->text(),
                  "[Nuvrel] note file skipped, unreadable: unreadable milk.md\n");
    }

    EXPECT_FALSE(notes.remove("../vault/buy milk.md"));
    EXPECT_TRUE(notes.remove("buy milk.md"));
    EXPECT_FALSE(notes.remove("buy milk.md"));
    const fs::path trash = base::XdgPaths::fromEnvironment().dataHome / "Trash";
    EXPECT_EQ(base::readFile(trash / "files" / "buy milk.md"), "buy milk\n");
    const auto info = base::readFile(trash / "info" / "buy milk.md.trashinfo").value_or("");
    EXPECT_NE(info.find("Path=" + (folder / "buy%20milk.md").string()), std::string::npos) << info;
}

// An X server of the test's own, with the clipboard set through xclip as a user's program
// would set it.
class XvfbClipboard : public testing::Test {
protected:
    test::TemporaryHome home;
    test::HelperProcess xvfb{{"/usr/bin/Xvfb", "-displayfd", "1", "-nolisten", "tcp"}};
    std::string display = ":" + xvfb.readLine(20s).value_or("");

    void SetUp() override {
        ASSERT_NE(display, ":");
        ::setenv("DISPLAY", display.c_str(), 1);
        ::unsetenv("WAYLAND_DISPLAY");
    }
    void TearDown() override { ::unsetenv("DISPLAY"); }

    static void copy(const std::string& text, const char* type = "UTF8_STRING") {
        const std::string command =
            "printf '%s' '" + text + "' | xclip -selection clipboard -t " + type + " -i";
        ASSERT_EQ(std::system(command.c_str()), 0);
    }
};

TEST_F(XvfbClipboard, RecordsCopiesInOrderButNeverASecret) {
    copy("there before");
    auto source = liveClipboardSource();
    ASSERT_TRUE(source);
    const fs::path state = base::XdgPaths::fromEnvironment().stateHome;
    auto store = liveClipboardHistoryStore(state);

    std::vector<std::function<void()>> steps;
    for (int i = 1; i <= 31; ++i) steps.push_back([i] { copy("text " + std::to_string(i)); });
    steps.push_back([] { copy("text 5"); });
    steps.push_back([] { copy("hunter2", "x-kde-passwordManagerHint"); });
    std::atomic<bool> stop = false;
    std::size_t next = 0;
    watchClipboard(*source, *store, stop, [&](std::chrono::milliseconds) {
        if (next < steps.size())
            steps[next++]();
        else
            stop = true;
    });

    const auto entries = liveClipboardHistoryStore(state)->recentEntries();
    ASSERT_EQ(entries.size(), 30u);
    EXPECT_EQ(entries[0], "text 5");
    EXPECT_EQ(entries[1], "text 31");
    EXPECT_EQ(entries[29], "text 2");
    const fs::path file = state / "nuvrel" / "clipboard-history.json";
    EXPECT_EQ(base::readFile(file).value_or("").find("hunter2"), std::string::npos);
    struct stat info {};
    ASSERT_EQ(::stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
}

// wl-paste as wl-clipboard ships it, over a clipboard kept in files ("types", "text" and a
// "serial" that each copy raises): --list-types, the text, and --watch, which runs its command
// with the selection on standard input once at its start and again at each new selection.
constexpr const char* fakeWlPaste = R"(#!/bin/sh
cd "$FAKE_CLIPBOARD" || exit 1
case "$1" in
--list-types) cat types ;;
--no-newline) cat text ;;
--watch)
    shift
    seen=
    while :; do
        serial=$(cat serial)
        if [ "$serial" != "$seen" ]; then seen=$serial; "$@" <text; echo "$serial" >>noticed; fi
        sleep 0.02
    done ;;
*) exit 1 ;;
esac
)";

TEST(WaylandClipboard, ChoosesWlPasteWatchAndRecordsWhatItReportsButNeverASecret) {
    test::TemporaryHome home;
    const fs::path bin = home.path() / "bin", clipboard = home.path() / "clipboard";
    fs::create_directories(bin);
    fs::create_directories(clipboard);
    std::ofstream(bin / "wl-paste") << fakeWlPaste;
    fs::permissions(bin / "wl-paste", fs::perms::owner_all);
    test::EnvironmentOverride environment("FAKE_CLIPBOARD", clipboard.c_str());
    const std::string path = std::getenv("PATH");
    const std::string fakeFirst = bin.string() + ":" + path;
    struct Case {
        const char* wayland;
        const char* display;
        const char* path;
        ClipboardWatchMode mode;
    };
    for (const Case& c :
         {Case{"wayland-1", nullptr, fakeFirst.c_str(), ClipboardWatchMode::waylandNotices},
          Case{"wayland-1", nullptr, "/nonexistent", ClipboardWatchMode::none},
          Case{nullptr, ":7", path.c_str(), ClipboardWatchMode::polling},
          Case{"", nullptr, fakeFirst.c_str(), ClipboardWatchMode::none}}) {
        environment.set("WAYLAND_DISPLAY", c.wayland);
        environment.set("DISPLAY", c.display);
        environment.set("PATH", c.path);
        EXPECT_EQ(clipboardWatchMode(), c.mode) << (c.display ? c.display : "") << c.path;
    }

    environment.set("WAYLAND_DISPLAY", "wayland-1");
    environment.set("PATH", fakeFirst.c_str());
    int serial = 0;
    const auto noticed = [&] {
        return base::readFile(clipboard / "noticed")
            .value_or("")
            .ends_with(std::to_string(serial) + "\n");
    };
    const auto copy = [&](const std::string& text, const std::string& types) {
        // The types last, as a reader that reads them first would meet a real selection.
        std::ofstream(clipboard / "text") << text;
        std::ofstream(clipboard / "types") << types;
        std::ofstream(clipboard / "serial") << ++serial;
    };
    copy("there before", "text/plain;charset=utf-8\n");
    auto source = liveClipboardSource();
    ASSERT_TRUE(source);
    const fs::path state = base::XdgPaths::fromEnvironment().stateHome;
    auto store = liveClipboardHistoryStore(state);
    std::atomic<bool> stop = false;
    std::thread watcher([&] { EXPECT_TRUE(watchWaylandClipboard(*source, *store, stop)); });
    const auto waitUntil = [](const std::function<bool()>& done) {
        for (int i = 0; i < 200 && !done(); ++i) std::this_thread::sleep_for(20ms);
        return done();
    };
    const auto recorded = [&](const std::string& text) {
        return waitUntil([&] {
            const auto entries = store->recentEntries();
            return !entries.empty() && entries.front() == text;
        });
    };
    EXPECT_TRUE(waitUntil(noticed));
    copy("first copy", "text/plain\ntext/plain;charset=utf-8\n");
    EXPECT_TRUE(recorded("first copy"));
    copy("hunter2", "text/plain;charset=utf-8\nx-kde-passwordManagerHint\n");
    EXPECT_TRUE(waitUntil(noticed));
    std::this_thread::sleep_for(300ms);
    copy("second copy", "UTF8_STRING\ntext/plain;charset=utf-8\n");
    EXPECT_TRUE(recorded("second copy"));
    stop = true;
    watcher.join();
    EXPECT_EQ(store->recentEntries(), (std::vector<std::string>{"second copy", "first copy"}));
}

}  // namespace
}  // namespace nuvrel::platform
