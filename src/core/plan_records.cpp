#include "core/plan_records.h"

#include <initializer_list>

#include "core/raw_value.h"

namespace nuvrel::core {

std::string_view rawValue(MessageDraft::Channel channel) {
    switch (channel) {
        case MessageDraft::Channel::imessage:
            return "imessage";
        case MessageDraft::Channel::sms:
            return "sms";
        case MessageDraft::Channel::mail:
            return "mail";
    }
    return {};
}

std::optional<MessageDraft::Channel> messageChannelFromRawValue(std::string_view raw) {
    using Channel = MessageDraft::Channel;
    return caseWithRawValue(
        std::initializer_list<Channel>{Channel::imessage, Channel::sms, Channel::mail}, raw);
}

std::string_view rawValue(MusicCommand::Action action) {
    switch (action) {
        case MusicCommand::Action::play:
            return "play";
        case MusicCommand::Action::pause:
            return "pause";
        case MusicCommand::Action::next:
            return "next";
        case MusicCommand::Action::prev:
            return "prev";
    }
    return {};
}

std::optional<MusicCommand::Action> musicActionFromRawValue(std::string_view raw) {
    using Action = MusicCommand::Action;
    return caseWithRawValue(
        std::initializer_list<Action>{Action::play, Action::pause, Action::next, Action::prev},
        raw);
}

}  // namespace nuvrel::core
