#pragma once
// The user's address book (the live form: a folder of vCards) and the two ways a message
// leaves the machine. Calls block on the caller's task; implementations are safe from any task.

#include <stdexcept>
#include <string>
#include <vector>

namespace nuvrel::personal {

struct Contact {
    std::string formattedName;  // the full name as the card gives it; may be empty
    std::string givenName;
    std::string familyName;
    std::string nickname;
    std::vector<std::string> phoneNumbers;  // in the card's order
    std::vector<std::string> emailAddresses;
};

class ContactStore {
public:
    virtual ~ContactStore() = default;
    // False when the address book may not be read.
    virtual bool hasAccess() = 0;
    // Every contact; a card that cannot be read is left out.
    virtual std::vector<Contact> contacts() = 0;
};

// Why a message could not go. The text names no recipient and quotes no message.
class MessageSendError : public std::runtime_error {
public:
    enum class Kind { noDevice, noMailClient, failed };
    MessageSendError(Kind kind, const std::string& reason)
        : std::runtime_error(reason), kind(kind) {}
    Kind kind;
};

class MessageSending {
public:
    virtual ~MessageSending() = default;
    // Sends a text message to the number. Throws MessageSendError.
    virtual void sendText(const std::string& handle, const std::string& body) = 0;
    // Opens a filled-in message in the user's mail client, unsent. Throws MessageSendError.
    virtual void composeMail(const std::string& address, const std::string& body) = 0;
};

}  // namespace nuvrel::personal
