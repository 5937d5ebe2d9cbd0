#include "platform/linux/tracker_file_search.h"

#include <gio/gio.h>
#include <libtracker-sparql/tracker-sparql.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <thread>

#include "base/cancellation.h"
#include "base/shared_library.h"
#include "base/text.h"
#include "desktop/metadata_predicate.h"
#include "platform/linux/file_walk_search.h"
#include "platform/linux/shared_mime_types.h"

namespace nuvrel::platform {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr const char* minerService = "org.freedesktop.Tracker3.Miner.Files";

// libtracker-sparql, opened on the first search: with SQLite, JSON-GLib and a stemmer behind it,
// it would cost every start otherwise.
struct TrackerLibrary {
    TrackerLibrary() : library("libtracker-sparql-3.0.so.0") {
        library.resolve(escapeString, "tracker_sparql_escape_string");
        library.resolve(busNew, "tracker_sparql_connection_bus_new_async");
        library.resolve(busNewFinish, "tracker_sparql_connection_bus_new_finish");
        library.resolve(query, "tracker_sparql_connection_query_async");
        library.resolve(queryFinish, "tracker_sparql_connection_query_finish");
        library.resolve(next, "tracker_sparql_cursor_next_async");
        library.resolve(nextFinish, "tracker_sparql_cursor_next_finish");
        library.resolve(string, "tracker_sparql_cursor_get_string");
    }

    base::SharedLibrary library;
    decltype(&::tracker_sparql_escape_string) escapeString = nullptr;
    decltype(&::tracker_sparql_connection_bus_new_async) busNew = nullptr;
    decltype(&::tracker_sparql_connection_bus_new_finish) busNewFinish = nullptr;
    decltype(&::tracker_sparql_connection_query_async) query = nullptr;
    decltype(&::tracker_sparql_connection_query_finish) queryFinish = nullptr;
    decltype(&::tracker_sparql_cursor_next_async) next = nullptr;
    decltype(&::tracker_sparql_cursor_next_finish) nextFinish = nullptr;
    decltype(&::tracker_sparql_cursor_get_string) string = nullptr;
};

// Throws base::SharedLibraryError where the library is not installed.
const TrackerLibrary& tracker() {
    return base::openedOnce<TrackerLibrary>();
}

template <typename T>
struct GObjectDeleter {
    void operator()(T* object) const {
        if (object) g_object_unref(object);
    }
};
template <typename T>
using Owned = std::unique_ptr<T, GObjectDeleter<T>>;

struct GFreeDeleter {
    void operator()(gchar* text) const { g_free(text); }
};
using OwnedText = std::unique_ptr<gchar, GFreeDeleter>;

// Runs asynchronous GIO calls on a private main context, each bounded by one deadline: past it,
// or on the task's stop request, the call is cancelled and its completion awaited, so that no
// callback outlives the wait.
class Await {
public:
    explicit Await(Clock::time_point deadline)
        : context_(g_main_context_new()), cancellable_(g_cancellable_new()), deadline_(deadline) {
        g_main_context_push_thread_default(context_);
        tick_ = g_timeout_source_new(20);
        g_source_set_callback(tick_, &Await::onTick, this, nullptr);
        g_source_attach(tick_, context_);
    }
    ~Await() {
        g_source_destroy(tick_);
        g_source_unref(tick_);
        g_main_context_pop_thread_default(context_);
        g_object_unref(cancellable_);
        g_main_context_unref(context_);
    }
    Await(const Await&) = delete;
    Await& operator=(const Await&) = delete;

    GCancellable* cancellable() const { return cancellable_; }

    // `start(callback, userData)` begins the call; the result, owned, once it completes.
    template <typename Start>
    Owned<GAsyncResult> operator()(Start start) {
        GAsyncResult* result = nullptr;
        start(&Await::onDone, &result);
        while (!result) g_main_context_iteration(context_, TRUE);
        return Owned<GAsyncResult>(result);
    }

private:
    static void onDone(GObject*, GAsyncResult* result, gpointer slot) {
        *static_cast<GAsyncResult**>(slot) = G_ASYNC_RESULT(g_object_ref(result));
    }
    static gboolean onTick(gpointer self) {
        auto* await = static_cast<Await*>(self);
        if (Clock::now() > await->deadline_ || base::isCancelled())
            g_cancellable_cancel(await->cancellable_);
        return G_SOURCE_CONTINUE;
    }

    GMainContext* context_;
    GCancellable* cancellable_;
    GSource* tick_;
    Clock::time_point deadline_;
};

std::string sparqlQuery(const std::vector<std::string>& scopes) {
    std::string within;
    for (const std::string& scope : scopes) {
        OwnedText uri(g_filename_to_uri(scope.c_str(), nullptr, nullptr));
        if (!uri) continue;
        std::string prefix(uri.get());
        if (!prefix.ends_with('/')) prefix += '/';
        OwnedText escaped(tracker().escapeString(prefix.c_str()));
        within += std::string(within.empty() ? "" : " || ") + "STRSTARTS(?url, \"" + escaped.get() +
                  "\")";
    }
    if (within.empty()) return {};
    return "SELECT ?url ?modified ?mime WHERE { ?file a nfo:FileDataObject ; nie:url ?url . "
           "FILTER (" +
           within +
           ") OPTIONAL { ?file nfo:fileLastModified ?modified } "
           "OPTIONAL { ?content nie:isStoredAs ?file ; nie:mimeType ?mime } }";
}

std::optional<std::chrono::system_clock::time_point> dateOf(const gchar* text) {
    if (!text) return std::nullopt;
    std::unique_ptr<GDateTime, decltype(&g_date_time_unref)> date(
        g_date_time_new_from_iso8601(text, nullptr), g_date_time_unref);
    if (!date) return std::nullopt;
    return std::chrono::system_clock::time_point(std::chrono::microseconds(
        g_date_time_to_unix(date.get()) * 1'000'000 + g_date_time_get_microsecond(date.get())));
}

// The walk never enters hidden folders or caches below its scope; the index may have them.
bool walkReaches(const fs::path& path, const std::vector<std::string>& scopes) {
    for (const std::string& scope : scopes) {
        const fs::path relative = path.lexically_relative(scope);
        if (relative.empty() || *relative.begin() == "..") continue;
        bool reached = true;
        for (auto part = relative.begin(); part != relative.end(); ++part) {
            if (std::next(part) != relative.end() && walkSkipsFolder(part->string()))
                reached = false;
        }
        if (reached) return true;
    }
    return false;
}

// The exchange with the miner, on the calling thread.
std::optional<std::vector<desktop::MetadataItem>> askIndex(
    GDBusConnection* bus, const desktop::MetadataPredicate* predicate, const std::string& query,
    const std::vector<std::string>& scopeDirectories, Clock::time_point deadline) {
    Await await(deadline);
    GError* error = nullptr;

    // Asking the miner's own name would start it where the bus can: ask who owns it instead.
    const Owned<GAsyncResult> owner = await([&](GAsyncReadyCallback done, gpointer slot) {
        g_dbus_connection_call(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus", "NameHasOwner",
                               g_variant_new("(s)", minerService), G_VARIANT_TYPE("(b)"),
                               G_DBUS_CALL_FLAGS_NONE, -1, await.cancellable(), done, slot);
    });
    GVariant* reply = g_dbus_connection_call_finish(bus, owner.get(), &error);
    gboolean running = FALSE;
    if (reply) {
        g_variant_get(reply, "(b)", &running);
        g_variant_unref(reply);
    }
    g_clear_error(&error);
    if (!running) return std::nullopt;

    const Owned<GAsyncResult> made = await([&](GAsyncReadyCallback done, gpointer slot) {
        tracker().busNew(minerService, nullptr, bus, await.cancellable(), done, slot);
    });
    Owned<TrackerSparqlConnection> connection(tracker().busNewFinish(made.get(), &error));
    g_clear_error(&error);
    if (!connection) return std::nullopt;

    const Owned<GAsyncResult> asked = await([&](GAsyncReadyCallback done, gpointer slot) {
        tracker().query(connection.get(), query.c_str(), await.cancellable(), done, slot);
    });
    Owned<TrackerSparqlCursor> cursor(tracker().queryFinish(connection.get(), asked.get(), &error));
    g_clear_error(&error);
    if (!cursor) return std::nullopt;

    std::vector<desktop::MetadataItem> items;
    while (true) {
        const Owned<GAsyncResult> step = await([&](GAsyncReadyCallback done, gpointer slot) {
            tracker().next(cursor.get(), await.cancellable(), done, slot);
        });
        const gboolean more = tracker().nextFinish(cursor.get(), step.get(), &error);
        if (error) {
            g_clear_error(&error);
            return std::nullopt;
        }
        if (!more) break;
        OwnedText path(
            g_filename_from_uri(tracker().string(cursor.get(), 0, nullptr), nullptr, nullptr));
        if (!path || !walkReaches(path.get(), scopeDirectories)) continue;
        const std::string name = fs::path(path.get()).filename().string();
        if (name.starts_with('.') || !base::text::isValidUtf8(name)) continue;
        const gchar* mime = tracker().string(cursor.get(), 2, nullptr);
        const bool isFolder = mime && std::string_view(mime) == "inode/directory";
        desktop::MetadataItem item{
            .path = path.get(),
            .fsName = name,
            .modificationDate = dateOf(tracker().string(cursor.get(), 1, nullptr))};
        const desktop::MetadataAttributes attributes{
            .fsName = name,
            .path = *item.path,
            .contentType = isFolder                     ? "public.folder"
                           : name.ends_with(".desktop") ? "com.apple.application-bundle"
                                                        : "public.data",
            .modificationDate = item.modificationDate};
        if (!predicate->matches(attributes)) {
            if (isFolder || !mime || !predicate->matches(attributes, predicate->nameEndings()) ||
                nameTellsType(name))
                continue;
            item.contentExtensions = extensionsOfMimeType(mime);
            if (!predicate->matches(attributes, item.contentExtensions)) continue;
        }
        items.push_back(std::move(item));
    }
    return items;
}

struct Answer {
    std::mutex mutex;
    std::condition_variable arrived;
    bool done = false;
    std::optional<std::vector<desktop::MetadataItem>> items;
};

}  // namespace

std::optional<std::vector<desktop::MetadataItem>> trackerMetadataQuery(
    GDBusConnection* bus, const std::string& predicateFormat,
    const std::vector<std::string>& scopeDirectories, double timeout) {
    try {
        tracker();
    } catch (const base::SharedLibraryError&) {
        // Without the library there is no index to ask; the walk still finds the files.
        return std::nullopt;
    }
    auto predicate = desktop::MetadataPredicate::parse(predicateFormat);
    std::string query = sparqlQuery(scopeDirectories);
    if (!bus || !predicate || query.empty()) return std::nullopt;
    const auto deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                             std::chrono::duration<double>(timeout));
    // libtracker-sparql does not give up every step on cancellation (a query whose reply never
    // comes waits out the bus's own time-out), so the exchange runs on a thread of its own
    // that this call abandons at the deadline.
    auto answer = std::make_shared<Answer>();
    g_object_ref(bus);
    std::thread([answer, bus, predicate = std::move(*predicate), query = std::move(query),
                 scopeDirectories, deadline] {
        auto items = askIndex(bus, &predicate, query, scopeDirectories, deadline);
        g_object_unref(bus);
        const std::lock_guard lock(answer->mutex);
        answer->items = std::move(items);
        answer->done = true;
        answer->arrived.notify_all();
    }).detach();
    std::unique_lock lock(answer->mutex);
    while (!answer->done && Clock::now() < deadline) {
        answer->arrived.wait_until(lock, std::min(deadline, Clock::now() + 50ms));
        base::checkCancellation();
    }
    if (!answer->done) return std::nullopt;
    return std::move(answer->items);
}

}  // namespace nuvrel::platform
