#include <gio/gio.h>
#include <gtest/gtest.h>

#include <fstream>
#include <thread>

#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "personal/message_send_capability.h"
#include "personal/music_play_capability.h"
#include "platform/linux/desktop_messenger.h"
#include "platform/linux/mpris_player.h"
#include "platform/linux/vcard_folder.h"
#include "support/bus_stand_in.h"
#include "support/helper_process.h"
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

// As khard writes them (3.0, folded at 75 octets) and as Evolution does (4.0, CRLF, grouped
// properties, typed numbers).
void writeAddressBook(const fs::path& folder) {
    fs::create_directories(folder);
    std::ofstream(folder / "a.vcf")
        << "BEGIN:VCARD\nVERSION:3.0\nFN:김철수\nN:김;철수;;;\n"
           "TEL;TYPE=cell:010-1111-\n 2222\nTEL:02-555-0000\nEND:VCARD\n";
    std::ofstream(folder / "b.vcf") << "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:철수\r\n"
                                       "TEL;VALUE=uri;TYPE=\"voice,cell\":tel:+82-10-3333-4444\r\n"
                                       "END:VCARD\r\n";
    std::ofstream(folder / "c.vcf")
        << "BEGIN:VCARD\r\nVERSION:4.0\r\nN:Lee;Jamie;;;\r\n"
           "NICKNAME:Jay,JJ\r\nitem1.EMAIL;TYPE=work:jamie@example.org\r\n"
           "TEL:+1 555 0100\r\nEND:VCARD\r\n"
           "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:Sam Park\r\n"
           "EMAIL:sam@example.com\r\nEND:VCARD\r\n";
    std::ofstream(folder / "d.vcf") << "BEGIN:VCARD\nVERSION:3.0\nFN:No Handle\nEND:VCARD\n";
}

constexpr const char* daemonXML =
    "<node><interface name='org.kde.kdeconnect.daemon'><method name='devices'>"
    "<arg type='b' direction='in'/><arg type='b' direction='in'/>"
    "<arg type='as' direction='out'/></method></interface></node>";
constexpr const char* smsXML =
    "<node><interface name='org.kde.kdeconnect.device.sms'><method name='sendSms'>"
    "<arg type='av' direction='in'/><arg type='s' direction='in'/>"
    "<arg type='av' direction='in'/></method></interface></node>";

TEST(Messages, ResolveAmongVCardsAndSendThroughKdeConnectOrMailto) {
    test::TemporaryHome home;
    test::PrivateBus bus;
    ASSERT_FALSE(bus.address.empty());
    bool reachable = true;
    std::string sent;
    test::BusStandIn kdeConnect(
        bus.address, "org.kde.kdeconnect",
        {{"/modules/kdeconnect", daemonXML}, {"/modules/kdeconnect/devices/phone1/sms", smsXML}},
        [&](const std::string& path, const std::string& method, GVariant* parameters) -> GVariant* {
            if (method == "devices") {
                const char* none[] = {nullptr};
                const char* one[] = {"phone1", nullptr};
                return g_variant_new("(^as)", reachable ? one : none);
            }
            GVariant* addresses = g_variant_get_child_value(parameters, 0);
            GVariant* first = g_variant_get_variant(g_variant_get_child_value(addresses, 0));
            const char* number = nullptr;
            const char* text = nullptr;
            g_variant_get(first, "(&s)", &number);
            g_variant_get_child(parameters, 1, "&s", &text);
            sent = path + "|" + number + "|" + text;
            return nullptr;
        });

    test::RecordedDiagnostics recorded;
    const fs::path folder = home.path() / "contacts";
    writeAddressBook(folder);
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
    EXPECT_EQ(sent, "/modules/kdeconnect/devices/phone1/sms|010-1111-2222|" + body);
    messages.execute(
        core::MessageDraft{"sam@example.com", "Sam Park", Channel::mail, "the report is ready?"});
    EXPECT_EQ(opened,
              std::vector<std::string>{"mailto:sam@example.com?body=the%20report%20is%20ready%3F"});

    reachable = false;
    EXPECT_EQ(messageOf([&] {
                  messages.execute(core::MessageDraft{"010", std::nullopt, Channel::sms, body});
              }),
              strings.messageNoPhoneDeviceMessage);
    for (const char* secret : {"running", "010-", "sam@", "report", "철수"})
        EXPECT_EQ(recorded.sink->text().find(secret), std::string::npos) << secret;
}

// A generated tone, so that the player has something real to play.
void writeTone(const fs::path& path, int seconds) {
    const std::uint32_t rate = 8000, samples = rate * seconds;
    std::ofstream out(path, std::ios::binary);
    const auto put = [&](std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) out.put(static_cast<char>((value >> (8 * i)) & 0xff));
    };
    out << "RIFF";
    put(36 + samples, 4);
    out << "WAVEfmt ";
    put(16, 4), put(1, 2), put(1, 2), put(rate, 4), put(rate, 4), put(1, 2), put(8, 2);
    out << "data";
    put(samples, 4);
    for (std::uint32_t i = 0; i < samples; ++i) out.put(static_cast<char>(i % 32 < 16 ? 96 : 160));
}

TEST(Music, DrivesARealMprisPlayerAndReadsItsState) {
    test::TemporaryHome home;
    test::PrivateBus bus;
    ASSERT_FALSE(bus.address.empty());
    writeTone(home.path() / "first.wav", 600);
    writeTone(home.path() / "second.wav", 600);
    auto mpv = std::make_unique<test::HelperProcess>(std::vector<std::string>{
        "/usr/bin/mpv", "--no-config", "--script=/etc/mpv/scripts/mpris.so", "--ao=null",
        "--vo=null", "--really-quiet", (home.path() / "first.wav").string(),
        (home.path() / "second.wav").string()});
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
