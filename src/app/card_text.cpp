#include "app/card_text.h"

#include <cmath>
#include <type_traits>

#include "base/text.h"

namespace nuvrel::app {

using Result = core::CapabilityResult;

namespace {

// Whole degrees Celsius, rounded half away from zero; never "-0°".
std::string degrees(double celsius) {
    const long rounded = std::lround(celsius);
    return std::to_string(rounded == 0 ? 0L : rounded) + "°";
}

std::string filled(const std::string& templ, std::string_view value) {
    return base::text::replaceAll(templ, "%@", value);
}

void appendLine(std::string& out, std::string_view line) {
    out.append(line).push_back('\n');
}

std::string draftText(const core::MessageDraft& draft, const core::LocalizedStrings& strings) {
    std::string out;
    appendLine(out, strings.messageHeaderTitle);
    appendLine(out, "→ " + draft.resolvedName.value_or(draft.recipientQuery) + " (" +
                        std::string(core::rawValue(draft.channel)) + ")");
    appendLine(out, draft.body);
    return out;
}

std::string webAnswerText(const core::WebAnswer& answer, const core::LocalizedStrings& strings) {
    std::string out;
    if (answer.fallbackNotice) appendLine(out, strings.webAnswerFallbackNotice);
    if (answer.summary) appendLine(out, *answer.summary);
    if (answer.summaryModelName)
        appendLine(out, filled(strings.webAnswerSummarizedByTemplate, *answer.summaryModelName));
    if (!answer.sources.empty()) {
        appendLine(out, strings.webAnswerSourcesLabel);
        for (const auto& source : answer.sources)
            appendLine(out, "  " + source.title + " — " + source.url);
    }
    if (!answer.summary && answer.sources.empty())
        appendLine(out, strings.webAnswerNoResultsMessage);
    return out;
}

std::string resultText(const Result& result, const core::LocalizedStrings& strings) {
    return std::visit(
        [&](const auto& value) -> std::string {
            using T = std::decay_t<decltype(value)>;
            std::string out;
            if constexpr (std::is_same_v<T, Result::Calculation> ||
                          std::is_same_v<T, Result::CurrencyConversion>) {
                appendLine(out, value.display);
            } else if constexpr (std::is_same_v<T, Result::HelpOverview>) {
                appendLine(out, strings.helpHeaderTitle);
                appendLine(out, strings.helpSubtitle);
                for (const auto& item : strings.helpItems) appendLine(out, "  • " + item);
            } else if constexpr (std::is_same_v<T, Result::Files>) {
                appendLine(out, strings.finderHeaderTitle);
                for (const auto& hit : value.hits)
                    appendLine(out, "  " + hit.path + "  " + hit.modifiedDate);
            } else if constexpr (std::is_same_v<T, Result::Events> ||
                                 std::is_same_v<T, Result::CalendarDeleteConfirmation>) {
                appendLine(out, strings.calendarHeaderTitle + " · " + value.dayLabel);
                if (value.events.empty()) appendLine(out, strings.calendarNoEventsMessage);
                for (const auto& event : value.events) {
                    appendLine(out, "  " +
                                        (event.isAllDay ? std::string(strings.calendarAllDayLabel)
                                                        : event.startTime + "–" + event.endTime) +
                                        "  " + event.title);
                }
            } else if constexpr (std::is_same_v<T, Result::MessageDraft> ||
                                 std::is_same_v<T, Result::MessageSent>) {
                out = draftText(value.draft, strings);
            } else if constexpr (std::is_same_v<T, Result::NowPlaying>) {
                appendLine(out,
                           std::string(value.nowPlaying.isPlaying ? strings.musicNowPlayingLabel
                                                                  : strings.musicPausedLabel) +
                               ": " + value.nowPlaying.track + " — " + value.nowPlaying.artist);
            } else if constexpr (std::is_same_v<T, Result::WebAnswer>) {
                out = webAnswerText(value.answer, strings);
            } else if constexpr (std::is_same_v<T, Result::Empty>) {
                appendLine(out, filled(strings.finderNoMatchTemplate, value.query));
            } else if constexpr (std::is_same_v<T, Result::NeedsPermission>) {
                appendLine(out, filled(strings.permissionGenericTitleTemplate,
                                       core::rawValue(value.permission)));
            } else if constexpr (std::is_same_v<T, Result::TimerSet>) {
                appendLine(out, strings.timerHeaderTitle + ": " + value.displayText);
            } else if constexpr (std::is_same_v<T, Result::TimerCancelled>) {
                appendLine(out, strings.timerHeaderTitle + ": " + std::to_string(value.count));
            } else if constexpr (std::is_same_v<T, Result::Weather>) {
                const auto& w = value.answer;
                appendLine(out,
                           w.locationName + "  " + degrees(w.temperatureC) + "  " + w.condition);
                appendLine(out, strings.weatherHighLabel + " " + degrees(w.highC) + " · " +
                                    strings.weatherLowLabel + " " + degrees(w.lowC));
                appendLine(out, w.source == core::WeatherSource::openMeteo
                                    ? strings.weatherSourceOpenMeteoLabel
                                    : strings.weatherSourceAppleLabel);
            } else if constexpr (std::is_same_v<T, Result::AppLaunched>) {
                appendLine(out, filled(strings.appLaunchedTemplate, value.name));
            } else if constexpr (std::is_same_v<T, Result::DocumentSummary>) {
                appendLine(out, strings.documentSummaryHeaderTitle + " · " + value.fileName);
                appendLine(out, value.summary);
            } else if constexpr (std::is_same_v<T, Result::SystemCommandExecuted>) {
                appendLine(out, strings.systemCommandHeaderTitle + ": " +
                                    std::string(core::rawValue(value.command)));
            } else if constexpr (std::is_same_v<T, Result::ScreenshotTaken>) {
                appendLine(out, value.path);
            } else if constexpr (std::is_same_v<T, Result::ClipboardHistory>) {
                appendLine(out, strings.clipboardHistoryHeaderTitle);
                for (const auto& entry : value.entries) appendLine(out, "  " + entry);
            } else if constexpr (std::is_same_v<T, Result::DeleteFileConfirmation>) {
                appendLine(out, filled(strings.deleteFileConfirmMessageTemplate, value.file.name));
            } else if constexpr (std::is_same_v<T, Result::FileDeleted>) {
                appendLine(out, filled(strings.deleteFileDeletedTemplate, value.name));
            } else if constexpr (std::is_same_v<T, Result::CalendarEventDeleted> ||
                                 std::is_same_v<T, Result::ReminderDeleted> ||
                                 std::is_same_v<T, Result::NoteDeleted>) {
                appendLine(out, "✓ " + value.title);
            } else if constexpr (std::is_same_v<T, Result::ReminderSet>) {
                appendLine(out, strings.reminderHeaderTitle + ": " + value.title);
            } else if constexpr (std::is_same_v<T, Result::ReminderDeleteConfirmation>) {
                for (const auto& item : value.reminders) appendLine(out, "  " + item.title);
            } else if constexpr (std::is_same_v<T, Result::NoteDeleteConfirmation>) {
                for (const auto& item : value.notes) appendLine(out, "  " + item.title);
            } else if constexpr (std::is_same_v<T, Result::WindowArranged>) {
                appendLine(out, strings.windowHeaderTitle + ": " + value.appName + " (" +
                                    std::string(core::rawValue(value.action)) + ")");
            } else if constexpr (std::is_same_v<T, Result::NoteSaved>) {
                appendLine(out, strings.noteSavedLabel);
                appendLine(out, value.content);
            } else {
                static_assert(std::is_same_v<T, Result::Translation>, "every case has a text");
                appendLine(out, value.translatedText);
                if (value.modelName)
                    appendLine(out,
                               filled(strings.translateTranslatedByTemplate, *value.modelName));
            }
            return out;
        },
        result.storage());
}

}  // namespace

std::string cardText(const core::PipelineOutcome& outcome, const core::LocalizedStrings& strings) {
    switch (outcome.kind()) {
        case core::PipelineOutcome::Kind::result:
            return resultText(*outcome.asResult(), strings);
        case core::PipelineOutcome::Kind::confirm: {
            const auto* draft = outcome.asConfirm()->get<core::MessageDraft>();
            return draft ? draftText(*draft, strings) : std::string();
        }
        case core::PipelineOutcome::Kind::error: {
            const auto& error = *outcome.asError();
            std::string out;
            appendLine(out, error.message);
            if (error.recoverySuggestion) appendLine(out, *error.recoverySuggestion);
            return out;
        }
        case core::PipelineOutcome::Kind::cancelled:
            return {};
    }
    return {};
}

}  // namespace nuvrel::app
