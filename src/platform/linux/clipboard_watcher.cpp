#include "platform/linux/clipboard_watcher.h"

#include <glib.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <thread>

#include "base/text.h"
#include "platform/linux/private_state_file.h"

namespace nuvrel::platform {
namespace {

constexpr std::string_view passwordManagerHint = "x-kde-passwordManagerHint";
constexpr std::string_view concealedType = "org.nspasteboard.ConcealedType";

// The helper's standard output; nothing when it cannot run or fails.
std::optional<std::string> outputOf(const std::vector<std::string>& command) {
    std::vector<gchar*> argv;
    for (const std::string& part : command) argv.push_back(const_cast<gchar*>(part.c_str()));
    argv.push_back(nullptr);
    gchar* out = nullptr;
    gint status = 0;
    const bool ran =
        g_spawn_sync(nullptr, argv.data(), nullptr,
                     static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDERR_TO_DEV_NULL),
                     nullptr, nullptr, &out, nullptr, &status, nullptr);
    std::optional<std::string> result;
    if (ran && g_spawn_check_wait_status(status, nullptr) && out) result = std::string(out);
    g_free(out);
    return result;
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> list;
    for (std::string& line : base::text::splitBlanks(text)) list.push_back(std::move(line));
    return list;
}

class HelperClipboardSource : public ClipboardSource {
public:
    HelperClipboardSource(std::vector<std::string> typesCommand,
                          std::vector<std::string> textCommand)
        : typesCommand_(std::move(typesCommand)), textCommand_(std::move(textCommand)) {}

    std::optional<std::vector<std::string>> types() override {
        const auto out = outputOf(typesCommand_);
        if (!out) return std::nullopt;
        return lines(*out);
    }
    std::optional<std::string> text() override { return outputOf(textCommand_); }

private:
    std::vector<std::string> typesCommand_;
    std::vector<std::string> textCommand_;
};

bool onPath(const char* program) {
    gchar* found = g_find_program_in_path(program);
    const bool present = found != nullptr;
    g_free(found);
    return present;
}

// What the clipboard held at one poll.
struct Seen {
    std::vector<std::string> types;
    std::optional<std::string> text;
};

bool sameContent(const std::optional<Seen>& a, const std::optional<Seen>& b) {
    if (!a || !b) return !a && !b;
    return a->types == b->types && a->text == b->text;
}

bool hasText(const std::vector<std::string>& types) {
    return std::any_of(types.begin(), types.end(), [](const std::string& type) {
        return type == "UTF8_STRING" || type == "STRING" || type == "TEXT" ||
               type.starts_with("text/plain");
    });
}

}  // namespace

std::shared_ptr<personal::ClipboardHistoryStore> liveClipboardHistoryStore(
    const std::filesystem::path& stateHome) {
    const std::filesystem::path file = stateHome / "nuvrel" / "clipboard-history.json";
    return std::make_shared<personal::ClipboardHistoryStore>(
        std::chrono::system_clock::now,
        personal::ClipboardHistoryStore::Persistence{
            [file] { return readPrivateFile(file); },
            [file](std::string_view bytes) { writePrivateFile(file, bytes); }});
}

std::unique_ptr<ClipboardSource> liveClipboardSource() {
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    if (wayland && *wayland && onPath("wl-paste"))
        return std::make_unique<HelperClipboardSource>(
            std::vector<std::string>{"wl-paste", "--list-types"},
            std::vector<std::string>{"wl-paste", "--no-newline", "--type",
                                     "text/plain;charset=utf-8"});
    const char* display = std::getenv("DISPLAY");
    if (display && *display && onPath("xclip"))
        return std::make_unique<HelperClipboardSource>(
            std::vector<std::string>{"xclip", "-selection", "clipboard", "-o", "-t", "TARGETS"},
            std::vector<std::string>{"xclip", "-selection", "clipboard", "-o", "-t",
                                     "UTF8_STRING"});
    return nullptr;
}

std::vector<std::string> pasteboardTypeIdentifiers(const std::vector<std::string>& offeredTypes) {
    std::vector<std::string> identifiers = offeredTypes;
    if (std::find(offeredTypes.begin(), offeredTypes.end(), passwordManagerHint) !=
        offeredTypes.end())
        identifiers.emplace_back(concealedType);
    return identifiers;
}

namespace {

// Reads the clipboard and records it when it differs from the last reading. X11 has no change
// count that a helper could read: a change is a new pair of types and text. Types come first,
// so that a concealed text is never fetched.
class ChangeRecorder {
public:
    ChangeRecorder(ClipboardSource& source, personal::ClipboardHistoryStore& store)
        : source_(source), store_(store), last_(read()) {}

    void check() {
        std::optional<Seen> now = read();
        if (!now || sameContent(now, last_)) return;
        last_ = now;
        if (now->text)
            store_.record(base::text::nfc(*now->text), pasteboardTypeIdentifiers(now->types));
    }

private:
    std::optional<Seen> read() {
        auto types = source_.types();
        if (!types) return std::nullopt;
        const std::vector<std::string> identifiers = pasteboardTypeIdentifiers(*types);
        const bool concealed = std::any_of(identifiers.begin(), identifiers.end(),
                                           personal::ClipboardHistoryStore::isConcealedType);
        Seen seen{std::move(*types), std::nullopt};
        if (concealed || !hasText(seen.types)) return seen;
        seen.text = source_.text();
        // A copy between the two reads would pair these types with another selection's text,
        // perhaps a password's: the text counts only if the types still stand after it.
        if (source_.types() != seen.types) seen.text.reset();
        return seen;
    }

    ClipboardSource& source_;
    personal::ClipboardHistoryStore& store_;
    std::optional<Seen> last_;
};

}  // namespace

void watchClipboard(ClipboardSource& source, personal::ClipboardHistoryStore& store,
                    const std::atomic<bool>& stop,
                    const std::function<void(std::chrono::milliseconds)>& sleep) {
    ChangeRecorder recorder(source, store);
    while (!stop) {
        sleep(std::chrono::milliseconds(500));
        if (stop) break;
        recorder.check();
    }
}

ClipboardWatchMode clipboardWatchMode() {
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    if (wayland && *wayland && onPath("wl-paste")) return ClipboardWatchMode::waylandNotices;
    return liveClipboardSource() ? ClipboardWatchMode::polling : ClipboardWatchMode::none;
}

bool watchWaylandClipboard(ClipboardSource& source, personal::ClipboardHistoryStore& store,
                           const std::atomic<bool>& stop) {
    // The notice is a line from a child of wl-paste; the child drains the selection that
    // wl-paste pipes to it, so that the copying program never writes into a closed pipe. The
    // text itself is read as at a poll, types first.
    const char* argv[] = {"wl-paste", "--watch", "sh", "-c", "cat >/dev/null; echo", nullptr};
    GPid child = 0;
    gint notices = -1;
    if (!g_spawn_async_with_pipes(
            nullptr, const_cast<gchar**>(argv), nullptr,
            static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD |
                                     G_SPAWN_STDERR_TO_DEV_NULL),
            nullptr, nullptr, &child, nullptr, &notices, nullptr, nullptr))
        return false;
    // wl-paste also reports the selection it finds at its start, which the recorder's first
    // reading already holds: no change.
    ChangeRecorder recorder(source, store);
    bool ended = false;
    char buffer[256];
    while (!stop && !ended) {
        pollfd ready{notices, POLLIN, 0};
        if (::poll(&ready, 1, 200) <= 0) continue;
        const ssize_t got = ::read(notices, buffer, sizeof buffer);
        if (got <= 0) {
            ended = got == 0 || errno != EINTR;
            continue;
        }
        // Several notices read at once are one look at the clipboard as it is now.
        if (std::find(buffer, buffer + got, '\n') != buffer + got) recorder.check();
    }
    ::kill(child, SIGTERM);
    ::waitpid(child, nullptr, 0);
    g_spawn_close_pid(child);
    ::close(notices);
    return !ended;
}

int runClipboardWatcher(const std::filesystem::path& stateHome,
                        const base::Diagnostics& diagnostics) {
    auto source = liveClipboardSource();
    if (!source) {
        diagnostics.event(
            "watch-clipboard: no X11 or Wayland clipboard to read (needs xclip or wl-paste)");
        return 1;
    }
    auto store = liveClipboardHistoryStore(stateHome);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::atomic<bool> stop = false;
    std::thread waiter([&] {
        int signal = 0;
        sigwait(&signals, &signal);
        stop = true;
    });
    if (clipboardWatchMode() == ClipboardWatchMode::waylandNotices &&
        !watchWaylandClipboard(*source, *store, stop) && !stop)
        diagnostics.event("watch-clipboard: wl-paste --watch is not available here; polling");
    watchClipboard(*source, *store, stop,
                   [](std::chrono::milliseconds wait) { std::this_thread::sleep_for(wait); });
    waiter.join();
    return 0;
}

}  // namespace nuvrel::platform
