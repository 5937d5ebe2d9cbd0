#pragma once
// What run control needs of a pipeline. `Pipeline` is the production form; tests of the
// shell script their own.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/pipeline_outcome.h"
#include "personal/contact_name_matcher.h"

namespace nuvrel::pipeline {

class PipelineRunning {
public:
    virtual ~PipelineRunning() = default;
    // Blocks on the caller's task. Never throws: a stop request ends as the outcome cancelled.
    virtual core::PipelineOutcome run(std::string_view query) const = 0;
    // The steps of a multi-request sentence, or nothing for a single request. May throw
    // base::Cancelled.
    virtual std::optional<std::vector<std::string>> decomposeIfChain(
        std::string_view query) const = 0;
    // Carries out what the user confirmed on a shown outcome: the plan of a `confirm`, or row
    // `row` of a delete confirmation card. Nothing when that outcome asks for no confirmation
    // (or the row does not exist). Blocks on the caller's task; never throws.
    virtual std::optional<core::PipelineOutcome> carryOutConfirmed(
        const core::PipelineOutcome& /*shown*/, std::size_t /*row*/) const {
        return std::nullopt;
    }
    // The contacts that a draft's recipient names, as its card looks them up; empty when none
    // answers or the contacts cannot be read. Blocks on the caller's task; throws only
    // base::Cancelled.
    virtual std::vector<personal::ContactMatch> recipientCandidates(
        const core::MessageDraft& /*draft*/) const {
        return {};
    }
};

}  // namespace nuvrel::pipeline
