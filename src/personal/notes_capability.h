#pragma once
// Notes: one is created at once from a candidate; deletion has two steps, candidates for a
// confirmation card, then the one note the user confirmed.
//
// Threading: every call blocks on the caller's task.

#include <memory>
#include <optional>
#include <string>

#include "base/diagnostics.h"
#include "core/app_language.h"
#include "core/capability_result.h"
#include "personal/notes_fast_path.h"
#include "personal/notes_store.h"

namespace nuvrel::personal {

struct NotesCapability {
    core::AppLanguage language = core::AppLanguage::en;
    // Without a store the note steps let every query go on.
    std::shared_ptr<NotesStore> store{};
    base::Diagnostics diagnostics{};

    // noteSaved with the trimmed content. Empty content throws the missing-slot error; a store
    // failure throws noteSaveFailedMessage, retryable.
    core::CapabilityResult execute(const NotesCandidate& candidate) const;
    // At most 30 notes whose title holds the keyword, for a confirmation card; nothing when
    // there are none or the store cannot be read.
    std::optional<core::CapabilityResult> findCandidates(const std::string& keyword) const;
    // noteDeleted with the title the card showed; a vanished note with an empty title.
    core::CapabilityResult confirmDelete(const std::string& noteID, const std::string& title) const;

    static constexpr std::size_t maxCandidates = 30;
};

}  // namespace nuvrel::personal
