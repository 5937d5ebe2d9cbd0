#pragma once
// The calendar and reminder capabilities of one call, made from a pipeline's stores, clock,
// language and notification centre. Each is a small value, built per call.

#include "personal/calendar_capabilities.h"
#include "personal/reminder_capability.h"
#include "pipeline/pipeline.h"

namespace nuvrel::pipeline {

inline personal::ReminderCapability reminderCapabilityOf(const Pipeline& pipeline) {
    return {pipeline.language, pipeline.reminderStore, pipeline.clock,
            pipeline.timerCapability.notificationCenter, pipeline.diagnostics};
}

inline personal::CalendarAddEventCapability calendarAddCapabilityOf(const Pipeline& pipeline) {
    return {pipeline.language, pipeline.calendarStore, pipeline.clock};
}

inline personal::CalendarDeleteCapability calendarDeleteCapabilityOf(const Pipeline& pipeline) {
    return {pipeline.language, pipeline.calendarStore, pipeline.clock};
}

}  // namespace nuvrel::pipeline
