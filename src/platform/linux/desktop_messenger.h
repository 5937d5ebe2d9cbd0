#pragma once
// Messages on a Linux desktop: a text message through KDE Connect's D-Bus service, on a paired
// and reachable phone; an e-mail through the user's mail client, opened with a `mailto:`
// address and left unsent.

#include <functional>
#include <memory>
#include <string>

#include "personal/contact_store.h"
#include "platform/linux/session_bus.h"

namespace nuvrel::platform {

// mailto:ADDRESS?body=BODY, both percent-encoded (UTF-8).
std::string mailtoAddress(const std::string& address, const std::string& body);

class DesktopMessenger : public personal::MessageSending {
public:
    // Opens an address with the default handler; false when no handler takes it.
    using OpenURI = std::function<bool(const std::string& uri)>;

    // `bus` may be null: then no phone is reachable.
    DesktopMessenger(std::shared_ptr<SessionBus> bus, OpenURI openURI)
        : bus_(std::move(bus)), openURI_(std::move(openURI)) {}

    // The first paired, reachable device; blocks up to 10 s per bus call.
    void sendText(const std::string& handle, const std::string& body) override;
    void composeMail(const std::string& address, const std::string& body) override;

    // GIO's default handler of the address's scheme; false when there is none.
    static bool liveOpenURI(const std::string& uri);

private:
    std::shared_ptr<SessionBus> bus_;
    OpenURI openURI_;
};

}  // namespace nuvrel::platform
