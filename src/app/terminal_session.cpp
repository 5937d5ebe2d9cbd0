#include "app/terminal_session.h"

#include <algorithm>
#include <charconv>
#include <istream>
#include <ostream>

#include "app/card_text.h"
#include "app/confirmation_rows.h"
#include "app/outcome_json.h"
#include "base/text.h"
#include "core/localized_strings.h"

namespace nuvrel::app {

namespace {

int exitStatusOf(const core::PipelineOutcome& outcome) {
    switch (outcome.kind()) {
        case core::PipelineOutcome::Kind::error:
            return exitError;
        case core::PipelineOutcome::Kind::cancelled:
            return exitCancelled;
        default:
            return exitResult;
    }
}

nlohmann::ordered_json chainJSON(const std::vector<ChainStepState>& steps) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const auto& step : steps) {
        list.push_back(
            {{"subQuery", step.subQuery},
             {"outcome", step.outcome ? outcomeJSON(*step.outcome)
                                      : outcomeJSON(core::PipelineOutcome::cancelled())}});
    }
    return {{"outcome", "chain"}, {"steps", list}};
}

}  // namespace

TerminalSession::TerminalSession(base::MainQueue& queue, std::shared_ptr<AppState> state,
                                 std::ostream& out, bool json)
    : queue_(queue), state_(std::move(state)), out_(out), json_(json) {}

int TerminalSession::ask(std::string_view sentence) {
    running_ = true;
    cancelRequested_ = false;
    state_->run(sentence);
    queue_.runUntil([&] { return state_->isSettled() || quitRequested_; });
    running_ = false;
    const int status = printSettled();
    const core::PipelineOutcome* shown = state_->phase().asResult();
    if (quitRequested_ || !shown || confirmationRowCount(*shown) == 0) return status;
    if (const auto ended = chooseRecipient()) return *ended;
    shown = state_->phase().asResult();
    if (quitRequested_ || !shown) return status;
    return settleConfirmation(*shown, status);
}

std::optional<std::string> TerminalSession::readAnswer(const std::string& prompt) {
    out_ << prompt << std::flush;
    std::string line;
    readingInput_ = true;
    const bool read = static_cast<bool>(std::getline(*confirmation_.answers, line));
    readingInput_ = false;
    if (!read) return std::nullopt;
    return base::text::lower(base::text::nfc(base::text::trim(line)));
}

bool TerminalSession::userSaysYes(const std::string& prompt) {
    // Any of the four interface languages' yes words counts, whatever the interface language.
    static const std::vector<std::string> yesWords = {"y",  "yes",  "예", "네",   "응",
                                                      "是", "是的", "好", "はい", "うん"};
    const auto answer = readAnswer(prompt);
    return answer && std::find(yesWords.begin(), yesWords.end(), *answer) != yesWords.end();
}

std::optional<int> TerminalSession::chooseRecipient() {
    std::optional<std::vector<personal::ContactMatch>> matches;
    running_ = true;
    const bool started = state_->lookUpShownRecipients(
        [&](std::vector<personal::ContactMatch> found) { matches = std::move(found); });
    queue_.runUntil(
        [&] { return !started || matches || quitRequested_ || state_->tasksInFlight() == 0; });
    running_ = false;
    if (!matches || matches->empty()) return std::nullopt;
    if (matches->size() == 1) {
        state_->chooseShownRecipient(matches->front());
        return std::nullopt;
    }
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    if (!confirmation_.answers) {
        // --yes cannot pick a person: the card lists them and nothing is sent.
        std::string names;
        for (const auto& match : *matches) names += (names.empty() ? "" : ", ") + match.name;
        const auto card = core::PipelineOutcome::error(core::UserFacingError(
            base::text::replaceAll(strings.messageRecipientAmbiguousTemplate, "%@", names)));
        if (json_)
            out_ << outcomeJSON(card).dump() << '\n';
        else
            out_ << cardText(card, strings);
        return exitNotConfirmed;
    }
    out_ << strings.messageRecipientMultipleMatchesLabel << '\n';
    for (std::size_t index = 0; index < matches->size(); ++index)
        out_ << "  " << index + 1 << ". " << (*matches)[index].name << "  "
             << (*matches)[index].handle << '\n';
    const auto answer = readAnswer(base::text::replaceAll(
        strings.messageRecipientChoicePromptTemplate, "%@", std::to_string(matches->size())));
    std::size_t chosen = 0;
    if (answer) std::from_chars(answer->data(), answer->data() + answer->size(), chosen);
    if (chosen < 1 || chosen > matches->size() || !answer ||
        answer->find_first_not_of("0123456789") != std::string::npos)
        return exitNotConfirmed;
    state_->chooseShownRecipient((*matches)[chosen - 1]);
    return std::nullopt;
}

int TerminalSession::settleConfirmation(const core::PipelineOutcome& pending, int status) {
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    // The card may change under us once rows are carried out; work on its copy.
    const core::PipelineOutcome shown = pending;
    if (!confirmation_.confirmAll && !confirmation_.answers) {
        if (!json_) out_ << strings.confirmNotCarriedOutMessage << '\n';
        return exitNotConfirmed;
    }
    bool anyDeclined = false;
    for (std::size_t row = 0; row < confirmationRowCount(shown) && !quitRequested_; ++row) {
        if (!confirmation_.confirmAll) {
            const std::string title = confirmationRowTitle(shown, row);
            const std::string prompt =
                shown.asConfirm()
                    ? std::string(strings.confirmPlanPrompt)
                    : base::text::replaceAll(strings.confirmDeleteRowPromptTemplate, "%@", title);
            if (!userSaysYes(prompt)) {
                anyDeclined = true;
                continue;
            }
        }
        std::optional<core::PipelineOutcome> outcome;
        running_ = true;
        const bool started = state_->confirmShown(
            row, [&](core::PipelineOutcome done) { outcome = std::move(done); });
        queue_.runUntil(
            [&] { return !started || outcome || quitRequested_ || state_->tasksInFlight() == 0; });
        running_ = false;
        if (!outcome) continue;
        if (json_)
            out_ << outcomeJSON(*outcome).dump() << '\n';
        else
            out_ << cardText(*outcome, strings);
        if (exitStatusOf(*outcome) != exitResult) status = exitStatusOf(*outcome);
    }
    return anyDeclined && status == exitResult ? exitNotConfirmed : status;
}

int TerminalSession::printSettled() {
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    const Phase& phase = state_->phase();
    if (const auto* outcome = phase.asResult()) {
        if (json_)
            out_ << outcomeJSON(*outcome).dump() << '\n';
        else
            out_ << cardText(*outcome, strings);
        const auto* error = outcome->asError();
        if (!json_ && error && error->message == strings.llmUnavailableMessage &&
            noModelInstalled && noModelInstalled()) {
            out_ << strings.modelInstallHintLine << '\n';
        }
        return exitStatusOf(*outcome);
    }
    if (const auto* steps = phase.asChain()) {
        int status = exitResult;
        if (json_) out_ << chainJSON(*steps).dump() << '\n';
        for (const auto& step : *steps) {
            const auto outcome = step.outcome.value_or(core::PipelineOutcome::cancelled());
            if (!json_)
                out_ << step.id + 1 << ". " << step.subQuery << '\n' << cardText(outcome, strings);
            if (exitStatusOf(outcome) != exitResult) status = exitStatusOf(outcome);
        }
        return status;
    }
    // Idle after a run: it was cancelled.
    if (json_) out_ << outcomeJSON(core::PipelineOutcome::cancelled()).dump() << '\n';
    return exitCancelled;
}

int TerminalSession::interactive(std::istream& in, bool prompt) {
    const auto& strings = core::LocalizedStrings::strings(state_->lang());
    const int status = interactive([&]() -> std::optional<std::string> {
        if (prompt) out_ << strings.placeholder << "> " << std::flush;
        std::string line;
        if (!std::getline(in, line)) return std::nullopt;
        return line;
    });
    if (prompt) out_ << '\n';
    return status;
}

int TerminalSession::interactive(const LineSource& nextLine) {
    int status = exitResult;
    while (!quitRequested_) {
        readingInput_ = true;
        auto read = nextLine();
        readingInput_ = false;
        if (!read) break;
        const std::string line = base::text::nfc(base::text::trim(*read));
        if (line.empty()) continue;
        status = ask(line);
        out_ << std::flush;
    }
    return status;
}

void TerminalSession::interrupt() {
    if (running_ && !cancelRequested_) {
        cancelRequested_ = true;
        state_->cancelActiveRun();
        return;
    }
    quitRequested_ = true;
    queue_.wake();
}

void TerminalSession::terminate() {
    if (running_) state_->cancelActiveRun();
    quitRequested_ = true;
    queue_.wake();
}

}  // namespace nuvrel::app
