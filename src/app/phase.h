#pragma once
// What the panel shows: a result card, a chain of steps, the empty panel, or the spinner.

#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "core/pipeline_outcome.h"

namespace nuvrel::app {

struct ChainStepState {
    int id = 0;  // the step's index
    std::string subQuery;
    std::optional<core::PipelineOutcome> outcome;  // absent while the step hasn't finished
};

class Phase {
public:
    enum class Kind { result, chain, idle, thinking };

    static Phase result(core::PipelineOutcome outcome) { return {std::move(outcome)}; }
    static Phase chain(std::vector<ChainStepState> steps) { return {std::move(steps)}; }
    static Phase idle() { return {Idle{}}; }
    static Phase thinking() { return {Thinking{}}; }

    Kind kind() const { return static_cast<Kind>(storage_.index()); }
    bool is(Kind kind) const { return this->kind() == kind; }

    // The payload when the phase is of that case, else null.
    const core::PipelineOutcome* asResult() const {
        return std::get_if<core::PipelineOutcome>(&storage_);
    }
    const std::vector<ChainStepState>* asChain() const {
        return std::get_if<std::vector<ChainStepState>>(&storage_);
    }

private:
    struct Idle {};
    struct Thinking {};
    using Storage =
        std::variant<core::PipelineOutcome, std::vector<ChainStepState>, Idle, Thinking>;

    Phase(Storage storage) : storage_(std::move(storage)) {}

    Storage storage_;
};

}  // namespace nuvrel::app
