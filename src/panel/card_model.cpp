#include "panel/card_model.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <type_traits>

#include "base/text.h"
#include "base/time_text.h"

namespace nuvrel::panel {

using Result = core::CapabilityResult;
using Strings = core::LocalizedStrings;

namespace {

std::string filled(const std::string& templ, std::string_view value) {
    return base::text::replaceAll(templ, "%@", value);
}

std::string filledPair(const std::string& templ, std::string_view first, std::string_view second) {
    return base::text::replaceAll(base::text::replaceAll(templ, "%1$@", first), "%2$@", second);
}

// Whole degrees, rounded half away from zero; never "-0°".
std::string degrees(double celsius) {
    const long rounded = std::lround(celsius);
    return std::to_string(rounded == 0 ? 0L : rounded) + "°";
}

// A row is one line: line ends inside a clipboard entry or a title become blanks.
std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    std::replace(text.begin(), text.end(), '\r', ' ');
    return text;
}

std::string localTime(Result::TimePoint time) {
    return base::formatTime(time, "%H:%M", false);
}

CardRow fileRow(const std::string& name, const std::string& path) {
    return CardRow{.title = oneLine(name),
                   .detail = path,
                   .activate = {CardAction::Kind::openFile, path},
                   .alternate = {CardAction::Kind::revealFile, path},
                   .copyText = path,
                   .elide = CardRow::Elide::middle};
}

// The answer itself as the card's one row, so that Return copies it.
CardRow copyRow(const std::string& text) {
    return CardRow{.title = text, .activate = {CardAction::Kind::copyText, text}, .copyText = text};
}

// A row of a deletion card: Return (or its button) deletes that item, after the user chose it.
CardRow deleteRow(std::size_t row, const std::string& title, std::string detail) {
    return CardRow{.title = oneLine(title),
                   .detail = std::move(detail),
                   .activate = {CardAction::Kind::confirm, {}, row},
                   .copyText = title};
}

std::string eventTime(const core::EventItem& event, const Strings& strings) {
    return event.isAllDay ? std::string(strings.calendarAllDayLabel)
                          : event.startTime + "–" + event.endTime;
}

std::string eventDetail(const core::EventItem& event, const Strings& strings) {
    std::string detail = eventTime(event, strings);
    if (event.location && !event.location->empty()) detail += " · " + *event.location;
    return detail;
}

std::string windowActionLabel(core::WindowAction action, const Strings& strings) {
    using core::WindowAction;
    switch (action) {
        case WindowAction::leftHalf:
            return strings.windowActionLeftHalfLabel;
        case WindowAction::rightHalf:
            return strings.windowActionRightHalfLabel;
        case WindowAction::topHalf:
            return strings.windowActionTopHalfLabel;
        case WindowAction::bottomHalf:
            return strings.windowActionBottomHalfLabel;
        case WindowAction::maximize:
            return strings.windowActionMaximizeLabel;
        case WindowAction::center:
            return strings.windowActionCenterLabel;
        case WindowAction::nextDisplay:
            return strings.windowActionNextDisplayLabel;
        default:
            return strings.windowActionQuarterLabel;
    }
}

// The title and message of a missing permission; kinds without texts of their own use the
// generic pair with the kind's name.
std::pair<std::string, std::string> permissionTexts(core::PermissionKind kind,
                                                    const Strings& strings) {
    using core::PermissionKind;
    switch (kind) {
        case PermissionKind::calendar:
            return {strings.calendarPermissionTitle, strings.calendarPermissionMessage};
        case PermissionKind::contacts:
            return {strings.contactsPermissionTitle, strings.contactsPermissionMessage};
        case PermissionKind::automation:
            return {strings.automationPermissionTitle, strings.automationPermissionMessage};
        case PermissionKind::accessibility:
            return {strings.accessibilityPermissionTitle, strings.accessibilityPermissionMessage};
        case PermissionKind::notifications:
            return {strings.notificationsPermissionTitle, strings.notificationsPermissionMessage};
        case PermissionKind::reminders:
            return {strings.remindersPermissionTitle, strings.remindersPermissionMessage};
        case PermissionKind::location:
            return {strings.locationPermissionTitle, strings.locationPermissionMessage};
        default: {
            const std::string name(core::rawValue(kind));
            return {filled(strings.permissionGenericTitleTemplate, name),
                    filled(strings.permissionGenericMessageTemplate, name)};
        }
    }
}

Card draftCard(const core::MessageDraft& draft, const Strings& strings, bool sent) {
    const std::string who = draft.resolvedName.value_or(draft.recipientQuery);
    const bool mail = draft.channel == core::MessageDraft::Channel::mail;
    Card card{.title = strings.messageHeaderTitle};
    if (!sent) {
        card.subtitle = strings.messageDraftReadyLabel;
    } else {
        card.subtitle = filled(
            mail ? strings.messageOpenedInMailTemplate : strings.messageDeliveredTemplate, who);
    }
    card.paragraphs = {
        "→ " + who + (mail ? " · " + std::string(strings.messageChannelMailLabel) : std::string()),
        draft.body};
    return card;
}

Card webAnswerCard(const core::WebAnswer& answer, const Strings& strings) {
    Card card{.title = strings.webAnswerHeaderTitle};
    if (answer.summaryIsExtractive) {
        card.subtitle = strings.webAnswerExtractiveSourceLabel;
    } else if (answer.summaryModelName) {
        card.subtitle = filled(strings.webAnswerSummarizedByTemplate, *answer.summaryModelName);
    } else if (answer.summary) {
        card.subtitle = strings.webAnswerSummarizedBy;
    }
    if (answer.fallbackNotice) {
        card.paragraphs.push_back(strings.webAnswerFallbackNotice);
        card.tone = Card::Tone::notice;
    }
    if (answer.summary) card.paragraphs.push_back(*answer.summary);
    if (!answer.summary && answer.sources.empty())
        card.paragraphs.push_back(strings.webAnswerNoResultsMessage);
    for (const auto& source : answer.sources) {
        card.rows.push_back(CardRow{.title = oneLine(source.title),
                                    .detail = source.host,
                                    .activate = {CardAction::Kind::openURL, source.url},
                                    .copyText = source.url});
    }
    if (!answer.sources.empty()) card.footer = strings.webAnswerSourcesLabel;
    return card;
}

Card emptyCard(const Result::Empty& empty, const Strings& strings) {
    switch (empty.intent) {
        case core::IntentID::musicPlay:
            return {.title = strings.musicHeaderTitle,
                    .subtitle = strings.musicNoResultsHeaderSubtitle,
                    .paragraphs = {filled(strings.musicNoMatchTemplate, empty.query)}};
        case core::IntentID::calendarQuery:
            return {.title = strings.calendarHeaderTitle,
                    .paragraphs = {strings.calendarNoEventsMessage}};
        case core::IntentID::webSearch:
            return {.title = strings.webAnswerHeaderTitle,
                    .paragraphs = {strings.webAnswerNoResultsMessage}};
        default:
            return {.title = strings.finderHeaderTitle,
                    .paragraphs = {filled(strings.finderNoMatchTemplate, empty.query)}};
    }
}

Card resultCard(const Result& result, const Strings& strings) {
    return std::visit(
        [&](const auto& value) -> Card {
            using T = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<T, Result::Files>) {
                Card card{.title = strings.finderHeaderTitle};
                card.subtitle = value.hits.size() == 1
                                    ? std::string(strings.finderDocumentsFoundSingular)
                                    : filled(strings.finderDocumentsFoundTemplate,
                                             std::to_string(value.hits.size()));
                for (const auto& hit : value.hits) {
                    CardRow row = fileRow(hit.name, hit.path);
                    row.detail =
                        hit.modifiedDate.empty() ? hit.path : hit.modifiedDate + " · " + hit.path;
                    card.rows.push_back(std::move(row));
                }
                return card;
            } else if constexpr (std::is_same_v<T, Result::Events>) {
                Card card{.title = strings.calendarHeaderTitle, .subtitle = value.dayLabel};
                if (value.events.empty()) card.paragraphs = {strings.calendarNoEventsMessage};
                for (const auto& event : value.events) {
                    card.rows.push_back(CardRow{.title = oneLine(event.title),
                                                .detail = eventDetail(event, strings),
                                                .copyText = event.title});
                }
                return card;
            } else if constexpr (std::is_same_v<T, Result::MessageDraft>) {
                return draftCard(value.draft, strings, false);
            } else if constexpr (std::is_same_v<T, Result::MessageSent>) {
                return draftCard(value.draft, strings, true);
            } else if constexpr (std::is_same_v<T, Result::NowPlaying>) {
                const auto& playing = value.nowPlaying;
                Card card{.title = strings.musicHeaderTitle,
                          .subtitle = playing.isPlaying ? std::string(strings.musicNowPlayingLabel)
                                                        : std::string(strings.musicPausedLabel)};
                card.paragraphs = {playing.track, playing.artist};
                if (playing.album) card.paragraphs.push_back(*playing.album);
                return card;
            } else if constexpr (std::is_same_v<T, Result::WebAnswer>) {
                return webAnswerCard(value.answer, strings);
            } else if constexpr (std::is_same_v<T, Result::Empty>) {
                return emptyCard(value, strings);
            } else if constexpr (std::is_same_v<T, Result::NeedsPermission>) {
                auto [title, message] = permissionTexts(value.permission, strings);
                return {.title = std::move(title),
                        .paragraphs = {std::move(message)},
                        .tone = Card::Tone::notice};
            } else if constexpr (std::is_same_v<T, Result::TimerSet>) {
                return {.title = strings.timerHeaderTitle,
                        .paragraphs = {filledPair(strings.timerStartedBodyTemplate,
                                                  value.displayText, localTime(value.fireDate))}};
            } else if constexpr (std::is_same_v<T, Result::TimerCancelled>) {
                return {.title = strings.timerHeaderTitle,
                        .paragraphs = {"✓ " + std::to_string(value.count)}};
            } else if constexpr (std::is_same_v<T, Result::Calculation>) {
                return {.title = strings.calculatorHeaderTitle,
                        .subtitle = strings.calculatorResultSubtitle,
                        .rows = {copyRow(value.display)}};
            } else if constexpr (std::is_same_v<T, Result::CurrencyConversion>) {
                return {.title = strings.currencyHeaderTitle,
                        .subtitle = strings.currencyResultSubtitle,
                        .rows = {copyRow(value.display)}};
            } else if constexpr (std::is_same_v<T, Result::Weather>) {
                const auto& w = value.answer;
                return {.title = strings.weatherHeaderTitle,
                        .subtitle = w.locationName,
                        .paragraphs = {degrees(w.temperatureC) + "  " + w.condition,
                                       strings.weatherHighLabel + " " + degrees(w.highC) + " · " +
                                           strings.weatherLowLabel + " " + degrees(w.lowC)},
                        .footer = w.source == core::WeatherSource::openMeteo
                                      ? strings.weatherSourceOpenMeteoLabel
                                      : strings.weatherSourceAppleLabel};
            } else if constexpr (std::is_same_v<T, Result::AppLaunched>) {
                return {.title = strings.appLaunchHeaderTitle,
                        .paragraphs = {filled(strings.appLaunchedTemplate, value.name)}};
            } else if constexpr (std::is_same_v<T, Result::DocumentSummary>) {
                return {.title = strings.documentSummaryHeaderTitle,
                        .subtitle = value.fileName,
                        .paragraphs = {value.summary},
                        .rows = {fileRow(value.fileName, value.filePath)}};
            } else if constexpr (std::is_same_v<T, Result::SystemCommandExecuted>) {
                return {.title = strings.systemCommandHeaderTitle,
                        .paragraphs = {"✓ " + std::string(core::rawValue(value.command))}};
            } else if constexpr (std::is_same_v<T, Result::ScreenshotTaken>) {
                const std::string name = std::filesystem::path(value.path).filename().string();
                return {.title = strings.systemCommandHeaderTitle,
                        .rows = {fileRow(name, value.path)}};
            } else if constexpr (std::is_same_v<T, Result::ClipboardHistory>) {
                Card card{.title = strings.clipboardHistoryHeaderTitle};
                for (const auto& entry : value.entries) {
                    CardRow row = copyRow(entry);
                    row.title = oneLine(entry);
                    card.rows.push_back(std::move(row));
                }
                return card;
            } else if constexpr (std::is_same_v<T, Result::DeleteFileConfirmation>) {
                CardRow row = deleteRow(0, value.file.name, value.file.path);
                row.alternate = {CardAction::Kind::revealFile, value.file.path};
                row.elide = CardRow::Elide::middle;
                return {.title = strings.deleteFileHeaderTitle,
                        .paragraphs = {filled(strings.deleteFileConfirmMessageTemplate,
                                              value.file.name)},
                        .rows = {std::move(row)}};
            } else if constexpr (std::is_same_v<T, Result::CalendarDeleteConfirmation>) {
                Card card{.title = strings.calendarHeaderTitle, .subtitle = value.dayLabel};
                for (std::size_t i = 0; i < value.events.size(); ++i) {
                    card.rows.push_back(
                        deleteRow(i, value.events[i].title, eventDetail(value.events[i], strings)));
                }
                return card;
            } else if constexpr (std::is_same_v<T, Result::ReminderDeleteConfirmation>) {
                Card card{.title = strings.reminderHeaderTitle};
                for (std::size_t i = 0; i < value.reminders.size(); ++i) {
                    const auto& item = value.reminders[i];
                    card.rows.push_back(deleteRow(i, item.title, item.dueLabel.value_or("")));
                }
                return card;
            } else if constexpr (std::is_same_v<T, Result::NoteDeleteConfirmation>) {
                Card card{.title = strings.noteHeaderTitle};
                for (std::size_t i = 0; i < value.notes.size(); ++i)
                    card.rows.push_back(deleteRow(i, value.notes[i].title, {}));
                return card;
            } else if constexpr (std::is_same_v<T, Result::FileDeleted>) {
                return {.title = strings.deleteFileHeaderTitle,
                        .paragraphs = {filled(strings.deleteFileDeletedTemplate, value.name)}};
            } else if constexpr (std::is_same_v<T, Result::CalendarEventDeleted>) {
                return {.title = strings.calendarHeaderTitle, .paragraphs = {"✓ " + value.title}};
            } else if constexpr (std::is_same_v<T, Result::ReminderDeleted>) {
                return {.title = strings.reminderHeaderTitle, .paragraphs = {"✓ " + value.title}};
            } else if constexpr (std::is_same_v<T, Result::NoteDeleted>) {
                return {.title = strings.noteHeaderTitle, .paragraphs = {"✓ " + value.title}};
            } else if constexpr (std::is_same_v<T, Result::ReminderSet>) {
                return {.title = strings.reminderHeaderTitle,
                        .subtitle =
                            value.fireDate
                                ? filled(strings.reminderSetWithTimeTemplate,
                                         base::formatTime(*value.fireDate, "%Y-%m-%d %H:%M", false))
                                : std::string(strings.reminderSetNoTimeTemplate),
                        .paragraphs = {value.title}};
            } else if constexpr (std::is_same_v<T, Result::WindowArranged>) {
                return {.title = strings.windowHeaderTitle,
                        .subtitle = value.appName,
                        .paragraphs = {windowActionLabel(value.action, strings)}};
            } else if constexpr (std::is_same_v<T, Result::NoteSaved>) {
                return {.title = strings.noteHeaderTitle,
                        .subtitle = strings.noteSavedLabel,
                        .paragraphs = {value.content}};
            } else if constexpr (std::is_same_v<T, Result::Translation>) {
                return {.title = strings.translateHeaderTitle,
                        .subtitle = value.targetLanguage,
                        .paragraphs = {value.translatedText},
                        .footer = value.modelName ? filled(strings.translateTranslatedByTemplate,
                                                           *value.modelName)
                                                  : std::string()};
            } else {
                static_assert(std::is_same_v<T, Result::HelpOverview>, "every case has a card");
                Card card{.title = strings.helpHeaderTitle, .subtitle = strings.helpSubtitle};
                card.paragraphs.assign(strings.helpItems.begin(), strings.helpItems.end());
                return card;
            }
        },
        result.storage());
}

// One line that stands for a finished step in its chain row.
std::string stepSummary(const core::PipelineOutcome& outcome, const Strings& strings) {
    if (const auto* result = outcome.asResult(); result && result->is<Result::NeedsPermission>()) {
        return strings.chainStepNeedsPermissionLabel;
    }
    if (const auto* error = outcome.asError()) return error->message;
    const Card card = buildCard(outcome, strings);
    if (!card.rows.empty() && card.paragraphs.empty()) return card.rows.front().title;
    if (!card.paragraphs.empty()) return oneLine(card.paragraphs.back());
    return strings.chainStepDoneLabel;
}

}  // namespace

Card buildCard(const core::PipelineOutcome& outcome, const Strings& strings) {
    switch (outcome.kind()) {
        case core::PipelineOutcome::Kind::result:
            return resultCard(*outcome.asResult(), strings);
        case core::PipelineOutcome::Kind::confirm: {
            const core::ActionPlan& plan = *outcome.asConfirm();
            Card card;
            if (const auto* draft = plan.get<core::MessageDraft>()) {
                card = draftCard(*draft, strings, false);
                card.buttons = {
                    {strings.messageSendButtonLabel, {CardAction::Kind::confirm, {}, 0}}};
            } else {
                card.buttons = {
                    {strings.onboardingContinueButtonLabel, {CardAction::Kind::confirm, {}, 0}}};
            }
            return card;
        }
        case core::PipelineOutcome::Kind::error: {
            const auto& error = *outcome.asError();
            Card card{.title = error.message, .tone = Card::Tone::error};
            if (error.recoverySuggestion) card.paragraphs = {*error.recoverySuggestion};
            if (error.retryable)
                card.buttons = {{strings.errorRetryButtonLabel, {CardAction::Kind::retry}}};
            return card;
        }
        case core::PipelineOutcome::Kind::cancelled:
            return {};
    }
    return {};
}

Card buildChainCard(const std::vector<app::ChainStepState>& steps, const Strings& strings) {
    const int total = static_cast<int>(steps.size());
    const int done = static_cast<int>(std::count_if(
        steps.begin(), steps.end(), [](const auto& step) { return step.outcome.has_value(); }));
    Card card{.title = strings.chainHeaderTitle};
    card.subtitle = done == total ? base::text::replaceAll(strings.chainDoneSubtitleTemplate, "%d",
                                                           std::to_string(total))
                                  : strings.chainProgressSubtitle(done, total);
    for (const auto& step : steps) {
        CardRow row{.title = std::to_string(step.id + 1) + ". " + oneLine(step.subQuery)};
        if (!step.outcome) {
            row.detail = strings.chainStepRunningLabel;
        } else {
            row.detail = stepSummary(*step.outcome, strings);
            row.copyText = row.detail;
        }
        card.rows.push_back(std::move(row));
    }
    return card;
}

Card buildThinkingCard(std::optional<double> modelDownloadProgress, const Strings& strings) {
    if (!modelDownloadProgress) return {.title = strings.thinkingLabel};
    const double clamped = std::clamp(*modelDownloadProgress, 0.0, 1.0);
    return {.title = strings.modelDownloadingLabel,
            .subtitle = std::to_string(static_cast<int>(std::lround(clamped * 100.0))) + "%"};
}

ConfirmedRow describeConfirmed(const core::PipelineOutcome& outcome, const Strings& strings) {
    if (const auto* error = outcome.asError()) return {ConfirmedRow::State::failed, error->message};
    const Result* result = outcome.asResult();
    if (!result) return {ConfirmedRow::State::failed, strings.genericErrorMessage};
    if (result->is<Result::NeedsPermission>())
        return {ConfirmedRow::State::needsPermission, strings.chainStepNeedsPermissionLabel};
    if (const auto* deleted = result->get<Result::FileDeleted>())
        return {ConfirmedRow::State::done,
                filled(strings.deleteFileDeletedTemplate, deleted->name)};
    const Card card = resultCard(*result, strings);
    if (!card.subtitle.empty()) return {ConfirmedRow::State::done, card.subtitle};
    return {ConfirmedRow::State::done, card.paragraphs.empty()
                                           ? std::string(strings.chainStepDoneLabel)
                                           : card.paragraphs.front()};
}

}  // namespace nuvrel::panel
