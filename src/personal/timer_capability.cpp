#include "personal/timer_capability.h"

#include <cstdio>
#include <random>

#include "base/cancellation.h"
#include "core/localized_strings.h"

namespace nuvrel::personal {

std::string makeUUIDString() {
    thread_local std::mt19937_64 generator{std::random_device{}()};
    unsigned char bytes[16];
    for (int i = 0; i < 16; i += 8) {
        const std::uint64_t value = generator();
        for (int j = 0; j < 8; ++j) bytes[i + j] = static_cast<unsigned char>(value >> (8 * j));
    }
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
    char text[37];
    std::snprintf(text, sizeof text,
                  "%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X", bytes[0],
                  bytes[1], bytes[2], bytes[3], bytes[4], bytes[5], bytes[6], bytes[7], bytes[8],
                  bytes[9], bytes[10], bytes[11], bytes[12], bytes[13], bytes[14], bytes[15]);
    return text;
}

core::CapabilityResult TimerCapability::execute(const core::TimerRequest& request) const {
    bool authorized = false;
    try {
        authorized = notificationCenter->requestAuthorization();
    } catch (const base::Cancelled&) {
        throw;
    } catch (...) {
        authorized = false;
    }
    if (!authorized)
        return core::CapabilityResult::NeedsPermission{core::PermissionKind::notifications};
    const auto& strings = core::LocalizedStrings::strings(language);
    const std::chrono::seconds duration(request.durationSeconds);
    notificationCenter->scheduleNotification(
        std::string(timerIdentifierPrefix) + makeUUIDString(), strings.timerNotificationTitle,
        strings.timerNotificationBody(request.displayText), duration);
    const auto fireDate = std::chrono::time_point_cast<core::CapabilityResult::TimePoint::duration>(
        std::chrono::system_clock::now() + duration);
    return core::CapabilityResult::TimerSet{fireDate, request.displayText};
}

core::CapabilityResult TimerCapability::cancelAll() const {
    return core::CapabilityResult::TimerCancelled{
        notificationCenter->cancelPendingNotifications(timerIdentifierPrefix)};
}

}  // namespace nuvrel::personal
