// What happens on the user's word: the confirm button of a draft, or the delete button of a
// row of a confirmation card. The command line and the panel both come here.

#include "base/cancellation.h"
#include "base/text.h"
#include "desktop/delete_file_capability.h"
#include "personal/message_send_capability.h"
#include "pipeline/personal_capabilities.h"
#include "pipeline/pipeline.h"
#include "pipeline/user_facing.h"

namespace nuvrel::pipeline {
namespace {

// What the message card does before its send button works: the name becomes a handle only
// when exactly one contact answers to it, or when it is itself a number or an address. Several
// contacts are shown to the user, never guessed among.
core::PipelineOutcome sendToResolvedRecipient(personal::MessageSendCapability& messages,
                                              const core::MessageDraft& draft,
                                              const core::LocalizedStrings& strings,
                                              const base::Diagnostics& diagnostics) {
    // A recipient picked among several on the card: the draft already holds its handle.
    if (draft.resolvedName)
        return *outcomeOfCall(ErrorRule::allThroughUserFacing, strings, diagnostics,
                              [&] { return messages.execute(core::ActionPlan(draft)); });
    std::vector<personal::ContactMatch> matches;
    try {
        matches = messages.resolveRecipient(draft.recipientQuery, draft.channel);
    } catch (const personal::ContactResolutionError&) {
        return core::PipelineOutcome::result(
            core::CapabilityResult::NeedsPermission{core::PermissionKind::contacts});
    }
    core::MessageDraft resolved = draft;
    if (matches.size() > 1) {
        std::string names;
        for (const auto& match : matches) names += (names.empty() ? "" : ", ") + match.name;
        return core::PipelineOutcome::error(core::UserFacingError(
            base::text::replaceAll(strings.messageRecipientAmbiguousTemplate, "%@", names)));
    }
    if (matches.size() == 1) {
        resolved.recipientQuery = matches.front().handle;
        resolved.resolvedName = matches.front().name;
    } else if (!personal::looksLikeHandle(draft.recipientQuery)) {
        return core::PipelineOutcome::error(
            core::UserFacingError(strings.messageRecipientNotFoundMessage));
    }
    return *outcomeOfCall(ErrorRule::allThroughUserFacing, strings, diagnostics,
                          [&] { return messages.execute(core::ActionPlan(resolved)); });
}

}  // namespace

std::vector<personal::ContactMatch> Pipeline::recipientCandidates(
    const core::MessageDraft& draft) const {
    const auto messages = std::dynamic_pointer_cast<personal::MessageSendCapability>(
        registry.capability(core::IntentID::messageSend));
    if (!messages) return {};
    try {
        return messages->resolveRecipient(draft.recipientQuery, draft.channel);
    } catch (...) {
        base::rethrowIfCancelled();
        // The send that follows looks up again and reports what went wrong.
        return {};
    }
}

std::optional<core::PipelineOutcome> Pipeline::carryOutConfirmed(const core::PipelineOutcome& shown,
                                                                 std::size_t row) const {
    const core::LocalizedStrings& strings = core::LocalizedStrings::strings(language);
    if (const core::ActionPlan* plan = shown.asConfirm()) {
        const std::shared_ptr<core::Capability> capability = registry.capability(plan->intentID());
        if (!capability)
            return core::PipelineOutcome::error(
                core::UserFacingError(strings.capabilityUnavailableMessage, std::nullopt, false));
        if (const auto* draft = plan->get<core::MessageDraft>()) {
            const auto messages =
                std::dynamic_pointer_cast<personal::MessageSendCapability>(capability);
            if (messages) return sendToResolvedRecipient(*messages, *draft, strings, diagnostics);
        }
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
    if (const auto* notes = card->get<core::CapabilityResult::NoteDeleteConfirmation>()) {
        if (row >= notes->notes.size() || !notesCapability.store) return std::nullopt;
        const core::NoteListItem note = notes->notes[row];
        return outcomeOfCall(ErrorRule::userFacingAsThrown, strings, diagnostics, [&] {
            return notesCapability.confirmDelete(note.identifier, note.title);
        });
    }
    return std::nullopt;
}

}  // namespace nuvrel::pipeline
