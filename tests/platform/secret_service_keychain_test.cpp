// The key store against the real GNOME Keyring on a private session bus, and with no Secret
// Service on the bus at all.
#include "platform/linux/secret_service_keychain.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "support/helper_process.h"
#include "support/private_bus.h"
#include "support/recording_sink.h"
#include "support/temporary_home.h"

namespace nuvrel::platform {
namespace {

using namespace std::chrono_literals;

TEST(SecretServiceKeychain, KeepsOneKeyInTheKeyringAndSaysOnceWhenNoKeyStoreAnswers) {
    test::TemporaryHome home;
    test::PrivateBus bus;
    test::RecordedDiagnostics recorded;
    SecretServiceKeychain keychain(recorded.diagnostics);
    const std::string key(app::firecrawlAPIKeyName);

    // No key store on the bus: nothing, one line, and a change is refused.
    EXPECT_EQ(keychain.secret(key), std::nullopt);
    EXPECT_NE(recorded.sink->take().find("[Nuvrel] key store unavailable"), std::string::npos);
    EXPECT_THROW(keychain.setSecret(key, "fc-123"), app::KeychainError);

    // GNOME Keyring, its login keyring unlocked with a test password.
    test::HelperProcess keyring(
        {"/bin/sh", "-c",
         "printf test-password | exec gnome-keyring-daemon --unlock --components=secrets "
         "--foreground"});
    ASSERT_TRUE(keyring.readLine(10s)) << "gnome-keyring-daemon did not start";
    // It prints before it takes its name on the bus.
    const auto until = std::chrono::steady_clock::now() + 10s;
    while (true) {
        try {
            keychain.setSecret(key, "fc-123");
            break;
        } catch (const app::KeychainError&) {
            ASSERT_LT(std::chrono::steady_clock::now(), until) << "no Secret Service";
            std::this_thread::sleep_for(50ms);
        }
    }
    EXPECT_EQ(keychain.secret(key), "fc-123");
    keychain.setSecret(key, "fc-456");  // the same item, updated: no duplicate
    EXPECT_EQ(keychain.secret(key), "fc-456");
    EXPECT_EQ(keychain.secret("anotherKey"), std::nullopt);
    keychain.setSecret(key, std::nullopt);
    EXPECT_EQ(keychain.secret(key), std::nullopt);
    EXPECT_EQ(recorded.sink->text(), "");
}

}  // namespace
}  // namespace nuvrel::platform
