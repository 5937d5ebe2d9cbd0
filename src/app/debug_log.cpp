#include "app/debug_log.h"

#include "base/text.h"
#include "core/localized_strings.h"

namespace nuvrel::app {

namespace {

std::string describeDraft(const core::MessageDraft& draft) {
    std::string line;
    line.append(" channel=").append(core::rawValue(draft.channel));
    line.append(" recipient=").append(maskedField(draft.recipientQuery));
    if (draft.resolvedName) line.append(" resolvedName=").append(maskedField(*draft.resolvedName));
    line.append(" body=").append(maskedField(draft.body));
    return line;
}

std::string describeError(const core::UserFacingError& error, core::AppLanguage language) {
    std::string name;
    core::LocalizedStrings::strings(language).forEachField(
        [&](std::string_view field, const std::string& text) {
            if (name.empty() && text == error.message) name = field;
        },
        [](std::string_view, const std::vector<std::string>&) {});
    std::string line = "error message=";
    // Errors worded by a capability may quote what the user typed; only our own texts show.
    line.append(name.empty() ? maskedField(error.message) : name);
    line.append(" retryable=").append(error.retryable ? "true" : "false");
    return line;
}

}  // namespace

bool anyDebugVariableSet(const char* const* environment) {
    static constexpr std::string_view prefix = "NUVREL_DEBUG_";
    if (!environment) return false;
    for (; *environment; ++environment) {
        if (std::string_view(*environment).starts_with(prefix)) return true;
    }
    return false;
}

std::string maskedField(std::string_view text) {
    return "<masked:" + std::to_string(base::text::count(text)) + ">";
}

std::string describeOutcome(const core::PipelineOutcome& outcome, core::AppLanguage language) {
    switch (outcome.kind()) {
        case core::PipelineOutcome::Kind::result: {
            const auto& result = *outcome.asResult();
            std::string line = "result ";
            line.append(core::caseName(result));
            if (const auto* draft = result.get<core::CapabilityResult::MessageDraft>()) {
                line.append(describeDraft(draft->draft));
            } else if (const auto* sent = result.get<core::CapabilityResult::MessageSent>()) {
                line.append(describeDraft(sent->draft));
            }
            return line;
        }
        case core::PipelineOutcome::Kind::confirm: {
            const auto& plan = *outcome.asConfirm();
            std::string line = "confirm ";
            line.append(core::rawValue(plan.intentID()));
            if (const auto* draft = plan.get<core::MessageDraft>())
                line.append(describeDraft(*draft));
            return line;
        }
        case core::PipelineOutcome::Kind::error:
            return describeError(*outcome.asError(), language);
        case core::PipelineOutcome::Kind::cancelled:
            return "cancelled";
    }
    return {};
}

}  // namespace nuvrel::app
