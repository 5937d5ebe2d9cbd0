#include "app/terminal_session.h"

#include <istream>
#include <ostream>

#include "app/card_text.h"
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
    return printSettled();
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
    int status = exitResult;
    std::string line;
    while (!quitRequested_) {
        if (prompt) out_ << strings.placeholder << "> " << std::flush;
        readingInput_ = true;
        const bool read = static_cast<bool>(std::getline(in, line));
        readingInput_ = false;
        if (!read) break;
        line = base::text::nfc(base::text::trim(line));
        if (line.empty()) continue;
        status = ask(line);
        out_ << std::flush;
    }
    if (prompt) out_ << '\n';
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
