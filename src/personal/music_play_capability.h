#pragma once
// Music: play a search, a genre or whatever is queued, pause, skip, and say what is playing.
// "Play" counts only when the player says so in a fresh reading.
//
// Threading: plan() is pure; execute() blocks on the caller's task, at most about 5 s of
// polling.

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/diagnostics.h"
#include "core/app_language.h"
#include "core/capability.h"
#include "personal/media_player.h"

namespace nuvrel::personal {

namespace MusicGenreMapper {
// The genres of every table row that one of whose keywords the lower-cased query contains,
// in table order, each once.
std::vector<std::string> candidateGenres(std::string_view query);
}  // namespace MusicGenreMapper

class MusicPlayCapability : public core::Capability {
public:
    using Sleep = std::function<void(std::chrono::milliseconds)>;

    MusicPlayCapability(core::AppLanguage language, std::shared_ptr<MediaPlayer> player,
                        Sleep sleep, base::Diagnostics diagnostics)
        : language_(language),
          player_(std::move(player)),
          sleep_(std::move(sleep)),
          diagnostics_(std::move(diagnostics)) {}

    core::IntentID intentID() const override { return core::IntentID::musicPlay; }
    // "action" (one of the four, else play) and "query" as it stands; never fails.
    core::ActionPlan plan(const core::Slots& slots, std::string_view query) const override;
    core::CapabilityResult execute(const core::ActionPlan& plan) override;

    // The macOS script's record: six fields split at U+001F; "none" or another count gives
    // nothing, an empty album is absent, numbers that do not parse are 0.
    static std::optional<core::NowPlaying> parseTrackInfo(std::string_view text);

    static constexpr int playRounds = 6;
    static constexpr std::chrono::milliseconds roundPause{900};

private:
    core::CapabilityResult nowPlayingOr(const std::string& emptyQuery) const;

    core::AppLanguage language_;
    std::shared_ptr<MediaPlayer> player_;
    Sleep sleep_;
    base::Diagnostics diagnostics_;
};

}  // namespace nuvrel::personal
