#include "core/capability_result.h"

#include <array>

namespace nuvrel::core {
namespace {

// Indexed by case number; must follow the order of CapabilityResult::Storage.
constexpr std::array<std::string_view, 31> caseNames{
    "files",
    "events",
    "messageDraft",
    "messageSent",
    "nowPlaying",
    "webAnswer",
    "empty",
    "needsPermission",
    "timerSet",
    "timerCancelled",
    "calculation",
    "currencyConversion",
    "weather",
    "appLaunched",
    "documentSummary",
    "systemCommandExecuted",
    "screenshotTaken",
    "clipboardHistory",
    "deleteFileConfirmation",
    "calendarDeleteConfirmation",
    "calendarEventDeleted",
    "fileDeleted",
    "reminderSet",
    "reminderDeleteConfirmation",
    "reminderDeleted",
    "noteDeleteConfirmation",
    "noteDeleted",
    "windowArranged",
    "noteSaved",
    "translation",
    "helpOverview",
};
static_assert(caseNames.size() == CapabilityResult::caseCount);

}  // namespace

std::string_view caseName(const CapabilityResult& result) {
    return caseNames[result.index()];
}

}  // namespace nuvrel::core
