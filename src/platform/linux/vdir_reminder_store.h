#pragma once
// Reminders as VTODO items in one vdir folder (todoman's layout): one ".ics" per reminder,
// written atomically, with a DUE date (a date-time when a time was said) and one display
// alarm at that time. The folder is created on the first write.

#include <filesystem>
#include <memory>

#include "personal/reminder_store.h"
#include "platform/linux/ics_folder_cache.h"

namespace nuvrel::platform {

class VdirReminderStore final : public personal::ReminderStore {
public:
    VdirReminderStore(std::filesystem::path folder, std::shared_ptr<IcsFolderCache> cache);

    bool hasAccess() override { return true; }
    std::optional<std::string> addReminder(const personal::NewReminder& reminder) override;
    std::vector<personal::StoredReminder> incompleteReminders() override;
    std::optional<std::string> removeReminder(const std::string& identifier) override;

private:
    std::filesystem::path folder_;
    std::shared_ptr<IcsFolderCache> cache_;
};

}  // namespace nuvrel::platform
