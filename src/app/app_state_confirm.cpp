// The confirming action of the outcome on show, on a task of its own, so that a slow store
// never blocks the main thread.

#include <utility>

#include "app/app_state.h"
#include "app/confirmation_rows.h"
#include "base/diagnostics.h"
#include "core/localized_strings.h"

namespace nuvrel::app {

bool AppState::confirmShown(std::size_t row, std::function<void(core::PipelineOutcome)> done) {
    requireMainThread();
    const core::PipelineOutcome* shown = phase_.asResult();
    if (!shown || row >= confirmationRowCount(*shown) || !makePipeline) return false;
    auto pipeline = makePipeline(lang_);
    if (!pipeline) return false;
    reapFinishedTasks();
    retiredTasks_.push_back(
        startTracked([weak = weak_from_this(), queue = &queue_, generation = runGeneration_,
                      shown = *shown, diagnostics = diagnostics_, row, language = lang_,
                      pipeline = std::move(pipeline), done = std::move(done)] {
            std::optional<core::PipelineOutcome> outcome;
            try {
                outcome = pipeline->carryOutConfirmed(shown, row);
            } catch (const base::Cancelled&) {
                throw;
            } catch (const std::exception& error) {
                diagnostics.event(std::string("confirmed action failed: ") + error.what());
                outcome = core::PipelineOutcome::error(core::UserFacingError(
                    core::LocalizedStrings::strings(language).genericErrorMessage));
            }
            if (!outcome) return;
            queue->runSync([&] {
                auto state = weak.lock();
                if (state && state->runGeneration_ == generation) done(std::move(*outcome));
                return true;
            });
        }));
    return true;
}

namespace {

const core::MessageDraft* shownDraft(const Phase& phase) {
    const core::PipelineOutcome* shown = phase.asResult();
    const core::ActionPlan* plan = shown ? shown->asConfirm() : nullptr;
    return plan ? plan->get<core::MessageDraft>() : nullptr;
}

}  // namespace

bool AppState::lookUpShownRecipients(
    std::function<void(std::vector<personal::ContactMatch>)> done) {
    requireMainThread();
    const core::MessageDraft* draft = shownDraft(phase_);
    if (!draft || !makePipeline) return false;
    auto pipeline = makePipeline(lang_);
    if (!pipeline) return false;
    reapFinishedTasks();
    retiredTasks_.push_back(
        startTracked([weak = weak_from_this(), queue = &queue_, generation = runGeneration_,
                      draft = *draft, pipeline = std::move(pipeline), done = std::move(done)] {
            auto matches = pipeline->recipientCandidates(draft);
            queue->runSync([&] {
                auto state = weak.lock();
                if (state && state->runGeneration_ == generation) done(std::move(matches));
                return true;
            });
        }));
    return true;
}

void AppState::chooseShownRecipient(const personal::ContactMatch& match) {
    requireMainThread();
    const core::MessageDraft* shown = shownDraft(phase_);
    if (!shown) return;
    core::MessageDraft draft = *shown;
    draft.recipientQuery = match.handle;
    draft.resolvedName = match.name;
    phase_ = Phase::result(core::PipelineOutcome::confirm(core::ActionPlan(std::move(draft))));
    notify();
}

}  // namespace nuvrel::app
