#include "platform/linux/screenshot_portal.h"

#include <gio/gio.h>

#include <optional>
#include <string>

#include "base/cancellation.h"

namespace nuvrel::platform {
namespace {

constexpr const char* portalName = "org.freedesktop.portal.Desktop";

struct Response {
    std::optional<guint32> code;
    std::string uri;
};

void onResponse(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                GVariant* parameters, gpointer data) {
    auto* response = static_cast<Response*>(data);
    guint32 code = 2;
    GVariant* results = nullptr;
    g_variant_get(parameters, "(u@a{sv})", &code, &results);
    const gchar* uri = nullptr;
    if (results && g_variant_lookup(results, "uri", "&s", &uri) && uri) response->uri = uri;
    if (results) g_variant_unref(results);
    response->code = code;
}

// The request's object path is known before the call (the sender and our token), so the
// subscription is in place before the portal can answer.
std::string requestPath(GDBusConnection* bus, const std::string& token) {
    std::string sender = g_dbus_connection_get_unique_name(bus);
    if (sender.starts_with(':')) sender.erase(0, 1);
    for (char& c : sender) {
        if (c == '.') c = '_';
    }
    return "/org/freedesktop/portal/desktop/request/" + sender + "/" + token;
}

bool moveCapture(const std::string& uri, const std::filesystem::path& path) {
    GFile* from = g_file_new_for_uri(uri.c_str());
    GFile* to = g_file_new_for_path(path.c_str());
    std::error_code ignored;
    std::filesystem::create_directories(path.parent_path(), ignored);
    const bool moved =
        g_file_move(from, to, G_FILE_COPY_OVERWRITE, nullptr, nullptr, nullptr, nullptr) == TRUE;
    g_object_unref(from);
    g_object_unref(to);
    return moved;
}

}  // namespace

bool portalScreenshot(GDBusConnection* bus, const std::filesystem::path& path,
                      std::chrono::milliseconds timeout) {
    if (!bus || !g_dbus_connection_get_unique_name(bus)) return false;
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    GMainContext* context = g_main_context_new();
    g_main_context_push_thread_default(context);
    const std::string token = "nuvrel" + std::to_string(g_random_int());
    Response response;
    const guint subscription = g_dbus_connection_signal_subscribe(
        bus, portalName, "org.freedesktop.portal.Request", "Response",
        requestPath(bus, token).c_str(), nullptr, G_DBUS_SIGNAL_FLAGS_NONE, onResponse, &response,
        nullptr);

    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(token.c_str()));
    g_variant_builder_add(&options, "{sv}", "modal", g_variant_new_boolean(FALSE));
    g_variant_builder_add(&options, "{sv}", "interactive", g_variant_new_boolean(FALSE));
    // No auto-start: a desktop without a running portal goes straight to the tools.
    GVariant* handle = g_dbus_connection_call_sync(
        bus, portalName, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Screenshot",
        "Screenshot", g_variant_new("(sa{sv})", "", &options), G_VARIANT_TYPE("(o)"),
        G_DBUS_CALL_FLAGS_NO_AUTO_START, static_cast<gint>(timeout.count()), nullptr, nullptr);
    if (handle) {
        g_variant_unref(handle);
        while (!response.code && std::chrono::steady_clock::now() < deadline &&
               !base::isCancelled()) {
            if (!g_main_context_iteration(context, FALSE)) g_usleep(10'000);
        }
    }
    g_dbus_connection_signal_unsubscribe(bus, subscription);
    while (g_main_context_iteration(context, FALSE)) {
    }
    g_main_context_pop_thread_default(context);
    g_main_context_unref(context);
    return response.code == 0u && !response.uri.empty() && moveCapture(response.uri, path);
}

}  // namespace nuvrel::platform
