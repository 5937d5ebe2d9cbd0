// The fast-path cascade. Its order is a contract: a query that two steps want goes to the
// earlier one, and every step was written knowing what stands before it. A step that has not
// landed yet keeps its place and lets every query go on.

#include <array>
#include <cstddef>
#include <string>

#include "answers/calculator_fast_path.h"
#include "answers/currency_capability.h"
#include "answers/document_summarize_capability.h"
#include "answers/translate_capability.h"
#include "answers/weather_capability.h"
#include "core/capability_result.h"
#include "desktop/app_launch_fast_path.h"
#include "desktop/delete_file_capability.h"
#include "desktop/finder_search_fast_path.h"
#include "desktop/open_url_fast_path.h"
#include "desktop/system_command_capability.h"
#include "desktop/system_command_fast_path.h"
#include "desktop/window_manage_capability.h"
#include "desktop/window_manage_fast_path.h"
#include "personal/calendar_fast_path.h"
#include "personal/clipboard_history_fast_path.h"
#include "personal/notes_fast_path.h"
#include "personal/reminder_fast_path.h"
#include "personal/timer_fast_path.h"
#include "pipeline/currency_fast_path.h"
#include "pipeline/document_summarize_fast_path.h"
#include "pipeline/help_fast_path.h"
#include "pipeline/personal_capabilities.h"
#include "pipeline/pipeline.h"
#include "pipeline/translate_fast_path.h"
#include "pipeline/user_facing.h"
#include "pipeline/weather_fast_path.h"

namespace nuvrel::pipeline {

struct Pipeline::StepInput {
    std::string_view query;
    // HelpFastPath::normalize of the query: the key of every phrase table.
    std::string normalized;
    const core::LocalizedStrings& strings;
    // Set when the cascade only explains. A step that matches then returns claim(...) right
    // after its match, before it acts on anything.
    std::optional<CascadeClaim>* explanation = nullptr;

    bool explaining() const { return explanation != nullptr; }
    // Records the claim; the outcome only stops the cascade and is never shown.
    std::optional<core::PipelineOutcome> claim(
        std::string matcher, nlohmann::json value = nlohmann::json::object()) const {
        *explanation = CascadeClaim{CascadeClaim::routerStep, std::move(matcher), std::move(value)};
        return core::PipelineOutcome::cancelled();
    }
};

struct Pipeline::CascadeStep {
    Step step;
    // Touches the outside world: skipped when liveFastPathsEnabled is false.
    bool live;
};

std::optional<core::PipelineOutcome> Pipeline::runCascade(
    std::string_view query, const core::LocalizedStrings& strings,
    std::optional<CascadeClaim>* explanation) const {
    // The cascade, in its fixed order.
    static constexpr std::array<CascadeStep, 20> cascade = {{
        {&Pipeline::timerCancelStep, false},       // 1
        {&Pipeline::timerSetStep, false},          // 2
        {&Pipeline::calculatorStep, false},        // 3
        {&Pipeline::currencyStep, true},           // 4
        {&Pipeline::weatherStep, true},            // 5
        {&Pipeline::appLaunchStep, true},          // 6
        {&Pipeline::documentSummaryStep, true},    // 7
        {&Pipeline::translationStep, true},        // 8
        {&Pipeline::noteDeletionStep, true},       // 9
        {&Pipeline::reminderDeletionStep, true},   // 10
        {&Pipeline::calendarDeletionStep, true},   // 11
        {&Pipeline::fileDeletionStep, true},       // 12
        {&Pipeline::noteCreationStep, true},       // 13
        {&Pipeline::fileSearchStep, true},         // 14
        {&Pipeline::reminderStep, true},           // 15
        {&Pipeline::calendarAddStep, true},        // 16
        {&Pipeline::systemCommandStep, false},     // 17
        {&Pipeline::clipboardHistoryStep, false},  // 18
        {&Pipeline::windowStep, true},             // 19
        {&Pipeline::helpStep, false},              // 20
    }};

    const StepInput input{query, HelpFastPath::normalize(query), strings, explanation};
    for (std::size_t index = 0; index < cascade.size(); ++index) {
        if (cascade[index].live && !liveFastPathsEnabled) continue;
        if (auto outcome = (this->*cascade[index].step)(input)) {
            if (explanation && *explanation) (*explanation)->step = static_cast<int>(index) + 1;
            return outcome;
        }
    }
    return std::nullopt;
}

CascadeClaim Pipeline::explain(std::string_view query) const {
    std::optional<CascadeClaim> claim;
    runCascade(query, core::LocalizedStrings::strings(language), &claim);
    return claim.value_or(CascadeClaim{});
}

// Steps whose feature has not landed match nothing yet.

std::optional<core::PipelineOutcome> Pipeline::timerCancelStep(const StepInput& input) const {
    if (!timerCapability.notificationCenter || !personal::TimerFastPath::matchCancel(input.query))
        return std::nullopt;
    if (input.explaining()) return input.claim("TimerFastPath", {{"cancel", true}});
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics,
                         [&] { return timerCapability.cancelAll(); });
}

std::optional<core::PipelineOutcome> Pipeline::timerSetStep(const StepInput& input) const {
    if (!timerCapability.notificationCenter) return std::nullopt;
    const auto request = personal::TimerFastPath::match(input.query);
    if (!request) return std::nullopt;
    if (input.explaining())
        return input.claim("TimerFastPath", {{"seconds", request->durationSeconds},
                                             {"displayText", request->displayText}});
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics,
                         [&] { return timerCapability.execute(*request); });
}

std::optional<core::PipelineOutcome> Pipeline::calculatorStep(const StepInput& input) const {
    namespace calc = answers::CalculatorFastPath;
    std::optional<answers::CalcResult> answer = calc::matchPercentageOf(input.query);
    if (!answer) answer = calc::matchArithmetic(input.query);
    if (!answer) answer = calc::matchUnitConversion(input.query);
    if (!answer) return std::nullopt;
    if (input.explaining()) return input.claim("CalculatorFastPath", {{"result", answer->display}});
    return core::PipelineOutcome::result(core::CapabilityResult::Calculation{answer->display});
}

std::optional<core::PipelineOutcome> Pipeline::currencyStep(const StepInput& input) const {
    const auto request = CurrencyFastPath::match(input.query);
    if (!request) return std::nullopt;
    if (input.explaining())
        return input.claim("CurrencyFastPath", {{"amount", request->amount},
                                                {"from", answers::rawValue(request->from)},
                                                {"to", answers::rawValue(request->to)}});
    if (!networkFeaturesEnabled)
        return core::PipelineOutcome::error(networkFeaturesOfflineError(input.strings));
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics, [&] {
        return answers::CurrencyCapability::execute(*request, language, informationServices);
    });
}

std::optional<core::PipelineOutcome> Pipeline::weatherStep(const StepInput& input) const {
    const auto target = WeatherFastPath::match(input.query);
    if (!target) return std::nullopt;
    if (input.explaining())
        return input.claim("WeatherFastPath", target->name()
                                                  ? nlohmann::json{{"place", *target->name()}}
                                                  : nlohmann::json{{"currentLocation", true}});
    if (!networkFeaturesEnabled)
        return core::PipelineOutcome::error(networkFeaturesOfflineError(input.strings));
    answers::WeatherCapability weather;
    weather.language = language;
    weather.services = informationServices;
    if (const std::string* place = target->name()) {
        return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics,
                             [&] { return weather.execute(*place); });
    }
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics, [&] {
        return weather.executeCurrentLocation(weatherLocationProvider.get());
    });
}

std::optional<core::PipelineOutcome> Pipeline::appLaunchStep(const StepInput& input) const {
    if (!applications) return std::nullopt;
    const auto match = desktop::AppLaunchFastPath::match(input.query);
    if (!match) return std::nullopt;
    if (const auto app = applications->index(language)->bestMatch(match->candidateName,
                                                                  match->isExplicitTrigger)) {
        if (input.explaining())
            return input.claim("AppLaunchFastPath",
                               {{"application", app->displayName}, {"desktopFile", app->url}});
        return outcomeOfCall(ErrorRule::allThroughUserFacing, input.strings, diagnostics, [&] {
            applications->open(*app);
            return core::CapabilityResult(
                core::CapabilityResult::AppLaunched{desktop::AppLaunchCapability::shownName(*app)});
        });
    }
    // "open github.com": the address is read from the name behind the launch word.
    if (!match->isExplicitTrigger || !openURL) return std::nullopt;
    const auto url = desktop::OpenURLFastPath::urlCandidate(match->candidateName);
    if (!url) return std::nullopt;
    if (input.explaining()) return input.claim("AppLaunchFastPath", {{"url", url->url}});
    return outcomeOfCall(ErrorRule::allThroughUserFacing, input.strings, diagnostics, [&] {
        openURL(url->url);
        return core::CapabilityResult(core::CapabilityResult::AppLaunched{url->displayName});
    });
}

std::optional<core::PipelineOutcome> Pipeline::documentSummaryStep(const StepInput& input) const {
    const auto name = DocumentSummarizeFastPath::match(input.query);
    if (!name) return std::nullopt;
    if (input.explaining()) return input.claim("DocumentSummarizeFastPath", {{"fileName", *name}});
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics, [&] {
        return answers::DocumentSummarizeCapability::execute(*name, language, summarizer.get(),
                                                             findDocument, extractDocumentText);
    });
}

std::optional<core::PipelineOutcome> Pipeline::translationStep(const StepInput& input) const {
    const auto candidate = TranslateFastPath::match(input.query);
    if (!candidate) return std::nullopt;
    if (input.explaining())
        return input.claim("TranslateFastPath", {{"text", candidate->text},
                                                 {"targetLanguage", candidate->targetLanguage}});
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics, [&] {
        return answers::TranslateCapability::execute(*candidate, language, summarizer.get());
    });
}

std::optional<core::PipelineOutcome> Pipeline::noteDeletionStep(const StepInput& input) const {
    if (!notesCapability.store) return std::nullopt;
    const auto candidate = personal::NoteDeleteFastPath::match(input.query);
    if (!candidate) return std::nullopt;
    if (input.explaining())
        return input.claim("NoteDeleteFastPath", {{"keyword", candidate->keyword}});
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics,
                         [&] { return notesCapability.findCandidates(candidate->keyword); });
}

std::optional<core::PipelineOutcome> Pipeline::reminderDeletionStep(const StepInput& input) const {
    if (!reminderStore) return std::nullopt;
    const auto candidate = personal::ReminderDeleteFastPath::match(input.query);
    if (!candidate) return std::nullopt;
    if (input.explaining())
        return input.claim("ReminderDeleteFastPath", {{"keyword", candidate->keyword}});
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics,
                         [&] { return reminderCapabilityOf(*this).findCandidates(*candidate); });
}

std::optional<core::PipelineOutcome> Pipeline::calendarDeletionStep(const StepInput& input) const {
    if (!calendarStore) return std::nullopt;
    const auto candidate = personal::CalendarDeleteFastPath::match(input.query);
    if (!candidate) return std::nullopt;
    if (input.explaining())
        return input.claim("CalendarDeleteFastPath",
                           {{"dateToken", candidate->dateToken}, {"keyword", candidate->keyword}});
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics, [&] {
        return calendarDeleteCapabilityOf(*this).findCandidates(*candidate);
    });
}

std::optional<core::PipelineOutcome> Pipeline::fileDeletionStep(const StepInput& input) const {
    if (!fileServices.runMetadataQuery) return std::nullopt;
    const auto candidate = desktop::DeleteFileFastPath::match(input.query);
    if (!candidate) return std::nullopt;
    if (input.explaining())
        return input.claim("DeleteFileFastPath",
                           {{"name", candidate->name},
                            {"location", candidate->location ? nlohmann::json(*candidate->location)
                                                             : nlohmann::json()}});
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics, [&] {
        return desktop::DeleteFileCapability{language, fileServices}.findCandidate(*candidate, 3.0);
    });
}

std::optional<core::PipelineOutcome> Pipeline::noteCreationStep(const StepInput& input) const {
    if (!notesCapability.store) return std::nullopt;
    const auto candidate = personal::NotesFastPath::match(input.query);
    if (!candidate) return std::nullopt;
    if (input.explaining()) return input.claim("NotesFastPath", {{"content", candidate->content}});
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics,
                         [&] { return notesCapability.execute(*candidate); });
}

std::optional<core::PipelineOutcome> Pipeline::fileSearchStep(const StepInput& input) const {
    const auto keyword = desktop::FinderSearchFastPath::match(input.query);
    if (!keyword) return std::nullopt;
    const std::shared_ptr<core::Capability> finder =
        registry.capability(core::IntentID::finderSearch);
    if (!finder) return std::nullopt;
    if (input.explaining()) return input.claim("FinderSearchFastPath", {{"keyword", *keyword}});
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics,
                         [&] { return finder->execute(core::FinderQuery{.keyword = *keyword}); });
}

std::optional<core::PipelineOutcome> Pipeline::reminderStep(const StepInput& input) const {
    if (!reminderStore) return std::nullopt;
    const auto candidate = personal::ReminderFastPath::match(input.query);
    if (!candidate) return std::nullopt;
    if (input.explaining())
        return input.claim(
            "ReminderFastPath",
            {{"title", candidate->title},
             {"dateToken", candidate->dateToken},
             {"hour", candidate->hour ? nlohmann::json(*candidate->hour) : nlohmann::json()},
             {"minute", candidate->minute}});
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics,
                         [&] { return reminderCapabilityOf(*this).execute(*candidate); });
}

std::optional<core::PipelineOutcome> Pipeline::calendarAddStep(const StepInput& input) const {
    if (!calendarStore) return std::nullopt;
    const auto candidate = personal::CalendarAddEventFastPath::match(input.query);
    if (!candidate) return std::nullopt;
    if (input.explaining())
        return input.claim(
            "CalendarAddEventFastPath",
            {{"title", candidate->title},
             {"dateToken", candidate->dateToken},
             {"hour", candidate->hour ? nlohmann::json(*candidate->hour) : nlohmann::json()},
             {"minute", candidate->minute}});
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics,
                         [&] { return calendarAddCapabilityOf(*this).execute(*candidate); });
}

std::optional<core::PipelineOutcome> Pipeline::systemCommandStep(const StepInput& input) const {
    if (input.normalized.empty()) return std::nullopt;
    const auto& table = desktop::SystemCommandFastPath::normalizedTable();
    const auto found = table.find(input.normalized);
    if (found == table.end()) return std::nullopt;
    if (input.explaining())
        return input.claim("SystemCommandFastPath", {{"command", core::rawValue(found->second)}});
    // Runs at once, with no confirmation; every failure reaches the card through userFacing.
    return outcomeOfCall(ErrorRule::allThroughUserFacing, input.strings, diagnostics, [&] {
        return desktop::SystemCommandCapability::execute(found->second, systemCommands);
    });
}

std::optional<core::PipelineOutcome> Pipeline::clipboardHistoryStep(const StepInput& input) const {
    if (!clipboardHistoryStore ||
        !personal::ClipboardHistoryFastPath::phrases().contains(input.normalized))
        return std::nullopt;
    if (input.explaining()) return input.claim("ClipboardHistoryFastPath");
    return core::PipelineOutcome::result(
        core::CapabilityResult::ClipboardHistory{clipboardHistoryStore->recentEntries()});
}

std::optional<core::PipelineOutcome> Pipeline::windowStep(const StepInput& input) const {
    const auto& table = desktop::WindowManageFastPath::normalizedTable();
    const auto found = table.find(input.normalized);
    if (found == table.end()) return std::nullopt;
    if (input.explaining())
        return input.claim("WindowManageFastPath", {{"action", core::rawValue(found->second)}});
    return outcomeOfCall(ErrorRule::userFacingAsThrown, input.strings, diagnostics, [&] {
        return desktop::WindowManageCapability::execute(found->second, language,
                                                        windowSystem.get());
    });
}

std::optional<core::PipelineOutcome> Pipeline::helpStep(const StepInput& input) const {
    if (!HelpFastPath::phrases().contains(input.normalized) &&
        !HelpFastPath::koreanPattern().search(input.normalized))
        return std::nullopt;
    if (input.explaining()) return input.claim("HelpFastPath");
    return core::PipelineOutcome::result(core::CapabilityResult::HelpOverview{});
}

}  // namespace nuvrel::pipeline
