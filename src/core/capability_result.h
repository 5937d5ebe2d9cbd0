#pragma once
// Everything a capability or fast path can hand to the shell. Each case is a small struct
// named after it; the variant's alternative index is the case number. Not equatable as a
// whole, by design; the case structs are.

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "core/intent_id.h"
#include "core/permission_kind.h"
#include "core/plan_records.h"
#include "core/result_records.h"
#include "core/system_command.h"
#include "core/variant_case.h"
#include "core/weather_answer.h"
#include "core/window_action.h"

namespace nuvrel::core {

class CapabilityResult {
public:
    using TimePoint = std::chrono::system_clock::time_point;

    // 0: file search hits.
    struct Files {
        std::vector<FileHit> hits{};
        bool operator==(const Files&) const = default;
    };
    // 1: a calendar listing with a heading for the range.
    struct Events {
        std::vector<EventItem> events{};
        std::string dayLabel{};
        bool operator==(const Events&) const = default;
    };
    // 2: a message ready for the user to look at and send.
    struct MessageDraft {
        core::MessageDraft draft{};
        bool operator==(const MessageDraft&) const = default;
    };
    // 3: a message was sent.
    struct MessageSent {
        core::MessageDraft draft{};
        bool operator==(const MessageSent&) const = default;
    };
    // 4: the state of the music player.
    struct NowPlaying {
        core::NowPlaying nowPlaying{};
        bool operator==(const NowPlaying&) const = default;
    };
    // 5: a composed web answer.
    struct WebAnswer {
        core::WebAnswer answer{};
        bool operator==(const WebAnswer&) const = default;
    };
    // 6: the action ran and found nothing.
    struct Empty {
        IntentID intent{};
        std::string query{};
        bool operator==(const Empty&) const = default;
    };
    // 7: a system permission is missing.
    struct NeedsPermission {
        PermissionKind permission{};
        bool operator==(const NeedsPermission&) const = default;
    };
    // 8: a timer was scheduled.
    struct TimerSet {
        TimePoint fireDate{};
        std::string displayText{};
        bool operator==(const TimerSet&) const = default;
    };
    // 9: pending timers were cancelled.
    struct TimerCancelled {
        int count = 0;
        bool operator==(const TimerCancelled&) const = default;
    };
    // 10: a local calculation or unit conversion.
    struct Calculation {
        std::string display{};
        bool operator==(const Calculation&) const = default;
    };
    // 11: a currency conversion.
    struct CurrencyConversion {
        std::string display{};
        bool operator==(const CurrencyConversion&) const = default;
    };
    // 12: a forecast reading.
    struct Weather {
        WeatherAnswer answer{};
        bool operator==(const Weather&) const = default;
    };
    // 13: an application was opened, or a web address under this display name.
    struct AppLaunched {
        std::string name{};
        bool operator==(const AppLaunched&) const = default;
    };
    // 14: a document was summarised.
    struct DocumentSummary {
        std::string fileName{};
        std::string filePath{};
        std::string summary{};
        bool operator==(const DocumentSummary&) const = default;
    };
    // 15: a system command ran.
    struct SystemCommandExecuted {
        SystemCommand command{};
        bool operator==(const SystemCommandExecuted&) const = default;
    };
    // 16: a screenshot file was written.
    struct ScreenshotTaken {
        std::string path{};
        bool operator==(const ScreenshotTaken&) const = default;
    };
    // 17: recent clipboard entries.
    struct ClipboardHistory {
        std::vector<std::string> entries{};
        bool operator==(const ClipboardHistory&) const = default;
    };
    // 18: a file is proposed for deletion.
    struct DeleteFileConfirmation {
        FileHit file{};
        bool operator==(const DeleteFileConfirmation&) const = default;
    };
    // 19: events are proposed for deletion.
    struct CalendarDeleteConfirmation {
        std::vector<EventItem> events{};
        std::string dayLabel{};
        bool operator==(const CalendarDeleteConfirmation&) const = default;
    };
    // 20: an event was deleted.
    struct CalendarEventDeleted {
        std::string title{};
        bool operator==(const CalendarEventDeleted&) const = default;
    };
    // 21: a file was deleted.
    struct FileDeleted {
        std::string name{};
        bool operator==(const FileDeleted&) const = default;
    };
    // 22: a reminder was created.
    struct ReminderSet {
        std::string title{};
        std::optional<TimePoint> fireDate{};
        bool operator==(const ReminderSet&) const = default;
    };
    // 23: reminders are proposed for deletion.
    struct ReminderDeleteConfirmation {
        std::vector<ReminderListItem> reminders{};
        bool operator==(const ReminderDeleteConfirmation&) const = default;
    };
    // 24: a reminder was deleted.
    struct ReminderDeleted {
        std::string title{};
        bool operator==(const ReminderDeleted&) const = default;
    };
    // 25: notes are proposed for deletion.
    struct NoteDeleteConfirmation {
        std::vector<NoteListItem> notes{};
        bool operator==(const NoteDeleteConfirmation&) const = default;
    };
    // 26: a note was deleted.
    struct NoteDeleted {
        std::string title{};
        bool operator==(const NoteDeleted&) const = default;
    };
    // 27: a window was moved.
    struct WindowArranged {
        WindowAction action{};
        std::string appName{};
        bool operator==(const WindowArranged&) const = default;
    };
    // 28: a note was created.
    struct NoteSaved {
        std::string content{};
        bool operator==(const NoteSaved&) const = default;
    };
    // 29: a translation.
    struct Translation {
        std::string translatedText{};
        std::string targetLanguage{};
        std::optional<std::string> modelName{};
        bool operator==(const Translation&) const = default;
    };
    // 30: the help overview card.
    struct HelpOverview {
        bool operator==(const HelpOverview&) const = default;
    };

    using Storage =
        std::variant<Files, Events, MessageDraft, MessageSent, NowPlaying, WebAnswer, Empty,
                     NeedsPermission, TimerSet, TimerCancelled, Calculation, CurrencyConversion,
                     Weather, AppLaunched, DocumentSummary, SystemCommandExecuted, ScreenshotTaken,
                     ClipboardHistory, DeleteFileConfirmation, CalendarDeleteConfirmation,
                     CalendarEventDeleted, FileDeleted, ReminderSet, ReminderDeleteConfirmation,
                     ReminderDeleted, NoteDeleteConfirmation, NoteDeleted, WindowArranged,
                     NoteSaved, Translation, HelpOverview>;
    static constexpr std::size_t caseCount = std::variant_size_v<Storage>;

    template <VariantCase<Storage> Case>
    CapabilityResult(Case&& payload) : storage_(std::forward<Case>(payload)) {}

    // The case number, 0 for files to 30 for helpOverview.
    std::size_t index() const { return storage_.index(); }

    template <VariantCase<Storage> Case>
    bool is() const {
        return std::holds_alternative<Case>(storage_);
    }
    // The payload when the result holds that case, else null.
    template <VariantCase<Storage> Case>
    const Case* get() const {
        return std::get_if<Case>(&storage_);
    }

    const Storage& storage() const { return storage_; }

private:
    Storage storage_;
};

// The case name in lower camel case ("files", "events", ..., "helpOverview").
std::string_view caseName(const CapabilityResult& result);

}  // namespace nuvrel::core
