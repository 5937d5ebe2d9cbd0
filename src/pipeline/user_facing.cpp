#include "pipeline/user_facing.h"

#include <string>

#include "base/diagnostics.h"
#include "base/shared_library.h"

namespace nuvrel::pipeline {

core::UserFacingError userFacing(const std::exception_ptr& error,
                                 const core::LocalizedStrings& strings,
                                 const base::Diagnostics& diagnostics) {
    std::string description;
    try {
        std::rethrow_exception(error);
    } catch (const core::UserFacingError& userFacingError) {
        core::UserFacingError shown = userFacingError;
        if (!shown.recoverySuggestion) shown.recoverySuggestion = strings.helpHintRecovery;
        return shown;
    } catch (const base::SharedLibraryError& missing) {
        // A broken installation: name what is missing, the rest of the program still works.
        diagnostics.event("capability needs a library that did not load: " + missing.description());
        return core::UserFacingError(strings.systemToolMissingMessage(missing.library()));
    } catch (const std::exception& other) {
        // Every error type of the program describes itself through what().
        description = other.what();
    } catch (...) {
        // Not a std::exception, so no cancellation either (callers handle that first).
        description = "unknown error";
    }
    diagnostics.event("capability error hidden behind genericErrorMessage: " + description);
    return core::UserFacingError(strings.genericErrorMessage, strings.helpHintRecovery, false);
}

core::UserFacingError networkFeaturesOfflineError(const core::LocalizedStrings& strings) {
    return core::UserFacingError(strings.networkFeaturesOfflineMessage,
                                 strings.networkFeaturesOfflineRecovery, false);
}

}  // namespace nuvrel::pipeline
