#pragma once
// The media player of the session (the live form: MPRIS 2 on the session bus): the playing
// player, else the most recently active one. Calls block on the caller's task.

#include <optional>
#include <stdexcept>
#include <string>

#include "core/plan_records.h"
#include "core/result_records.h"

namespace nuvrel::personal {

class MediaPlayerError : public std::runtime_error {
public:
    enum class Kind { noPlayer, cannotSearch, failed };
    MediaPlayerError(Kind kind, const std::string& reason)
        : std::runtime_error(reason), kind(kind) {}
    Kind kind;
};

class MediaPlayer {
public:
    virtual ~MediaPlayer() = default;
    // play resumes what is paused or queued. Throws MediaPlayerError.
    virtual void command(core::MusicCommand::Action action) = 0;
    // Starts playing what the search or genre finds. Throws MediaPlayerError (cannotSearch
    // when the player offers no way to search).
    virtual void playSearch(const std::string& query) = 0;
    // Nothing when no player runs or it reports no track; never throws.
    virtual std::optional<core::NowPlaying> nowPlaying() = 0;
};

}  // namespace nuvrel::personal
