#pragma once
// A short history of copied texts, newest first: at most 30, none older than 8 hours, and
// never a text that its source marks as concealed, transient or auto-generated.
//
// An actor: every call takes the one lock, never held across anything but the history's own
// file. With a file, each call reads it first and writes it after a change, so that the
// watcher process and a query process share one history.

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nuvrel::personal {

class ClipboardHistoryStore {
public:
    using TimePoint = std::chrono::system_clock::time_point;
    using Now = std::function<TimePoint()>;
    struct Entry {
        std::string text;
        TimePoint copiedAt;
    };
    // Where the history is kept between processes; `read` gives nothing for no file yet.
    struct Persistence {
        std::function<std::optional<std::string>()> read;
        std::function<void(std::string_view bytes)> write;
    };

    static constexpr std::size_t maxEntries = 30;
    static constexpr std::chrono::seconds retentionInterval{28800};
    // Types whose presence keeps a text out of the history.
    static bool isConcealedType(std::string_view typeIdentifier);

    explicit ClipboardHistoryStore(Now now = std::chrono::system_clock::now,
                                   std::optional<Persistence> persistence = std::nullopt);

    // Copying a text again moves it to the top rather than doubling it. Blank texts are
    // dropped; the stored text is trimmed.
    void record(std::string_view text, const std::vector<std::string>& typeIdentifiers);
    // The texts, newest first, without the expired ones.
    std::vector<std::string> recentEntries();

private:
    void load();
    void save() const;
    void pruneExpired();

    Now now_;
    std::optional<Persistence> persistence_;
    std::mutex mutex_;
    std::vector<Entry> entries_;
};

}  // namespace nuvrel::personal
