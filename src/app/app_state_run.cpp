// Run control: one query from Return to the card, on a task of its own.

#include <algorithm>
#include <cmath>
#include <exception>
#include <string>
#include <utility>

#include "app/app_state.h"
#include "app/debug_log.h"
#include "app/settings_keys.h"
#include "base/diagnostics.h"
#include "base/text.h"
#include "core/localized_strings.h"

namespace nuvrel::app {

namespace {

// The pipeline promises not to throw; should one still do so, the user gets the generic
// error instead of a spinner that never ends.
core::PipelineOutcome runGuarded(const pipeline::PipelineRunning& pipeline, std::string_view query,
                                 core::AppLanguage language, const base::Diagnostics& diagnostics) {
    try {
        return pipeline.run(query);
    } catch (const base::Cancelled&) {
        return core::PipelineOutcome::cancelled();
    } catch (const std::exception& error) {
        diagnostics.event(std::string("pipeline run failed: ") + error.what());
        return core::PipelineOutcome::error(
            core::UserFacingError(core::LocalizedStrings::strings(language).genericErrorMessage));
    }
}

// While the first model is still downloading, "model unavailable" says why and for how long.
core::PipelineOutcome explainDownloadingModel(core::PipelineOutcome outcome,
                                              std::optional<double> downloadProgress,
                                              core::AppLanguage language) {
    const auto& strings = core::LocalizedStrings::strings(language);
    const auto* error = outcome.asError();
    if (!error || !downloadProgress || error->message != strings.llmUnavailableMessage)
        return outcome;
    const double clamped = std::clamp(*downloadProgress, 0.0, 1.0);
    const int percent = static_cast<int>(std::lround(clamped * 100.0));
    return core::PipelineOutcome::error(core::UserFacingError(
        strings.llmUnavailableDownloadingMessage(percent), std::nullopt, error->retryable));
}

// Our reading of a "good result" for first-run hints: something was done or shown. An empty
// search, a missing permission and the help overview leave the user where they started.
bool countsAsFirstQuery(const core::PipelineOutcome& outcome) {
    if (outcome.kind() == core::PipelineOutcome::Kind::confirm) return true;
    const auto* result = outcome.asResult();
    if (!result) return false;
    return !result->is<core::CapabilityResult::Empty>() &&
           !result->is<core::CapabilityResult::NeedsPermission>() &&
           !result->is<core::CapabilityResult::HelpOverview>();
}

void logChain(const std::vector<ChainStepState>& steps, core::AppLanguage language,
              const base::Diagnostics& diagnostics) {
    const std::string total = std::to_string(steps.size());
    for (const auto& step : steps) {
        diagnostics.line(debugTag, "chain step " + std::to_string(step.id + 1) + "/" + total +
                                       ": " + describeOutcome(*step.outcome, language));
    }
}

// Runs `step` with the state on the main thread and gives its answer; false once the state
// is gone. Throws base::Cancelled when the task was stopped before the job could start.
template <class Step>
bool onMain(const auto& run, Step&& step) {
    return run.queue->runSync([&] {
        auto state = run.state.lock();
        return state ? step(*state) : false;
    });
}

}  // namespace

void AppState::run(std::string_view rawQuery) {
    requireMainThread();
    std::string text = base::text::trim(rawQuery);
    if (text.empty()) {
        phase_ = Phase::idle();
        notify();
        return;
    }
    query_ = text;
    resultQuery_ = text;
    activeRowActions.reset();
    retireRunTask();
    if (!makePipeline) {
        phase_ = Phase::idle();
        notify();
        return;
    }
    phase_ = Phase::thinking();
    RunContext context;
    context.state = weak_from_this();
    context.queue = &queue_;
    context.generation = ++runGeneration_;
    context.query = std::move(text);
    context.language = lang_;
    if (modelSwitchTask_ && !modelSwitchTask_->completion->isDone()) {
        context.modelSwitch = modelSwitchTask_->completion;
    }
    context.debugLogging = debugLoggingEnabled_;
    context.diagnostics = diagnostics_;
    runTask_.emplace(startTracked([context = std::move(context)] { runTaskBody(context); }));
    notify();
}

void AppState::runTaskBody(const RunContext& run) {
    const auto cancellation = base::currentCancellation();

    // A query typed during a model switch waits for the switch to end, and its pipeline is
    // built afterwards so that it runs on the model the user just chose.
    if (run.modelSwitch) run.modelSwitch->wait();

    std::shared_ptr<const pipeline::PipelineRunning> pipeline;
    const bool current = onMain(run, [&](AppState& state) {
        if (!state.isCurrent(run)) return false;
        if (state.makePipeline) pipeline = state.makePipeline(run.language);
        if (!pipeline) {
            state.phase_ = Phase::idle();
            state.notify();
        }
        return pipeline != nullptr;
    });
    if (!current) return;

    std::optional<std::vector<std::string>> steps;
    try {
        steps = pipeline->decomposeIfChain(run.query);
    } catch (const base::Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        // Not worth failing the query over: it runs as one request.
        run.diagnostics.event(std::string("chain decomposition failed: ") + error.what());
    }
    if (steps && !steps->empty()) {
        runChain(run, *pipeline, *steps);
        return;
    }

    core::PipelineOutcome outcome = runGuarded(*pipeline, run.query, run.language, run.diagnostics);
    // Posted rather than awaited: nothing follows in this task, and the job itself decides on
    // the main thread whether the outcome is still wanted.
    run.queue->post([run, cancellation, outcome = std::move(outcome)]() mutable {
        if (auto state = run.state.lock()) {
            state->publishResult(run, std::move(outcome),
                                 cancellation && cancellation->isCancelled());
        }
    });
}

void AppState::runChain(const RunContext& run, const pipeline::PipelineRunning& pipeline,
                        const std::vector<std::string>& subQueries) {
    const auto cancellation = base::currentCancellation();
    const auto stillCurrent = [&](const AppState& state) {
        return state.isCurrent(run) && !(cancellation && cancellation->isCancelled());
    };

    std::vector<ChainStepState> steps;
    for (std::size_t index = 0; index < subQueries.size(); ++index) {
        steps.push_back(ChainStepState{static_cast<int>(index), subQueries[index], std::nullopt});
    }
    const auto publish = [&](AppState& state) {
        state.phase_ = Phase::chain(steps);
        state.notify();
    };
    if (!onMain(run, [&](AppState& state) {
            if (!stillCurrent(state)) return false;
            publish(state);
            return true;
        })) {
        return;
    }

    // Every step runs whatever became of the earlier ones: a failed step shows in its row.
    for (auto& step : steps) {
        core::PipelineOutcome outcome =
            runGuarded(pipeline, step.subQuery, run.language, run.diagnostics);
        const bool last = &step == &steps.back();
        if (!onMain(run, [&](AppState& state) {
                if (!stillCurrent(state)) return false;
                step.outcome = std::move(outcome);
                publish(state);
                // In the same job as the last step: a front end that waits for the chain to
                // settle and then exits still finds the lines written.
                if (last && run.debugLogging) logChain(steps, run.language, run.diagnostics);
                return true;
            })) {
            return;
        }
    }
}

void AppState::publishResult(const RunContext& run, core::PipelineOutcome outcome,
                             bool taskCancelled) {
    outcome = explainDownloadingModel(std::move(outcome), modelDownloadProgress_, run.language);
    if (!isCurrent(run)) return;
    if (outcome.isCancelled()) {
        phase_ = Phase::idle();
        notify();
    } else {
        if (taskCancelled) return;
        if (countsAsFirstQuery(outcome)) {
            userDefaults_->set(settingsKey::hasCompletedFirstQuery, std::string("1"));
        }
        phase_ = Phase::result(outcome);
        notify();
    }
    if (run.debugLogging)
        run.diagnostics.line(debugTag, "outcome: " + describeOutcome(outcome, run.language));
}

}  // namespace nuvrel::app
