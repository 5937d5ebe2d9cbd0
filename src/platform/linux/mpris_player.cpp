#include "platform/linux/mpris_player.h"

#include <gio/gio.h>

#include <algorithm>
#include <vector>

namespace nuvrel::platform {
namespace {

using Kind = personal::MediaPlayerError::Kind;

constexpr std::string_view mprisPrefix = "org.mpris.MediaPlayer2.";
constexpr const char* objectPath = "/org/mpris/MediaPlayer2";
constexpr const char* playerInterface = "org.mpris.MediaPlayer2.Player";
constexpr int callTimeoutMs = 5000;

struct VariantDeleter {
    void operator()(GVariant* value) const { g_variant_unref(value); }
};
using Variant = std::unique_ptr<GVariant, VariantDeleter>;

Variant call(GDBusConnection* bus, const std::string& name, const char* path, const char* interface,
             const char* method, GVariant* parameters, const char* reply,
             std::string* reason = nullptr) {
    GError* error = nullptr;
    GVariant* result = g_dbus_connection_call_sync(
        bus, name.c_str(), path, interface, method, parameters,
        reply ? G_VARIANT_TYPE(reply) : nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, callTimeoutMs,
        nullptr, &error);
    if (!result && reason) *reason = error ? error->message : "unknown error";
    g_clear_error(&error);
    return Variant(result);
}

// A property's value, unwrapped from its variant; null when it cannot be read.
Variant property(GDBusConnection* bus, const std::string& name, const char* interface,
                 const char* property) {
    Variant reply = call(bus, name, objectPath, "org.freedesktop.DBus.Properties", "Get",
                         g_variant_new("(ss)", interface, property), "(v)");
    if (!reply) return nullptr;
    GVariant* boxed = nullptr;
    g_variant_get(reply.get(), "(v)", &boxed);
    return Variant(boxed);
}

std::string stringIn(GVariant* dictionary, const char* key) {
    Variant value(g_variant_lookup_value(dictionary, key, nullptr));
    if (!value) return {};
    if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING))
        return g_variant_get_string(value.get(), nullptr);
    // xesam:artist is a list of names.
    if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING_ARRAY)) {
        std::string joined;
        const gchar** names = g_variant_get_strv(value.get(), nullptr);
        for (const gchar** name = names; name && *name; ++name)
            joined += (joined.empty() ? "" : ", ") + std::string(*name);
        g_free(names);
        return joined;
    }
    return {};
}

double microsecondsAsSeconds(GVariant* value) {
    if (!value) return 0.0;
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_INT64))
        return static_cast<double>(g_variant_get_int64(value)) / 1e6;
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_UINT64))
        return static_cast<double>(g_variant_get_uint64(value)) / 1e6;
    return 0.0;
}

std::string playbackStatus(GDBusConnection* bus, const std::string& name) {
    Variant status = property(bus, name, playerInterface, "PlaybackStatus");
    if (!status || !g_variant_is_of_type(status.get(), G_VARIANT_TYPE_STRING)) return {};
    return g_variant_get_string(status.get(), nullptr);
}

}  // namespace

std::optional<std::string> MprisPlayer::chosenPlayer() const {
    if (!bus_) return std::nullopt;
    GDBusConnection* bus = bus_->connection();
    Variant names = call(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                         "org.freedesktop.DBus", "ListNames", nullptr, "(as)");
    if (!names) return std::nullopt;
    std::vector<std::string> players;
    GVariantIter* iter = nullptr;
    g_variant_get(names.get(), "(as)", &iter);
    const gchar* name = nullptr;
    while (g_variant_iter_next(iter, "&s", &name)) {
        if (std::string_view(name).starts_with(mprisPrefix)) players.emplace_back(name);
    }
    g_variant_iter_free(iter);
    std::sort(players.begin(), players.end());
    std::optional<std::string> paused;
    for (const std::string& player : players) {
        const std::string status = playbackStatus(bus, player);
        if (status == "Playing") return player;
        if (status == "Paused" && !paused) paused = player;
    }
    if (paused) return paused;
    if (!players.empty()) return players.front();
    return std::nullopt;
}

void MprisPlayer::command(core::MusicCommand::Action action) {
    const auto player = chosenPlayer();
    if (!player) throw personal::MediaPlayerError(Kind::noPlayer, "no MPRIS player on the bus");
    const char* method = "Play";
    switch (action) {
        case core::MusicCommand::Action::play:
            break;
        case core::MusicCommand::Action::pause:
            method = "Pause";
            break;
        case core::MusicCommand::Action::next:
            method = "Next";
            break;
        case core::MusicCommand::Action::prev:
            method = "Previous";
            break;
    }
    std::string reason;
    if (!call(bus_->connection(), *player, objectPath, playerInterface, method, nullptr, nullptr,
              &reason))
        throw personal::MediaPlayerError(Kind::failed, std::string(method) + ": " + reason);
}

void MprisPlayer::playSearch(const std::string& query) {
    const auto player = chosenPlayer();
    if (!player) throw personal::MediaPlayerError(Kind::noPlayer, "no MPRIS player on the bus");
    Variant schemes =
        property(bus_->connection(), *player, "org.mpris.MediaPlayer2", "SupportedUriSchemes");
    bool searches = false;
    if (schemes && g_variant_is_of_type(schemes.get(), G_VARIANT_TYPE_STRING_ARRAY)) {
        const gchar** list = g_variant_get_strv(schemes.get(), nullptr);
        for (const gchar** scheme = list; scheme && *scheme; ++scheme)
            searches = searches || std::string_view(*scheme) == "spotify";
        g_free(list);
    }
    if (!searches)
        throw personal::MediaPlayerError(Kind::cannotSearch, "the player has no search scheme");
    char* escaped = g_uri_escape_string(query.c_str(), nullptr, false);
    const std::string uri = std::string("spotify:search:") + escaped;
    g_free(escaped);
    std::string reason;
    if (!call(bus_->connection(), *player, objectPath, playerInterface, "OpenUri",
              g_variant_new("(s)", uri.c_str()), nullptr, &reason))
        throw personal::MediaPlayerError(Kind::failed, "OpenUri: " + reason);
}

std::optional<core::NowPlaying> MprisPlayer::nowPlaying() {
    const auto player = chosenPlayer();
    if (!player) return std::nullopt;
    GDBusConnection* bus = bus_->connection();
    Variant metadata = property(bus, *player, playerInterface, "Metadata");
    if (!metadata || !g_variant_is_of_type(metadata.get(), G_VARIANT_TYPE_VARDICT))
        return std::nullopt;
    core::NowPlaying reading;
    reading.track = stringIn(metadata.get(), "xesam:title");
    if (reading.track.empty()) return std::nullopt;
    reading.artist = stringIn(metadata.get(), "xesam:artist");
    if (std::string album = stringIn(metadata.get(), "xesam:album"); !album.empty())
        reading.album = std::move(album);
    Variant length(g_variant_lookup_value(metadata.get(), "mpris:length", nullptr));
    reading.durationSeconds = microsecondsAsSeconds(length.get());
    reading.positionSeconds =
        microsecondsAsSeconds(property(bus, *player, playerInterface, "Position").get());
    reading.isPlaying = playbackStatus(bus, *player) == "Playing";
    return reading;
}

}  // namespace nuvrel::platform
