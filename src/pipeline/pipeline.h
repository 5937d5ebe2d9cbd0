#pragma once
// The one place where a query becomes an outcome: a fixed cascade of deterministic fast paths,
// then the model router, routed dispatch and the validator.
//
// A Pipeline is a plain value with public fields, built anew by the shell whenever language or
// settings change:
//
//     auto pipeline = std::make_shared<Pipeline>();
//     pipeline->router.backend = routerBackend;
//     pipeline->registry = core::CapabilityRegistry(capabilities);
//     pipeline->language = core::AppLanguage::ko;
//
// It holds no mutable state of its own: one value serves many runs, also at once on several
// tasks, as long as its fields are not changed meanwhile.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "answers/currency_code.h"
#include "answers/information_services.h"
#include "base/diagnostics.h"
#include "core/app_language.h"
#include "core/capability_registry.h"
#include "core/current_location_providing.h"
#include "core/localized_strings.h"
#include "core/pipeline_outcome.h"
#include "core/result_records.h"
#include "core/routed_intent.h"
#include "core/slot_value.h"
#include "desktop/application_index.h"
#include "desktop/file_services.h"
#include "desktop/system_command_capability.h"
#include "desktop/window_system.h"
#include "llm/llm_backend.h"
#include "personal/calendar_store.h"
#include "personal/clipboard_history_store.h"
#include "personal/gregorian_calendar.h"
#include "personal/notes_capability.h"
#include "personal/reminder_store.h"
#include "personal/timer_capability.h"
#include "pipeline/cascade_claim.h"
#include "pipeline/date_time_expression.h"
#include "pipeline/pipeline_running.h"
#include "pipeline/router.h"

namespace nuvrel::pipeline {

class Pipeline : public PipelineRunning {
public:
    // Fields in declared order. The validator has no state and is called as a namespace.
    Router router{};
    // The plan-driven capabilities; also the finder of the file-search fast path.
    core::CapabilityRegistry registry{};
    // Picks the strings of every message.
    core::AppLanguage language = core::AppLanguage::en;
    // Timers as pending notifications; without a notification centre the timer steps let
    // every query go on.
    personal::TimerCapability timerCapability{};
    // The summary model, if any: splits chains, summarises documents, translates.
    std::shared_ptr<llm::LLMBackend> summarizer{};
    // The recent copied texts; without a store the clipboard step lets every query go on.
    std::shared_ptr<personal::ClipboardHistoryStore> clipboardHistoryStore{};
    // Opens a web address in the default browser.
    std::function<void(std::string)> openURL{};
    // The user's "Network features" setting: web search, weather and currency.
    bool networkFeaturesEnabled = true;
    // False turns off every fast path that touches the outside world, leaving the pure ones
    // and the router.
    bool liveFastPathsEnabled = true;
    // Notes; without a store its steps let every query go on.
    personal::NotesCapability notesCapability{};
    // The user's calendars and reminders; without a store its steps let every query go on.
    std::shared_ptr<personal::CalendarStore> calendarStore{};
    std::shared_ptr<personal::ReminderStore> reminderStore{};
    // "Now" and the user's calendar, for every date the personal steps compute.
    personal::Clock clock{};
    // Where diagnostic lines go.
    base::Diagnostics diagnostics{};
    // Writes each routed intent with its slots as a "[nuvrel-debug-slots] " line, for headless
    // verification (NUVREL_DEBUG_QUERY).
    bool debugSlotsLogging = false;
    // The position for a weather query that names no place; none means that no position can
    // be had.
    std::shared_ptr<core::CurrentLocationProviding> weatherLocationProvider{};
    // The weather and rate services: the shared session, their addresses, the network log.
    answers::InformationServices informationServices{};
    // Document summary: the file that the user named, and its text; none finds or reads
    // nothing, and the query goes on.
    std::function<std::optional<core::FileHit>(std::string_view name)> findDocument{};
    std::function<std::optional<std::string>(const std::string& path)> extractDocumentText{};
    // Sleep, lock, volume, screenshot and wallpaper settings of this machine.
    desktop::SystemCommandOperations systemCommands{};
    // The desktop's windows and screens; none where windows cannot be moved (no X11 session),
    // which the window step reports on its card.
    std::shared_ptr<desktop::WindowSystem> windowSystem{};
    // File search and deletion on this machine: the metadata search, the Trash and the files
    // shown for deletion. Without a search the deletion step lets every query go on; the file
    // search step needs the finder capability of the registry.
    desktop::FileServices fileServices{};
    // The installed applications and how to open one; without it the launch step lets every
    // query go on.
    std::shared_ptr<desktop::ApplicationCatalog> applications{};

    // Blocks on the caller's task: the cascade in its fixed order, then the router (at most
    // two model calls), then one capability call. Never throws; a stop request ends as the
    // outcome cancelled. The query is taken as given, untrimmed.
    core::PipelineOutcome run(std::string_view query) const override;

    // The step that would claim the query, found as run() finds it but acting on nothing: no
    // side effect, no model call, no network. The router when no fast path claims it.
    CascadeClaim explain(std::string_view query) const;

    // The steps of a multi-request sentence, split by the summary model in this pipeline's
    // language; nothing for a single request or without a summary model.
    std::optional<std::vector<std::string>> decomposeIfChain(std::string_view query) const override;

    // The plan of a `confirm` outcome, or the event or reminder of a row of a delete
    // confirmation card, carried out as the panel's confirm button would.
    std::optional<core::PipelineOutcome> carryOutConfirmed(const core::PipelineOutcome& shown,
                                                           std::size_t row) const override;
    std::vector<personal::ContactMatch> recipientCandidates(
        const core::MessageDraft& draft) const override;

    // Serves the routed intents that act without a plan. An outcome ends the run; nothing hands
    // the intent on to the validator. Tests the task's stop request first. Never throws.
    std::optional<core::PipelineOutcome> dispatchRouterFallbackIntent(
        const core::RoutedIntent& routed, std::string_view query,
        const core::LocalizedStrings& strings) const;

    // The date and time of a reminder or event from the slots, parsing only slot values that
    // the query itself contains, so that a date the model invented never reaches the parser.
    static std::optional<DateTimeExpressionParser::Result> parsedDateTimeSlots(
        const core::Slots& slots, std::string_view query,
        const DateTimeExpressionParser::Parse& parse);

    // The conversion that the slots ask for: "amount" (commas allowed), "from_currency" and
    // "to_currency" (the source when absent); a target equal to the source becomes won, or
    // dollars for won. Nothing when a slot is missing or unreadable.
    static std::optional<answers::CurrencyConversionRequest> currencyRequest(
        const core::Slots& slots);
    // Whether the query contains the value, ignoring white space and case. An empty value
    // never appears.
    static bool slotValueAppears(std::string_view query, std::string_view value);

private:
    struct StepInput;
    using Step = std::optional<core::PipelineOutcome> (Pipeline::*)(const StepInput&) const;
    struct CascadeStep;

    // The fast paths, in cascade order; each gives an outcome or lets the query go on.
    std::optional<core::PipelineOutcome> timerCancelStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> timerSetStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> calculatorStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> currencyStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> weatherStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> appLaunchStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> documentSummaryStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> translationStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> noteDeletionStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> reminderDeletionStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> calendarDeletionStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> fileDeletionStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> noteCreationStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> fileSearchStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> reminderStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> calendarAddStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> systemCommandStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> clipboardHistoryStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> windowStep(const StepInput& input) const;
    std::optional<core::PipelineOutcome> helpStep(const StepInput& input) const;

    // A routed weatherQuery with the network on: the place of its slots, or here.
    std::optional<core::PipelineOutcome> routedWeather(const core::RoutedIntent& routed,
                                                       const core::LocalizedStrings& strings) const;

    // With `explanation`, a claiming step fills it in and acts on nothing.
    std::optional<core::PipelineOutcome> runCascade(
        std::string_view query, const core::LocalizedStrings& strings,
        std::optional<CascadeClaim>* explanation = nullptr) const;
    core::PipelineOutcome runRouted(std::string_view query,
                                    const core::LocalizedStrings& strings) const;
    core::PipelineOutcome validatedOutcome(const core::RoutedIntent& routed, std::string_view query,
                                           const core::LocalizedStrings& strings) const;
    core::PipelineOutcome webFallbackOutcome(std::string_view fallbackQuery,
                                             const core::LocalizedStrings& strings) const;
};

}  // namespace nuvrel::pipeline
