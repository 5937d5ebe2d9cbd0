#include "platform/linux/desktop_messenger.h"

#include <gio/gio.h>

namespace nuvrel::platform {
namespace {

using Kind = personal::MessageSendError::Kind;

constexpr const char* kdeConnectService = "org.kde.kdeconnect";
constexpr int callTimeoutMs = 10000;

std::string escaped(const std::string& text, const char* allowed) {
    char* out = g_uri_escape_string(text.c_str(), allowed, false);
    std::string result(out);
    g_free(out);
    return result;
}

// The reason of a failed call, without the call's arguments (GDBus never quotes them).
std::string reasonOf(GError* error) {
    std::string reason = error ? error->message : "unknown error";
    g_clear_error(&error);
    return reason;
}

}  // namespace

std::string mailtoAddress(const std::string& address, const std::string& body) {
    return "mailto:" + escaped(address, "@") + "?body=" + escaped(body, nullptr);
}

void DesktopMessenger::sendText(const std::string& handle, const std::string& body) {
    if (!bus_) throw personal::MessageSendError(Kind::noDevice, "no session bus");
    GError* error = nullptr;
    GVariant* reply = g_dbus_connection_call_sync(
        bus_->connection(), kdeConnectService, "/modules/kdeconnect", "org.kde.kdeconnect.daemon",
        "devices", g_variant_new("(bb)", TRUE, TRUE), G_VARIANT_TYPE("(as)"),
        G_DBUS_CALL_FLAGS_NONE, callTimeoutMs, nullptr, &error);
    if (!reply) throw personal::MessageSendError(Kind::noDevice, "KDE Connect: " + reasonOf(error));
    GVariant* list = g_variant_get_child_value(reply, 0);
    std::string device;
    if (g_variant_n_children(list) > 0) {
        GVariant* first = g_variant_get_child_value(list, 0);
        device = g_variant_get_string(first, nullptr);
        g_variant_unref(first);
    }
    g_variant_unref(list);
    g_variant_unref(reply);
    if (device.empty())
        throw personal::MessageSendError(Kind::noDevice, "no paired, reachable device");

    // sendSms(addresses, text, attachments): each address a variant holding a (s) record.
    GVariantBuilder addresses;
    g_variant_builder_init(&addresses, G_VARIANT_TYPE("av"));
    g_variant_builder_add(&addresses, "v", g_variant_new("(s)", handle.c_str()));
    GVariantBuilder attachments;
    g_variant_builder_init(&attachments, G_VARIANT_TYPE("av"));
    const std::string path = "/modules/kdeconnect/devices/" + device + "/sms";
    reply = g_dbus_connection_call_sync(
        bus_->connection(), kdeConnectService, path.c_str(), "org.kde.kdeconnect.device.sms",
        "sendSms", g_variant_new("(avsav)", &addresses, body.c_str(), &attachments), nullptr,
        G_DBUS_CALL_FLAGS_NONE, callTimeoutMs, nullptr, &error);
    if (!reply) throw personal::MessageSendError(Kind::failed, "KDE Connect: " + reasonOf(error));
    g_variant_unref(reply);
}

void DesktopMessenger::composeMail(const std::string& address, const std::string& body) {
    if (!openURI_ || !openURI_(mailtoAddress(address, body)))
        throw personal::MessageSendError(Kind::noMailClient, "no handler for mailto");
}

bool DesktopMessenger::liveOpenURI(const std::string& uri) {
    char* scheme = g_uri_parse_scheme(uri.c_str());
    GAppInfo* handler = scheme ? g_app_info_get_default_for_uri_scheme(scheme) : nullptr;
    g_free(scheme);
    if (!handler) return false;
    g_object_unref(handler);
    return g_app_info_launch_default_for_uri(uri.c_str(), nullptr, nullptr);
}

}  // namespace nuvrel::platform
