#include "personal/notes_capability.h"

#include "base/text.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"

namespace nuvrel::personal {

core::CapabilityResult NotesCapability::execute(const NotesCandidate& candidate) const {
    const auto& strings = core::LocalizedStrings::strings(language);
    const std::string content = base::text::trim(candidate.content);
    if (content.empty())
        throw core::UserFacingError(strings.missingSlotMessage(strings.slotNameContent));
    try {
        store->create(content);
    } catch (const NotesStoreError& error) {
        diagnostics.event(std::string("note.create failure: ") + error.what());
        throw core::UserFacingError(strings.noteSaveFailedMessage,
                                    std::string(strings.automationFailedRecovery), true);
    }
    return core::CapabilityResult::NoteSaved{content};
}

std::optional<core::CapabilityResult> NotesCapability::findCandidates(
    const std::string& keyword) const {
    const std::string trimmed = base::text::trim(keyword);
    if (trimmed.empty()) return std::nullopt;
    std::vector<core::NoteListItem> notes;
    try {
        notes = store->notesMatching(trimmed);
    } catch (const NotesStoreError& error) {
        diagnostics.event(std::string("note.delete list failure: ") + error.what());
        return std::nullopt;
    }
    if (notes.empty()) return std::nullopt;
    if (notes.size() > maxCandidates) notes.resize(maxCandidates);
    return core::CapabilityResult::NoteDeleteConfirmation{std::move(notes)};
}

core::CapabilityResult NotesCapability::confirmDelete(const std::string& noteID,
                                                      const std::string& title) const {
    const bool removed = store->remove(noteID);
    return core::CapabilityResult::NoteDeleted{removed ? title : std::string()};
}

}  // namespace nuvrel::personal
