// What happens on the user's word: the confirm button of a draft, or the delete button of a
// row of a confirmation card. The command line and the panel both come here.

#include "desktop/delete_file_capability.h"
#include "pipeline/personal_capabilities.h"
#include "pipeline/pipeline.h"
#include "pipeline/user_facing.h"

namespace nuvrel::pipeline {

std::optional<core::PipelineOutcome> Pipeline::carryOutConfirmed(const core::PipelineOutcome& shown,
                                                                 std::size_t row) const {
    const core::LocalizedStrings& strings = core::LocalizedStrings::strings(language);
    if (const core::ActionPlan* plan = shown.asConfirm()) {
        const std::shared_ptr<core::Capability> capability = registry.capability(plan->intentID());
        if (!capability)
            return core::PipelineOutcome::error(
                core::UserFacingError(strings.capabilityUnavailableMessage, std::nullopt, false));
        return outcomeOfCall(ErrorRule::allThroughUserFacing, strings, diagnostics,
                             [&] { return capability->execute(*plan); });
    }
    const core::CapabilityResult* card = shown.asResult();
    if (card == nullptr) return std::nullopt;
    if (const auto* events = card->get<core::CapabilityResult::CalendarDeleteConfirmation>()) {
        if (row >= events->events.size() || !calendarStore) return std::nullopt;
        const std::string identifier = events->events[row].eventIdentifier.value_or("");
        return outcomeOfCall(ErrorRule::userFacingAsThrown, strings, diagnostics, [&] {
            return calendarDeleteCapabilityOf(*this).confirmDelete(identifier);
        });
    }
    if (const auto* reminders = card->get<core::CapabilityResult::ReminderDeleteConfirmation>()) {
        if (row >= reminders->reminders.size() || !reminderStore) return std::nullopt;
        const std::string identifier = reminders->reminders[row].identifier;
        return outcomeOfCall(ErrorRule::userFacingAsThrown, strings, diagnostics,
                             [&] { return reminderCapabilityOf(*this).confirmDelete(identifier); });
    }
    if (const auto* file = card->get<core::CapabilityResult::DeleteFileConfirmation>()) {
        if (row != 0) return std::nullopt;
        return outcomeOfCall(ErrorRule::userFacingAsThrown, strings, diagnostics, [&] {
            return desktop::DeleteFileCapability{language, fileServices}.confirmDelete(
                file->file.path);
        });
    }
    return std::nullopt;
}

}  // namespace nuvrel::pipeline
