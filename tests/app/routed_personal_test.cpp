// The program routed by a scripted model server, against the components a Linux user already
// runs, on a private session bus: a real MPRIS player, the vCard folder and KDE Connect.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <thread>

#include "app/terminal_session.h"
#include "base/files.h"
#include "base/paths.h"
#include "llm/model_resolution.h"
#include "platform/linux/clipboard_watcher.h"
#include "platform/linux/mpris_player.h"
#include "support/environment_override.h"
#include "support/personal_components.h"
#include "support/private_bus.h"
#include "support/scripted_model_server.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

using namespace std::chrono_literals;

// `nuvrel ask` routed by `server`; its standard error is appended to `errors`.
test::Finished ask(const test::ScriptedModelServer& server, const std::filesystem::path& errors,
                   std::vector<std::string> words) {
    words.insert(words.begin(), {"/bin/sh", "-c", "exec \"$@\" 2>>\"$0\"", errors.string(),
                                 NUVREL_PATH, "ask", "--lang", "en"});
    const test::EnvironmentOverride port("NUVREL_DEBUG_ROUTER_PORT",
                                         std::to_string(server.port()).c_str());
    return test::runToEnd(std::move(words), 60s);
}

std::string routedTo(const char* intent, const char* slots) {
    return std::string(R"({"intent":")") + intent + R"(","slots":)" + slots +
           R"(,"confidence":0.9})";
}

TEST(RoutedPersonal, PauseAndWhatsPlayingDriveTheRunningPlayer) {
    test::TemporaryHome home;
    test::PrivateBus bus;
    ASSERT_FALSE(bus.address.empty());
    const auto tone = home.path() / "Evening Tone.wav";
    test::writeTone(tone, 600);
    const auto mpv = test::startMprisPlayer({tone});
    platform::MprisPlayer player(platform::SessionBus::connect());
    const auto playing = [&](bool expected) {
        for (int i = 0; i < 100; ++i, std::this_thread::sleep_for(100ms))
            if (const auto now = player.nowPlaying(); now && now->isPlaying == expected)
                return true;
        return false;
    };
    ASSERT_TRUE(playing(true));

    const test::ScriptedModelServer server(
        {{"what's playing", routedTo("music.play", "{}")},
         {"pause", routedTo("music.play", R"({"action":"pause"})")}},
        std::string(llm::interimModelFileName));
    const auto errors = home.path() / "stderr";
    const auto named = ask(server, errors, {"what's playing"});
    EXPECT_EQ(named.exitCode, exitResult) << named.output;
    EXPECT_NE(named.output.find("Evening Tone"), std::string::npos) << named.output;
    const auto paused = ask(server, errors, {"pause"});
    EXPECT_EQ(paused.exitCode, exitResult) << paused.output;
    EXPECT_TRUE(playing(false)) << paused.output;
    EXPECT_EQ(server.sentences(), (std::vector<std::string>{"what's playing", "pause"}))
        << base::readFile(errors).value_or("");
}

TEST(RoutedPersonal, AMessageIsSentOnlyConfirmedToOneContactAndNoLogHoldsPersonalText) {
    test::TemporaryHome home;
    test::PrivateBus bus;
    ASSERT_FALSE(bus.address.empty());
    test::KdeConnectStandIn kdeConnect(bus.address);
    const auto paths = base::XdgPaths::fromEnvironment();
    test::writeAddressBook(paths.dataHome / "nuvrel" / "contacts");
    platform::liveClipboardHistoryStore(paths.stateHome)->record("copied passphrase 4711", {});
    const test::ScriptedModelServer server(
        {{"text Jamie I'm running late",
          routedTo("message.send",
                   R"({"recipient":"Jamie","body":"I'm running late","channel":"sms"})")},
         {"text 철수 on my way",
          routedTo("message.send", R"({"recipient":"철수","body":"on my way"})")}},
        std::string(llm::interimModelFileName));
    const auto errors = home.path() / "stderr";

    const auto unconfirmed = ask(server, errors, {"text Jamie I'm running late"});
    EXPECT_EQ(unconfirmed.exitCode, exitNotConfirmed) << unconfirmed.output;
    EXPECT_TRUE(kdeConnect.sent().empty());
    const auto sent = ask(server, errors, {"--yes", "text Jamie I'm running late"});
    EXPECT_EQ(sent.exitCode, exitResult) << sent.output;
    EXPECT_EQ(kdeConnect.sent(),
              std::vector<std::string>{"/modules/kdeconnect/devices/phone1/sms|+1 555 0100|"
                                       "I'm running late"});
    // Two contacts answer to the name: with no terminal to choose on, nothing is sent.
    const auto ambiguous = ask(server, errors, {"--yes", "text 철수 on my way"});
    EXPECT_EQ(ambiguous.exitCode, exitNotConfirmed) << ambiguous.output;
    EXPECT_NE(ambiguous.output.find("철수, 김철수"), std::string::npos) << ambiguous.output;
    EXPECT_EQ(kdeConnect.sent().size(), 1u);

    EXPECT_EQ(ask(server, errors, {"take a note: buy oat milk"}).exitCode, exitResult);
    const auto clipboard = ask(server, errors, {"clipboard"});
    EXPECT_NE(clipboard.output.find("copied passphrase 4711"), std::string::npos)
        << clipboard.output;

    const std::string logs = base::readFile(errors).value_or("") +
                             base::readFile(paths.networkActivityFile()).value_or("");
    EXPECT_NE(logs.find("[nuvrel-debug]"), std::string::npos) << "no debug log to check";
    for (const char* personal :
         {"running late", "Jamie", "+1 555", "on my way", "철수", "oat milk", "passphrase"})
        EXPECT_EQ(logs.find(personal), std::string::npos) << personal << " in\n" << logs;
}

}  // namespace
}  // namespace nuvrel::app
