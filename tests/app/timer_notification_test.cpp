// Timers of the real program on a private session bus, with a notification service of the
// test's own that records what it is asked to show.
#include <gio/gio.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <thread>

#include "base/files.h"
#include "base/paths.h"
#include "support/helper_process.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

// Owns org.freedesktop.Notifications on the bus at `address` and records each Notify.
class NotificationServer {
public:
    explicit NotificationServer(const std::string& address) {
        thread_ = std::thread([this, address] { serve(address); });
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, 10s, [&] { return ready_; });
    }
    ~NotificationServer() {
        if (loop_) g_main_loop_quit(loop_);
        thread_.join();
    }
    bool ready() {
        std::lock_guard lock(mutex_);
        return owned_;
    }
    // The (summary, body) pairs received, once `count` have arrived or the time is up.
    std::vector<std::pair<std::string, std::string>> await(std::size_t count,
                                                           std::chrono::seconds limit) {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, limit, [&] { return shown_.size() >= count; });
        return shown_;
    }

private:
    void serve(const std::string& address) {
        GMainContext* context = g_main_context_new();
        g_main_context_push_thread_default(context);
        loop_ = g_main_loop_new(context, false);
        GDBusConnection* connection = g_dbus_connection_new_for_address_sync(
            address.c_str(),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, nullptr);
        static const char* xml =
            "<node><interface name='org.freedesktop.Notifications'><method name='Notify'>"
            "<arg type='s' direction='in'/><arg type='u' direction='in'/>"
            "<arg type='s' direction='in'/><arg type='s' direction='in'/>"
            "<arg type='s' direction='in'/><arg type='as' direction='in'/>"
            "<arg type='a{sv}' direction='in'/><arg type='i' direction='in'/>"
            "<arg type='u' direction='out'/></method></interface></node>";
        GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(xml, nullptr);
        static const GDBusInterfaceVTable vtable = {
            [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
               GVariant* parameters, GDBusMethodInvocation* invocation, gpointer self) {
                const gchar *summary = nullptr, *body = nullptr;
                g_variant_get(parameters, "(&su&s&s&sas@a{sv}i)", nullptr, nullptr, nullptr,
                              &summary, &body, nullptr, nullptr, nullptr);
                auto* server = static_cast<NotificationServer*>(self);
                {
                    std::lock_guard lock(server->mutex_);
                    server->shown_.emplace_back(summary, body);
                }
                server->changed_.notify_all();
                g_dbus_method_invocation_return_value(invocation, g_variant_new("(u)", 1u));
            },
            nullptr,
            nullptr,
            {}};
        if (connection) {
            g_dbus_connection_register_object(connection, "/org/freedesktop/Notifications",
                                              node->interfaces[0], &vtable, this, nullptr, nullptr);
            GVariant* reply = g_dbus_connection_call_sync(
                connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                "RequestName", g_variant_new("(su)", "org.freedesktop.Notifications", 4u), nullptr,
                G_DBUS_CALL_FLAGS_NONE, 5000, nullptr, nullptr);
            if (reply) g_variant_unref(reply);
            std::lock_guard lock(mutex_);
            owned_ = reply != nullptr;
        }
        {
            std::lock_guard lock(mutex_);
            ready_ = true;
        }
        changed_.notify_all();
        g_main_loop_run(loop_);
        if (connection) g_object_unref(connection);
        g_dbus_node_info_unref(node);
        g_main_context_pop_thread_default(context);
        g_main_loop_unref(loop_);
        g_main_context_unref(context);
    }

    std::thread thread_;
    GMainLoop* loop_ = nullptr;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool ready_ = false;
    bool owned_ = false;
    std::vector<std::pair<std::string, std::string>> shown_;
};

class TimerNotificationTest : public testing::Test {
protected:
    test::TemporaryHome home;
    test::HelperProcess bus{{"/usr/bin/dbus-daemon", "--session", "--nofork", "--print-address"}};
    std::string address = bus.readLine(10s).value_or("");
    fs::path timers = base::XdgPaths::fromEnvironment().stateHome / "nuvrel" / "timers";

    void SetUp() override {
        ASSERT_FALSE(address.empty());
        ::setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    }
    void TearDown() override {
        ask({"cancel timer"});
        ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
    }

    // Runs `nuvrel ask` to its end: the exit status and the first line it printed.
    std::pair<int, std::string> ask(std::vector<std::string> words) {
        std::vector<std::string> argv = {NUVREL_PATH, "ask", "--lang", "en", "--no-network"};
        argv.insert(argv.end(), words.begin(), words.end());
        test::HelperProcess nuvrel(argv);
        const std::string line = nuvrel.readLine(30s).value_or("");
        const auto status = nuvrel.waitForExit(30s);
        return {status && WIFEXITED(*status) ? WEXITSTATUS(*status) : -1, line};
    }

    std::vector<pid_t> pendingHelpers() {
        std::vector<pid_t> helpers;
        std::error_code error;
        for (fs::directory_iterator it(timers, error), end; !error && it != end; ++it) {
            const pid_t pid = std::stoi(base::readFile(it->path()).value_or("0"));
            // A helper that ended may linger as a zombie of a PID 1 that does not reap.
            if (!base::readFile("/proc/" + std::to_string(pid) + "/cmdline").value_or("").empty())
                helpers.push_back(pid);
        }
        return helpers;
    }
};

TEST_F(TimerNotificationTest, ATimerFiresAfterTheProgramThatSetItHasEnded) {
    NotificationServer server(address);
    ASSERT_TRUE(server.ready());
    const auto [status, line] = ask({"timer for 2 seconds"});
    EXPECT_EQ(status, 0) << line;
    EXPECT_TRUE(server.await(1, 0s).empty()) << "fired before the program ended";
    EXPECT_EQ(pendingHelpers().size(), 1u);
    const auto shown = server.await(1, 10s);
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].first, "Timer finished");
    EXPECT_EQ(shown[0].second, "Your 2 seconds timer is up");
    std::this_thread::sleep_for(200ms);
    EXPECT_TRUE(pendingHelpers().empty());
}

TEST_F(TimerNotificationTest, CancelRemovesEveryPendingTimer) {
    NotificationServer server(address);
    ASSERT_EQ(ask({"5분 타이머"}).first, 0);
    ASSERT_EQ(ask({"set a 10 minute timer"}).first, 0);
    const auto helpers = pendingHelpers();
    ASSERT_EQ(helpers.size(), 2u);
    EXPECT_EQ(ask({"타이머 취소"}).first, 0);
    std::this_thread::sleep_for(200ms);
    EXPECT_TRUE(pendingHelpers().empty());
    for (pid_t pid : helpers)
        EXPECT_TRUE(
            base::readFile("/proc/" + std::to_string(pid) + "/cmdline").value_or("").empty());
    EXPECT_TRUE(server.await(1, 0s).empty());
}

TEST_F(TimerNotificationTest, WithoutANotificationServiceOrABusTheTimerIsAnErrorCard) {
    const auto withoutService = ask({"5 min timer"});
    EXPECT_EQ(withoutService, std::pair(1, std::string("Can't show notifications here")));
    ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
    EXPECT_EQ(ask({"5 min timer"}), withoutService);
    EXPECT_TRUE(pendingHelpers().empty());
}

}  // namespace
}  // namespace nuvrel::app
