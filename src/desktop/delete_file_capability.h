#pragma once
// File deletion in two steps: findCandidate proposes one file (a confirmation card), and only
// the user's word runs confirmDelete, which moves that very file to the Trash. Nothing is ever
// removed for good.
//
// Threading: both block on the caller's task; one value may serve several tasks.

#include <string>

#include "core/capability_result.h"
#include "desktop/delete_file_fast_path.h"
#include "desktop/file_services.h"

namespace nuvrel::desktop {

struct DeleteFileCapability {
    core::AppLanguage language = core::AppLanguage::en;
    FileServices services{};

    // The newest file whose name contains the candidate's (on the desktop when it says so),
    // outside hidden and build folders, as deleteFileConfirmation; remembered with its identity
    // for confirmDelete. `empty` with no hit, `needsPermission` when no user folder can be
    // listed either. Search failures pass on as thrown.
    core::CapabilityResult findCandidate(const DeleteFileFastPath::Candidate& candidate,
                                         double timeout) const;

    // Moves the file at `path` to the Trash, as fileDeleted with its name; a file already gone
    // is reported deleted with an empty name. Throws core::UserFacingError with
    // deleteFileFailedMessage for a file never proposed, outside the home folder, changed or
    // replaced since it was proposed, or that the Trash refuses.
    core::CapabilityResult confirmDelete(const std::string& path) const;
};

}  // namespace nuvrel::desktop
