#pragma once
// The session's media player through MPRIS 2 (org.mpris.MediaPlayer2.*): the one that plays,
// else one that is paused, else the first. A search plays through the player's OpenUri where
// it declares a scheme that searches (Spotify's "spotify:search:").

#include <memory>

#include "personal/media_player.h"
#include "platform/linux/session_bus.h"

namespace nuvrel::platform {

class MprisPlayer : public personal::MediaPlayer {
public:
    // `bus` may be null: then no player runs.
    explicit MprisPlayer(std::shared_ptr<SessionBus> bus) : bus_(std::move(bus)) {}

    // Each blocks up to 5 s per bus call.
    void command(core::MusicCommand::Action action) override;
    void playSearch(const std::string& query) override;
    std::optional<core::NowPlaying> nowPlaying() override;

private:
    // The bus name of the player to talk to; nothing when none runs.
    std::optional<std::string> chosenPlayer() const;

    std::shared_ptr<SessionBus> bus_;
};

}  // namespace nuvrel::platform
