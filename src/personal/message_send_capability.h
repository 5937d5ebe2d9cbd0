#pragma once
// Messages: a request becomes a draft (the pipeline then asks for confirmation); the recipient
// is resolved against the address book; only a confirmed draft with a chosen handle is sent.
//
// Threading: plan() is pure; the others block on the caller's task.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/diagnostics.h"
#include "core/app_language.h"
#include "core/capability.h"
#include "personal/contact_name_matcher.h"
#include "personal/contact_store.h"

namespace nuvrel::personal {

// A recipient typed as a phone number or an e-mail address, usable without a contact.
bool looksLikeHandle(std::string_view text);

class ContactResolutionError : public std::runtime_error {
public:
    ContactResolutionError() : std::runtime_error("contacts may not be read") {}
};

class MessageSendCapability : public core::Capability {
public:
    MessageSendCapability(core::AppLanguage language, std::shared_ptr<ContactStore> contacts,
                          std::shared_ptr<MessageSending> sender, base::Diagnostics diagnostics)
        : language_(language),
          contacts_(std::move(contacts)),
          sender_(std::move(sender)),
          diagnostics_(std::move(diagnostics)) {}

    core::IntentID intentID() const override { return core::IntentID::messageSend; }
    // "recipient" and "body" are required; "channel" picks one of the three, else imessage.
    core::ActionPlan plan(const core::Slots& slots, std::string_view query) const override;
    // Sends a draft whose recipientQuery already holds the chosen handle.
    core::CapabilityResult execute(const core::ActionPlan& plan) override;

    // The contacts that the name may mean, best first, at most 5; only those with a handle
    // for the channel. Throws ContactResolutionError without access.
    std::vector<ContactMatch> resolveRecipient(const std::string& name,
                                               core::MessageDraft::Channel channel) const;

    // The first number, then the first address, as the channel allows: mail takes only the
    // address; the others prefer the number.
    static std::optional<std::string> primaryHandle(const Contact& contact,
                                                    core::MessageDraft::Channel channel);

private:
    core::AppLanguage language_;
    std::shared_ptr<ContactStore> contacts_;
    std::shared_ptr<MessageSending> sender_;
    base::Diagnostics diagnostics_;
};

}  // namespace nuvrel::personal
