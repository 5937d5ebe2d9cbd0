#include "core/plan_records.h"

#include <initializer_list>

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
    for (Channel channel : {Channel::imessage, Channel::sms, Channel::mail}) {
        if (rawValue(channel) == raw) return channel;
    }
    return std::nullopt;
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
    for (Action action : {Action::play, Action::pause, Action::next, Action::prev}) {
        if (rawValue(action) == raw) return action;
    }
    return std::nullopt;
}

}  // namespace nuvrel::core
