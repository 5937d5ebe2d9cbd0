#include "app/confirmation_rows.h"

namespace nuvrel::app {

using Result = core::CapabilityResult;

std::size_t confirmationRowCount(const core::PipelineOutcome& outcome) {
    if (outcome.asConfirm()) return 1;
    const Result* result = outcome.asResult();
    if (!result) return 0;
    if (const auto* card = result->get<Result::CalendarDeleteConfirmation>())
        return card->events.size();
    if (const auto* card = result->get<Result::ReminderDeleteConfirmation>())
        return card->reminders.size();
    if (const auto* card = result->get<Result::NoteDeleteConfirmation>()) return card->notes.size();
    if (result->is<Result::DeleteFileConfirmation>()) return 1;
    return 0;
}

std::string confirmationRowTitle(const core::PipelineOutcome& outcome, std::size_t row) {
    const Result* result = outcome.asResult();
    if (!result || row >= confirmationRowCount(outcome)) return {};
    if (const auto* card = result->get<Result::CalendarDeleteConfirmation>())
        return card->events[row].title;
    if (const auto* card = result->get<Result::ReminderDeleteConfirmation>())
        return card->reminders[row].title;
    if (const auto* card = result->get<Result::NoteDeleteConfirmation>())
        return card->notes[row].title;
    if (const auto* card = result->get<Result::DeleteFileConfirmation>()) return card->file.name;
    return {};
}

}  // namespace nuvrel::app
