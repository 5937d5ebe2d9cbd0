#pragma once
// The user's own components that personal features talk to, for tests on a private session
// bus (support/private_bus.h): a real MPRIS player (mpv with its MPRIS plugin) playing
// generated tones, and a KDE Connect stand-in that records the SMS it is asked to send.

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "support/bus_stand_in.h"
#include "support/helper_process.h"

namespace nuvrel::test {

// An address book as khard writes it (3.0, folded at 75 octets) and as Evolution does (4.0,
// CRLF, grouped properties, typed numbers): "김철수" and "철수" (phones), "Jamie Lee"
// (nicknames Jay and JJ, a mail and a phone), "Sam Park" (mail only), "No Handle".
void writeAddressBook(const std::filesystem::path& folder);

// A mono 8 kHz WAV file of a square tone, `seconds` long.
void writeTone(const std::filesystem::path& path, int seconds);

// mpv with no audio or video output, playing `files` in order on the current session bus.
std::unique_ptr<HelperProcess> startMprisPlayer(const std::vector<std::filesystem::path>& files);

// org.kde.kdeconnect with one paired device, "phone1", reachable while `reachable` is set.
class KdeConnectStandIn {
public:
    explicit KdeConnectStandIn(const std::string& busAddress);
    // "<device path>|<number>|<text>" of each sendSms received, in order.
    std::vector<std::string> sent() const;
    void setReachable(bool reachable);

private:
    mutable std::mutex mutex_;
    bool reachable_ = true;
    std::vector<std::string> sent_;
    std::unique_ptr<BusStandIn> service_;  // last: its handler uses the members above
};

}  // namespace nuvrel::test
