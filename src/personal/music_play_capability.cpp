#include "personal/music_play_capability.h"

#include <algorithm>
#include <array>

#include "base/text.h"
#include "core/localized_strings.h"
#include "core/slot_enums.h"
#include "core/user_facing_error.h"
#include "pipeline/validator.h"

namespace nuvrel::personal {
namespace {

struct GenreRow {
    std::vector<std::string_view> keywords;
    std::vector<std::string_view> genres;
};

const std::array<GenreRow, 9>& genreTable() {
    static const std::array<GenreRow, 9> table = {{
        {{"edm", "electronic", "dance", "일렉", "일렉트로닉", "댄스"},
         {"Dance", "Electronic", "House", "EDM", "Techno"}},
        {{"jazz", "재즈"}, {"Jazz"}},
        {{"classical", "클래식"}, {"Classical"}},
        {{"rock", "락", "록"}, {"Rock"}},
        {{"hiphop", "hip hop", "힙합", "랩", "rap"}, {"Hip-Hop/Rap", "Hip Hop", "Rap"}},
        {{"kpop", "k-pop", "케이팝"}, {"K-Pop", "Pop"}},
        {{"pop", "팝"}, {"Pop"}},
        {{"ballad", "발라드"}, {"Ballad", "Pop"}},
        {{"chill", "lofi", "lo-fi", "잔잔한", "차분한"}, {"Chill", "Ambient", "Jazz"}},
    }};
    return table;
}

using Action = core::MusicCommand::Action;

}  // namespace

std::vector<std::string> MusicGenreMapper::candidateGenres(std::string_view query) {
    const std::string lowered = base::text::lower(query);
    std::vector<std::string> genres;
    for (const GenreRow& row : genreTable()) {
        if (std::none_of(row.keywords.begin(), row.keywords.end(), [&](std::string_view keyword) {
                return base::text::contains(lowered, keyword);
            }))
            continue;
        for (std::string_view genre : row.genres) {
            if (std::find(genres.begin(), genres.end(), genre) == genres.end())
                genres.emplace_back(genre);
        }
    }
    return genres;
}

std::optional<core::NowPlaying> MusicPlayCapability::parseTrackInfo(std::string_view text) {
    if (text == "none") return std::nullopt;
    std::vector<std::string> fields(1);
    for (const char c : text) {
        if (c == '\x1f')
            fields.emplace_back();
        else
            fields.back() += c;
    }
    if (fields.size() != 6) return std::nullopt;
    core::NowPlaying reading;
    reading.track = fields[0];
    reading.artist = fields[1];
    if (!fields[2].empty()) reading.album = fields[2];
    reading.isPlaying = fields[3] == "true";
    reading.positionSeconds = base::text::parseDecimal(fields[4]).value_or(0.0);
    reading.durationSeconds = base::text::parseDecimal(fields[5]).value_or(0.0);
    return reading;
}

core::ActionPlan MusicPlayCapability::plan(const core::Slots& slots, std::string_view) const {
    Action action = Action::play;
    if (const auto raw = pipeline::Validator::stringSlot(slots, "action")) {
        const std::string lowered = base::text::lower(*raw);
        if (core::SlotEnums::musicAction().contains(lowered))
            action = core::musicActionFromRawValue(lowered).value_or(Action::play);
    }
    return core::ActionPlan(
        core::MusicCommand{pipeline::Validator::stringSlot(slots, "query"), action});
}

core::CapabilityResult MusicPlayCapability::nowPlayingOr(const std::string& emptyQuery) const {
    if (auto reading = player_->nowPlaying()) return core::CapabilityResult::NowPlaying{*reading};
    return core::CapabilityResult::Empty{core::IntentID::musicPlay, emptyQuery};
}

core::CapabilityResult MusicPlayCapability::execute(const core::ActionPlan& plan) {
    const auto& strings = core::LocalizedStrings::strings(language_);
    const auto* command = plan.get<core::MusicCommand>();
    if (!command) throw core::UserFacingError(strings.capabilityUnavailableMessage);
    const std::string query = base::text::trim(command->query.value_or(""));
    const auto playing = [&] {
        const auto reading = player_->nowPlaying();
        return reading && reading->isPlaying;
    };
    try {
        if (command->action != Action::play) {
            player_->command(command->action);
            return nowPlayingOr(query);
        }
        for (int round = 0; round < playRounds; ++round) {
            if (round > 0) sleep_(roundPause);
            // Every round repeats the attempt: a player that was starting may take it now.
            if (query.empty())
                player_->command(Action::play);
            else
                player_->playSearch(query);
            if (playing()) return nowPlayingOr(query);
        }
        return core::CapabilityResult::Empty{core::IntentID::musicPlay, query};
    } catch (const MediaPlayerError& error) {
        diagnostics_.event(std::string("music.play failure: ") + error.what());
        switch (error.kind) {
            case MediaPlayerError::Kind::noPlayer:
                throw core::UserFacingError(strings.musicNoPlayerMessage);
            case MediaPlayerError::Kind::cannotSearch:
                throw core::UserFacingError(strings.musicCannotSearchMessage);
            case MediaPlayerError::Kind::failed:
                break;
        }
        throw core::UserFacingError(strings.musicAutomationFailedMessage,
                                    std::string(strings.automationFailedRecovery), true);
    }
}

}  // namespace nuvrel::personal
