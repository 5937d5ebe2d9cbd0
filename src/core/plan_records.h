#pragma once
// The typed inputs of the five plan-backed intents, as the validator has proven them.
// Every field has an initialiser, so that a designated initialiser may leave fields out.

#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::core {

// Each optional field, when set, is a member of the matching SlotEnums vocabulary.
struct FinderQuery {
    std::optional<std::string> keyword{};
    std::optional<std::string> fileType{};
    std::optional<std::string> location{};
    std::optional<std::string> dateRange{};

    bool operator==(const FinderQuery&) const = default;
};

struct CalendarRange {
    std::string dateRange{};  // a token of SlotEnums::calendarDateRange()
    std::optional<std::string> keyword{};

    bool operator==(const CalendarRange&) const = default;
};

struct MessageDraft {
    enum class Channel { imessage, sms, mail };

    std::string recipientQuery{};               // the recipient as the user said it
    std::optional<std::string> resolvedName{};  // set once a contact was matched
    Channel channel = Channel::imessage;
    std::string body{};

    bool operator==(const MessageDraft&) const = default;
};

struct MusicCommand {
    enum class Action { play, pause, next, prev };

    std::optional<std::string> query{};
    Action action = Action::play;

    bool operator==(const MusicCommand&) const = default;
};

struct WebQuery {
    std::string query{};
    bool wantAnswer = false;

    bool operator==(const WebQuery&) const = default;
};

// Raw values equal the case names.
std::string_view rawValue(MessageDraft::Channel channel);
std::optional<MessageDraft::Channel> messageChannelFromRawValue(std::string_view raw);
std::string_view rawValue(MusicCommand::Action action);
std::optional<MusicCommand::Action> musicActionFromRawValue(std::string_view raw);

}  // namespace nuvrel::core
