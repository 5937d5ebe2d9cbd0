#include "pipeline/validator.h"

#include <algorithm>

#include "base/text.h"
#include "core/slot_enums.h"
#include "personal/weekday_names.h"
#include "pipeline/korean_particle.h"
#include "pipeline/validator_detail.h"

namespace nuvrel::pipeline::Validator {
namespace {

namespace text = base::text;
using core::IntentID;
using core::ValidationOutcome;

template <std::size_t N>
bool isIn(const std::array<std::string_view, N>& set, std::string_view value) {
    return std::find(set.begin(), set.end(), value) != set.end();
}

std::string joinedWithBlanks(const std::vector<std::string>& words) {
    std::string joined;
    for (const std::string& word : words) {
        if (!joined.empty()) joined.push_back(' ');
        joined.append(word);
    }
    return joined;
}

}  // namespace

core::ValidationOutcome validate(const core::RoutedIntent& routed, std::string_view query,
                                 const core::CapabilityRegistry& registry) {
    std::string trimmedQuery = text::trim(query);
    if (routed.intent == IntentID::unknown || !registry.capability(routed.intent))
        return ValidationOutcome::fallbackWeb(std::move(trimmedQuery));
    // Written as "below 0.5" so that a NaN confidence goes on, as any value that is not low.
    if (routed.confidence < 0.5) {
        // A complete message draft still stops at its confirmation, which is the safety net; a
        // web search for "text mom hi" would help nobody.
        if (routed.intent == IntentID::messageSend) {
            ValidationOutcome draft = validateMessageSend(routed.slots, trimmedQuery);
            if (draft.asPlan()) return draft;
        }
        return ValidationOutcome::fallbackWeb(std::move(trimmedQuery));
    }

    switch (routed.intent) {
        case IntentID::finderSearch:
            return validateFinderSearch(routed.slots, trimmedQuery, routed.confidence);
        case IntentID::calendarQuery:
            return validateCalendarQuery(routed.slots);
        case IntentID::messageSend:
            return validateMessageSend(routed.slots, trimmedQuery);
        case IntentID::musicPlay:
            return validateMusicPlay(routed.slots);
        case IntentID::webSearch: {
            // The web capability always composes an answer, whatever the model asked for.
            auto slot = stringSlot(routed.slots, "query");
            return ValidationOutcome::plan(
                core::WebQuery{slot ? std::move(*slot) : std::move(trimmedQuery), true});
        }
        default:
            return ValidationOutcome::fallbackWeb(std::move(trimmedQuery));
    }
}

std::optional<std::string> stringSlot(const core::Slots& slots, std::string_view key) {
    const auto found = slots.find(std::string(key));
    if (found == slots.end()) return std::nullopt;
    const std::string* value = found->second.asString();
    if (!value) return std::nullopt;
    const std::string_view trimmed = text::trimView(*value);
    if (trimmed.empty()) return std::nullopt;
    return std::string(trimmed);
}

// --- Calendar ---

std::optional<std::string> calendarDateRangeToken(std::string_view fromNaturalLanguage) {
    const std::string phrase = text::lower(text::trimView(fromNaturalLanguage));
    if (phrase.empty()) return std::nullopt;
    for (const personal::WeekdayName& day : personal::weekdayNames) {
        if (!text::contains(phrase, day.korean) && !text::contains(phrase, day.english)) continue;
        const bool next =
            std::any_of(calendarNextMarkers.begin(), calendarNextMarkers.end(),
                        [&](std::string_view marker) { return text::contains(phrase, marker); });
        return std::string(next ? "next_" : "this_").append(day.english);
    }
    for (const CalendarRangePhrase& row : calendarRangePhrases) {
        if (text::contains(phrase, row.korean) || text::contains(phrase, row.english)) {
            return std::string(row.token);
        }
    }
    return std::nullopt;
}

core::ValidationOutcome validateCalendarQuery(const core::Slots& slots) {
    std::string token = "today";
    if (const auto slot = stringSlot(slots, "date_range")) {
        std::string lowered = text::lower(*slot);
        if (core::SlotEnums::calendarDateRange().contains(lowered)) {
            token = std::move(lowered);
        } else if (auto parsed = calendarDateRangeToken(*slot)) {
            token = std::move(*parsed);
        }
    }
    return ValidationOutcome::plan(
        core::CalendarRange{std::move(token), stringSlot(slots, "keyword")});
}

// --- Messages ---

std::string strippingDativeParticle(std::string_view recipient) {
    const std::string_view trimmed = text::trimView(recipient);
    for (const std::string_view particle : dativeParticles) {
        if (!trimmed.ends_with(particle)) continue;
        const std::string_view rest =
            text::trimView(trimmed.substr(0, trimmed.size() - particle.size()));
        // "께" alone is a name, not a particle.
        return std::string(rest.empty() ? trimmed : rest);
    }
    return std::string(trimmed);
}

std::optional<core::MessageDraft::Channel> deterministicMailChannel(std::string_view query) {
    std::string normalized = normalizedForFinderMatching(query);
    // A Japanese "short mail" is a text message.
    if (text::contains(normalized, "ショートメール"))
        normalized = text::replaceAll(normalized, "ショートメール", " ");
    static constexpr std::array<std::string_view, 4> mailWords{"메일", "メール", "邮件", "邮箱"};
    const bool mail =
        containsWholeWord(normalized, "mail") || containsWholeWord(normalized, "email") ||
        std::any_of(mailWords.begin(), mailWords.end(),
                    [&](std::string_view word) { return text::contains(normalized, word); });
    if (!mail) return std::nullopt;
    return core::MessageDraft::Channel::mail;
}

core::ValidationOutcome validateMessageSend(const core::Slots& slots,
                                            std::string_view trimmedQuery) {
    auto recipient = stringSlot(slots, "recipient");
    if (!recipient) return ValidationOutcome::missingSlot(IntentID::messageSend, "recipient");
    auto body = stringSlot(slots, "body");
    if (!body) return ValidationOutcome::missingSlot(IntentID::messageSend, "body");

    auto channel = core::MessageDraft::Channel::imessage;
    if (const auto slot = stringSlot(slots, "channel")) {
        const std::string lowered = text::lower(*slot);
        if (core::SlotEnums::messageChannel().contains(lowered)) {
            channel = core::messageChannelFromRawValue(lowered).value_or(channel);
        }
    }
    if (const auto mail = deterministicMailChannel(trimmedQuery)) channel = *mail;

    return ValidationOutcome::plan(
        core::MessageDraft{.recipientQuery = strippingDativeParticle(*recipient),
                           .resolvedName = std::nullopt,
                           .channel = channel,
                           .body = std::move(*body)});
}

// --- Music ---

std::optional<std::string> musicQueryStrippingTrailingRequestVerb(std::string_view query) {
    std::vector<std::string> words = text::splitBlanks(query);
    while (!words.empty() && isIn(musicQueryTrailingRequestVerbs, text::lower(words.back()))) {
        words.pop_back();
    }
    if (words.empty()) return std::nullopt;
    words.back() = KoreanParticle::stripTrailingObjectParticle(words.back());
    // A last word that was only a filler ("좀") leaves no trailing blank behind.
    if (words.back().empty()) words.pop_back();
    std::string joined = joinedWithBlanks(words);
    if (joined.empty()) return std::nullopt;
    return joined;
}

std::optional<std::string> musicQueryStrippingTrailingGenericNoun(std::string_view query) {
    std::vector<std::string> words = text::splitBlanks(query);
    while (!words.empty() && isIn(musicQueryTrailingGenericNouns, words.back())) words.pop_back();
    std::string joined = joinedWithBlanks(words);
    if (joined.empty()) return std::nullopt;
    return joined;
}

core::ValidationOutcome validateMusicPlay(const core::Slots& slots) {
    auto action = core::MusicCommand::Action::play;
    if (const auto slot = stringSlot(slots, "action")) {
        const std::string lowered = text::lower(*slot);
        if (core::SlotEnums::musicAction().contains(lowered)) {
            action = core::musicActionFromRawValue(lowered).value_or(action);
        }
    }
    std::optional<std::string> query;
    if (const auto slot = stringSlot(slots, "query")) {
        if (const auto withoutVerb = musicQueryStrippingTrailingRequestVerb(*slot)) {
            query = musicQueryStrippingTrailingGenericNoun(*withoutVerb);
        }
    }
    return ValidationOutcome::plan(core::MusicCommand{std::move(query), action});
}

}  // namespace nuvrel::pipeline::Validator
