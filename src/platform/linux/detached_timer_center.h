#pragma once
// Timers that outlive the program, where no user systemd manager runs: each pending
// notification is a detached helper process (its own session, by setsid) that sleeps until
// the notification is due, shows it through org.freedesktop.Notifications and ends. Its PID
// file "<identifier>.pid" under $XDG_STATE_HOME/nuvrel/timers/ lets a later run find and
// cancel it by the identifier's prefix.
//
// The helper is this program run again as `<helperProgram> __timer-helper <identifier>
// <due seconds since the epoch> <title> <body>` (runTimerHelper below).

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "core/app_language.h"
#include "personal/notification_center_providing.h"
#include "platform/linux/session_bus.h"

namespace nuvrel::platform {

inline constexpr std::string_view timerHelperVerb = "__timer-helper";

class DetachedTimerCenter final : public personal::NotificationCenterProviding {
public:
    // `bus` may be null (no session bus): scheduling then fails with a localised error.
    DetachedTimerCenter(core::AppLanguage language, std::shared_ptr<SessionBus> bus,
                        std::filesystem::path timersFolder, std::filesystem::path helperProgram);

    // Linux asks no permission to notify.
    bool requestAuthorization() override { return true; }
    bool isAuthorized() override { return true; }
    // Throws core::UserFacingError when no session bus or no notification service is there,
    // so that a timer never silently fails to fire.
    void scheduleNotification(const std::string& identifier, const std::string& title,
                              const std::string& body, std::chrono::seconds interval) override;
    int cancelPendingNotifications(std::string_view identifierPrefix) override;

private:
    core::AppLanguage language_;
    std::shared_ptr<SessionBus> bus_;
    std::filesystem::path timersFolder_;
    std::filesystem::path helperProgram_;
};

// The helper's body: `args` after the verb. Sleeps until due, notifies, removes its PID file.
// The exit status of the helper process.
int runTimerHelper(const std::vector<std::string>& args, const std::filesystem::path& timersFolder);

}  // namespace nuvrel::platform
