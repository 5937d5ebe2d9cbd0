#include <gio/gio.h>
#include <gtest/gtest.h>

#include <thread>

#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "personal/message_send_capability.h"
#include "personal/music_play_capability.h"
#include "platform/linux/desktop_messenger.h"
#include "platform/linux/mpris_player.h"
#include "platform/linux/vcard_folder.h"
#include "support/personal_components.h"
#include "support/private_bus.h"
#include "support/recording_sink.h"
#include "support/temporary_home.h"

namespace nuvrel::platform {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Channel = core::MessageDraft::Channel;

const auto& strings = core::LocalizedStrings::en();

std::string messageOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const core::UserFacingError& error) {
        return error.message;
    }
    return {};
}

TEST(Messages, ResolveAmongVCardsAndSendThroughKdeConnectOrMailto) {
    test::TemporaryHome home;
    test::PrivateBus bus;
    ASSERT_FALSE(bus.address.empty());
    test::KdeConnectStandIn kdeConnect(bus.address);

    test::RecordedDiagnostics recorded;
    const fs::path folder = home.path() / "contacts";
    test::writeAddressBook(folder);
    std::vector<std::string> opened;
    personal::MessageSendCapability messages(
        core::AppLanguage::en, std::make_shared<VCardFolder>(folder, recorded.diagnostics),
        std::make_shared<DesktopMessenger>(SessionBus::connect(),
                                           [&](const std::string& uri) {
                                               opened.push_back(uri);
                                               return true;
                                           }),
        recorded.diagnostics);

    const auto names = [&](const char* query, Channel channel) {
        std::string joined;
        for (const auto& match : messages.resolveRecipient(query, channel))
            joined += match.name + "=" + match.handle + ";";
        return joined;
    };
    EXPECT_EQ(names("철수", Channel::sms), "철수=+82-10-3333-4444;김철수=010-1111-2222;");
    EXPECT_EQ(names("jay", Channel::sms), "Jamie Lee=+1 555 0100;");
    EXPECT_EQ(names("Jamie", Channel::mail), "Jamie Lee=jamie@example.org;");
    EXPECT_EQ(names("sam", Channel::sms), "Sam Park=sam@example.com;");
    EXPECT_EQ(names("handle", Channel::sms), "");
    EXPECT_EQ(names("김철수", Channel::mail), "");

    const std::string body = "I'm running \"late\" & sorry";
    messages.execute(core::MessageDraft{"010-1111-2222", "김철수", Channel::sms, body});
    EXPECT_EQ(
        kdeConnect.sent(),
        std::vector<std::string>{"/modules/kdeconnect/devices/phone1/sms|010-1111-2222|" + body});
    messages.execute(
        core::MessageDraft{"sam@example.com", "Sam Park", Channel::mail, "the report is ready?"});
    EXPECT_EQ(opened,
              std::vector<std::string>{"mailto:sam@example.com?body=the%20report%20is%20ready%3F"});

    kdeConnect.setReachable(false);
    EXPECT_EQ(messageOf([&] {
                  messages.execute(core::MessageDraft{"010", std::nullopt, Channel::sms, body});
              }),
              strings.messageNoPhoneDeviceMessage);
    for (const char* secret : {"running", "010-", "sam@", "report", "철수"})
        EXPECT_EQ(recorded.sink->text().find(secret), std::string::npos) << secret;
}

TEST(Music, DrivesARealMprisPlayerAndReadsItsState) {
    test::TemporaryHome home;
    test::PrivateBus bus;
    ASSERT_FALSE(bus.address.empty());
    const auto first = home.path() / "first.wav", second = home.path() / "second.wav";
    test::writeTone(first, 600);
    test::writeTone(second, 600);
    auto mpv = test::startMprisPlayer({first, second});
    auto player = std::make_shared<MprisPlayer>(SessionBus::connect());
    const auto waitFor =
        [&](const std::function<bool(const std::optional<core::NowPlaying>&)>& ok) {
            for (int i = 0; i < 100; ++i) {
                if (ok(player->nowPlaying())) return true;
                std::this_thread::sleep_for(100ms);
            }
            return false;
        };
    ASSERT_TRUE(waitFor([](const auto& now) { return now && now->isPlaying; }));

    test::RecordedDiagnostics recorded;
    personal::MusicPlayCapability music(
        core::AppLanguage::en, player, [](std::chrono::milliseconds) {}, recorded.diagnostics);
    using Action = core::MusicCommand::Action;
    music.execute(core::MusicCommand{std::nullopt, Action::pause});
    EXPECT_TRUE(waitFor([](const auto& now) { return now && !now->isPlaying; }));
    const auto resumed = music.execute(core::MusicCommand{std::nullopt, Action::play});
    ASSERT_TRUE(resumed.get<core::CapabilityResult::NowPlaying>());
    EXPECT_TRUE(resumed.get<core::CapabilityResult::NowPlaying>()->nowPlaying.isPlaying);
    EXPECT_NE(resumed.get<core::CapabilityResult::NowPlaying>()->nowPlaying.track.find("first"),
              std::string::npos);
    music.execute(core::MusicCommand{std::nullopt, Action::next});
    EXPECT_TRUE(waitFor(
        [](const auto& now) { return now && now->track.find("second") != std::string::npos; }));
    EXPECT_EQ(messageOf([&] {
                  music.execute(core::MusicCommand{"jazz", Action::play});
              }),
              strings.musicCannotSearchMessage);

    mpv.reset();
    EXPECT_TRUE(waitFor([](const auto& now) { return !now; }));
    EXPECT_EQ(messageOf([&] {
                  music.execute(core::MusicCommand{std::nullopt, Action::pause});
              }),
              strings.musicNoPlayerMessage);
}

// A legacy Latin-1 card must not put invalid UTF-8 into a card's JSON.
TEST(VCards, BytesThatAreNoUtf8BecomeReplacementCharacters) {
    const auto cards = parseVCards(
        "BEGIN:VCARD\nFN:M\xFCller\nTEL:+49 \xFF"
        "1\nEND:VCARD\n");
    ASSERT_EQ(cards.size(), 1u);
    EXPECT_EQ(cards[0].formattedName, "M\uFFFDller");
    EXPECT_EQ(cards[0].phoneNumbers, std::vector<std::string>{"+49 \uFFFD1"});
}

}  // namespace
}  // namespace nuvrel::platform
