#pragma once
// Feeds the clipboard history from the desktop's clipboard: X11 through xclip, Wayland through
// wl-paste. A password manager's secret (x-kde-passwordManagerHint) counts as concealed and is
// never read, let alone recorded.

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/diagnostics.h"
#include "personal/clipboard_history_store.h"

namespace nuvrel::platform {

// The history of this user, kept in $XDG_STATE_HOME/nuvrel/clipboard-history.json (mode 0600).
std::shared_ptr<personal::ClipboardHistoryStore> liveClipboardHistoryStore(
    const std::filesystem::path& stateHome);

// The clipboard of the session: what it offers, and its text. Blocks briefly (a helper run).
class ClipboardSource {
public:
    virtual ~ClipboardSource() = default;
    // The offered types; nothing when the clipboard cannot be read at all.
    virtual std::optional<std::vector<std::string>> types() = 0;
    // The text; nothing when there is none (an image, for instance).
    virtual std::optional<std::string> text() = 0;
};

// xclip on X11 ($DISPLAY), wl-paste on Wayland ($WAYLAND_DISPLAY); nothing when neither
// session or tool is there.
std::unique_ptr<ClipboardSource> liveClipboardSource();

// The type identifiers the history judges: the offered types, with the concealed mark added
// for a password manager's hint.
std::vector<std::string> pasteboardTypeIdentifiers(const std::vector<std::string>& offeredTypes);

// Polls twice a second until `stop` is set; what is on the clipboard at the start is not
// recorded. A changed clipboard is read once and recorded.
void watchClipboard(ClipboardSource& source, personal::ClipboardHistoryStore& store,
                    const std::atomic<bool>& stop,
                    const std::function<void(std::chrono::milliseconds)>& sleep);

// How changes are noticed: wl-paste's own notices on Wayland (where wl-paste is installed),
// polls of a helper on X11, or not at all when neither session or tool is there.
enum class ClipboardWatchMode { waylandNotices, polling, none };
ClipboardWatchMode clipboardWatchMode();

// Runs `wl-paste --watch` and records the clipboard each time it reports a new selection,
// until `stop` is set (seen within 200 ms); what is on the clipboard at the start is not
// recorded. False when wl-paste could not start or ended on its own (a compositor without the
// data-control protocol), so that the caller can poll instead.
bool watchWaylandClipboard(ClipboardSource& source, personal::ClipboardHistoryStore& store,
                           const std::atomic<bool>& stop);

// `nuvrel watch-clipboard`: runs until SIGINT or SIGTERM; 1 when no clipboard can be read.
int runClipboardWatcher(const std::filesystem::path& stateHome,
                        const base::Diagnostics& diagnostics);

}  // namespace nuvrel::platform
