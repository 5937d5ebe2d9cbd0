#include "app/outcome_json.h"

#include <chrono>
#include <ctime>
#include <type_traits>

#include "base/time_text.h"

namespace nuvrel::app {

using nlohmann::ordered_json;
using Result = core::CapabilityResult;

namespace {

template <class T>
ordered_json optional(const std::optional<T>& value) {
    return value ? ordered_json(*value) : ordered_json(nullptr);
}

ordered_json optionalTime(const std::optional<std::chrono::system_clock::time_point>& time) {
    return time ? ordered_json(base::iso8601Timestamp(*time)) : ordered_json(nullptr);
}

ordered_json fileJSON(const core::FileHit& file) {
    return {{"name", file.name}, {"path", file.path}, {"modifiedDate", file.modifiedDate}};
}

ordered_json eventJSON(const core::EventItem& event) {
    return {{"title", event.title},
            {"location", optional(event.location)},
            {"startTime", event.startTime},
            {"endTime", event.endTime},
            {"calendarName", optional(event.calendarName)},
            {"colorHex", optional(event.colorHex)},
            {"isAllDay", event.isAllDay},
            {"eventIdentifier", optional(event.eventIdentifier)}};
}

ordered_json draftFields(const core::MessageDraft& draft) {
    return {{"recipientQuery", draft.recipientQuery},
            {"resolvedName", optional(draft.resolvedName)},
            {"channel", core::rawValue(draft.channel)},
            {"body", draft.body}};
}

ordered_json webAnswerFields(const core::WebAnswer& answer) {
    ordered_json sources = ordered_json::array();
    for (const auto& source : answer.sources) {
        sources.push_back({{"title", source.title}, {"host", source.host}, {"url", source.url}});
    }
    return {{"summary", optional(answer.summary)},
            {"sources", sources},
            {"query", answer.query},
            {"fallbackNotice", answer.fallbackNotice},
            {"summaryIsExtractive", answer.summaryIsExtractive},
            {"summaryModelName", optional(answer.summaryModelName)}};
}

template <class Item, class ToJSON>
ordered_json list(const std::vector<Item>& items, ToJSON toJSON) {
    ordered_json out = ordered_json::array();
    for (const auto& item : items) out.push_back(toJSON(item));
    return out;
}

ordered_json reminderJSON(const core::ReminderListItem& item) {
    return {{"title", item.title},
            {"dueLabel", optional(item.dueLabel)},
            {"identifier", item.identifier}};
}

ordered_json noteJSON(const core::NoteListItem& item) {
    return {{"title", item.title}, {"identifier", item.identifier}};
}

// The payload of one case, without its "case" key.
ordered_json payload(const Result::Storage& storage) {
    return std::visit(
        [](const auto& value) -> ordered_json {
            using T = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<T, Result::Files>) {
                return {{"files", list(value.hits, fileJSON)}};
            } else if constexpr (std::is_same_v<T, Result::Events> ||
                                 std::is_same_v<T, Result::CalendarDeleteConfirmation>) {
                return {{"events", list(value.events, eventJSON)}, {"dayLabel", value.dayLabel}};
            } else if constexpr (std::is_same_v<T, Result::MessageDraft> ||
                                 std::is_same_v<T, Result::MessageSent>) {
                return draftFields(value.draft);
            } else if constexpr (std::is_same_v<T, Result::NowPlaying>) {
                const auto& playing = value.nowPlaying;
                return {{"track", playing.track},
                        {"artist", playing.artist},
                        {"album", optional(playing.album)},
                        {"isPlaying", playing.isPlaying},
                        {"positionSeconds", playing.positionSeconds},
                        {"durationSeconds", playing.durationSeconds}};
            } else if constexpr (std::is_same_v<T, Result::WebAnswer>) {
                return webAnswerFields(value.answer);
            } else if constexpr (std::is_same_v<T, Result::Empty>) {
                return {{"intent", core::rawValue(value.intent)}, {"query", value.query}};
            } else if constexpr (std::is_same_v<T, Result::NeedsPermission>) {
                return {{"permission", core::rawValue(value.permission)}};
            } else if constexpr (std::is_same_v<T, Result::TimerSet>) {
                return {{"fireDate", base::iso8601Timestamp(value.fireDate)},
                        {"displayText", value.displayText}};
            } else if constexpr (std::is_same_v<T, Result::TimerCancelled>) {
                return {{"count", value.count}};
            } else if constexpr (std::is_same_v<T, Result::Calculation> ||
                                 std::is_same_v<T, Result::CurrencyConversion>) {
                return {{"display", value.display}};
            } else if constexpr (std::is_same_v<T, Result::Weather>) {
                const auto& weather = value.answer;
                return {{"locationName", weather.locationName},
                        {"temperatureC", weather.temperatureC},
                        {"condition", weather.condition},
                        {"highC", weather.highC},
                        {"lowC", weather.lowC},
                        {"source", core::rawValue(weather.source)}};
            } else if constexpr (std::is_same_v<T, Result::AppLaunched> ||
                                 std::is_same_v<T, Result::FileDeleted>) {
                return {{"name", value.name}};
            } else if constexpr (std::is_same_v<T, Result::DocumentSummary>) {
                return {{"fileName", value.fileName},
                        {"filePath", value.filePath},
                        {"summary", value.summary}};
            } else if constexpr (std::is_same_v<T, Result::SystemCommandExecuted>) {
                return {{"command", core::rawValue(value.command)}};
            } else if constexpr (std::is_same_v<T, Result::ScreenshotTaken>) {
                return {{"path", value.path}};
            } else if constexpr (std::is_same_v<T, Result::ClipboardHistory>) {
                return {{"entries", value.entries}};
            } else if constexpr (std::is_same_v<T, Result::DeleteFileConfirmation>) {
                return fileJSON(value.file);
            } else if constexpr (std::is_same_v<T, Result::CalendarEventDeleted> ||
                                 std::is_same_v<T, Result::ReminderDeleted> ||
                                 std::is_same_v<T, Result::NoteDeleted>) {
                return {{"title", value.title}};
            } else if constexpr (std::is_same_v<T, Result::ReminderSet>) {
                return {{"title", value.title}, {"fireDate", optionalTime(value.fireDate)}};
            } else if constexpr (std::is_same_v<T, Result::ReminderDeleteConfirmation>) {
                return {{"reminders", list(value.reminders, reminderJSON)}};
            } else if constexpr (std::is_same_v<T, Result::NoteDeleteConfirmation>) {
                return {{"notes", list(value.notes, noteJSON)}};
            } else if constexpr (std::is_same_v<T, Result::WindowArranged>) {
                return {{"action", core::rawValue(value.action)}, {"appName", value.appName}};
            } else if constexpr (std::is_same_v<T, Result::NoteSaved>) {
                return {{"content", value.content}};
            } else if constexpr (std::is_same_v<T, Result::Translation>) {
                return {{"translatedText", value.translatedText},
                        {"targetLanguage", value.targetLanguage},
                        {"modelName", optional(value.modelName)}};
            } else {
                static_assert(std::is_same_v<T, Result::HelpOverview>, "every case has a payload");
                return ordered_json::object();
            }
        },
        storage);
}

ordered_json withCase(std::string_view name, const ordered_json& fields) {
    ordered_json out = {{"case", name}};
    for (const auto& [key, value] : fields.items()) out[key] = value;
    return out;
}

}  // namespace

ordered_json resultJSON(const core::CapabilityResult& result) {
    return withCase(core::caseName(result), payload(result.storage()));
}

ordered_json planJSON(const core::ActionPlan& plan) {
    return std::visit(
        [](const auto& record) -> ordered_json {
            using T = std::decay_t<decltype(record)>;
            if constexpr (std::is_same_v<T, core::FinderQuery>) {
                return withCase("finderSearch", {{"keyword", optional(record.keyword)},
                                                 {"fileType", optional(record.fileType)},
                                                 {"location", optional(record.location)},
                                                 {"dateRange", optional(record.dateRange)}});
            } else if constexpr (std::is_same_v<T, core::CalendarRange>) {
                return withCase("calendarQuery", {{"dateRange", record.dateRange},
                                                  {"keyword", optional(record.keyword)}});
            } else if constexpr (std::is_same_v<T, core::MessageDraft>) {
                return withCase("messageSend", draftFields(record));
            } else if constexpr (std::is_same_v<T, core::MusicCommand>) {
                return withCase("musicPlay", {{"query", optional(record.query)},
                                              {"action", core::rawValue(record.action)}});
            } else {
                static_assert(std::is_same_v<T, core::WebQuery>, "every plan has a case");
                return withCase("webSearch",
                                {{"query", record.query}, {"wantAnswer", record.wantAnswer}});
            }
        },
        plan.storage());
}

ordered_json outcomeJSON(const core::PipelineOutcome& outcome) {
    switch (outcome.kind()) {
        case core::PipelineOutcome::Kind::result:
            return {{"outcome", "result"}, {"result", resultJSON(*outcome.asResult())}};
        case core::PipelineOutcome::Kind::confirm:
            return {{"outcome", "confirm"}, {"plan", planJSON(*outcome.asConfirm())}};
        case core::PipelineOutcome::Kind::error: {
            const auto& error = *outcome.asError();
            return {{"outcome", "error"},
                    {"error",
                     {{"message", error.message},
                      {"recoverySuggestion", optional(error.recoverySuggestion)},
                      {"retryable", error.retryable}}}};
        }
        case core::PipelineOutcome::Kind::cancelled:
            return {{"outcome", "cancelled"}};
    }
    return {{"outcome", "cancelled"}};
}

}  // namespace nuvrel::app
