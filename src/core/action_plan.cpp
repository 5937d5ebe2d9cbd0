#include "core/action_plan.h"

namespace nuvrel::core {

IntentID ActionPlan::intentID() const {
    struct Intent {
        IntentID operator()(const FinderQuery&) const { return IntentID::finderSearch; }
        IntentID operator()(const CalendarRange&) const { return IntentID::calendarQuery; }
        IntentID operator()(const MessageDraft&) const { return IntentID::messageSend; }
        IntentID operator()(const MusicCommand&) const { return IntentID::musicPlay; }
        IntentID operator()(const WebQuery&) const { return IntentID::webSearch; }
    };
    return std::visit(Intent{}, storage_);
}

}  // namespace nuvrel::core
