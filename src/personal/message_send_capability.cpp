#include "personal/message_send_capability.h"

#include "base/text.h"
#include "core/localized_strings.h"
#include "core/slot_enums.h"
#include "core/user_facing_error.h"
#include "pipeline/validator.h"

namespace nuvrel::personal {

using Channel = core::MessageDraft::Channel;

bool looksLikeHandle(std::string_view text) {
    const std::string trimmed = base::text::trim(text);
    if (trimmed.find('@') != std::string::npos) return trimmed.find(' ') == std::string::npos;
    int digits = 0;
    for (const char c : trimmed) {
        if (c >= '0' && c <= '9')
            ++digits;
        else if (std::string_view("+-() .").find(c) == std::string_view::npos)
            return false;
    }
    return digits >= 3;
}

core::ActionPlan MessageSendCapability::plan(const core::Slots& slots, std::string_view) const {
    const auto& strings = core::LocalizedStrings::strings(language_);
    const auto recipient = pipeline::Validator::stringSlot(slots, "recipient");
    if (!recipient)
        throw core::UserFacingError(strings.missingSlotMessage(strings.slotNameRecipient));
    const auto body = pipeline::Validator::stringSlot(slots, "body");
    if (!body) throw core::UserFacingError(strings.missingSlotMessage(strings.slotNameBody));
    Channel channel = Channel::imessage;
    if (const auto raw = pipeline::Validator::stringSlot(slots, "channel")) {
        const std::string lowered = base::text::lower(*raw);
        if (core::SlotEnums::messageChannel().contains(lowered))
            channel = core::messageChannelFromRawValue(lowered).value_or(Channel::imessage);
    }
    return core::ActionPlan(core::MessageDraft{*recipient, std::nullopt, channel, *body});
}

core::CapabilityResult MessageSendCapability::execute(const core::ActionPlan& plan) {
    const auto& strings = core::LocalizedStrings::strings(language_);
    const auto* draft = plan.get<core::MessageDraft>();
    if (!draft) throw core::UserFacingError(strings.capabilityUnavailableMessage);
    const std::string handle = base::text::trim(draft->recipientQuery);
    if (handle.empty())
        throw core::UserFacingError(strings.missingSlotMessage(strings.slotNameRecipient));
    try {
        // Linux has no iMessage: a text message through the user's phone stands for both.
        if (draft->channel == Channel::mail)
            sender_->composeMail(handle, draft->body);
        else
            sender_->sendText(handle, draft->body);
    } catch (const MessageSendError& error) {
        diagnostics_.event(std::string("message.send failure: ") + error.what());
        switch (error.kind) {
            case MessageSendError::Kind::noDevice:
                throw core::UserFacingError(strings.messageNoPhoneDeviceMessage);
            case MessageSendError::Kind::noMailClient:
                throw core::UserFacingError(strings.messageNoMailClientMessage);
            case MessageSendError::Kind::failed:
                break;
        }
        throw core::UserFacingError(strings.messageSendFailedMessage,
                                    std::string(strings.messageSendFailedRecovery), true);
    }
    return core::CapabilityResult::MessageSent{*draft};
}

std::optional<std::string> MessageSendCapability::primaryHandle(const Contact& contact,
                                                                Channel channel) {
    const std::string phone =
        contact.phoneNumbers.empty() ? "" : base::text::trim(contact.phoneNumbers.front());
    const std::string email =
        contact.emailAddresses.empty() ? "" : base::text::trim(contact.emailAddresses.front());
    if (channel == Channel::mail) {
        if (email.empty()) return std::nullopt;
        return email;
    }
    if (!phone.empty()) return phone;
    if (!email.empty()) return email;
    return std::nullopt;
}

std::vector<ContactMatch> MessageSendCapability::resolveRecipient(const std::string& name,
                                                                  Channel channel) const {
    if (!contacts_ || !contacts_->hasAccess()) throw ContactResolutionError();
    std::vector<ContactNameMatcher::RawCandidate> candidates;
    for (const Contact& contact : contacts_->contacts()) {
        const auto handle = primaryHandle(contact, channel);
        if (!handle) continue;
        std::string display = base::text::trim(contact.formattedName);
        if (display.empty())
            display = base::text::trim(contact.givenName + " " + contact.familyName);
        if (display.empty()) continue;
        ContactNameMatcher::RawCandidate candidate{display, *handle, {display}};
        const std::string nickname = base::text::trim(contact.nickname);
        if (!nickname.empty()) candidate.matchNames.push_back(nickname);
        candidates.push_back(std::move(candidate));
    }
    return ContactNameMatcher::rank(name, candidates);
}

}  // namespace nuvrel::personal
