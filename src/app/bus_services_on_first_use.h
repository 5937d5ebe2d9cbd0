#pragma once
// The session bus, connected on the first sentence that needs it (a timer, a message, music)
// rather than at every start: the connection costs round trips to the bus daemon and a GDBus
// worker thread, which a calculator sentence has no use for.

#include <functional>
#include <memory>
#include <mutex>

#include "personal/contact_store.h"
#include "personal/media_player.h"
#include "personal/notification_center_providing.h"
#include "platform/linux/session_bus.h"

namespace nuvrel::app {

// Made by the first get() from any thread, then shared; `make` may give null.
template <class T>
class MadeOnFirstUse {
public:
    explicit MadeOnFirstUse(std::function<std::shared_ptr<T>()> make) : make_(std::move(make)) {}
    std::shared_ptr<T> get() {
        std::call_once(once_, [this] { made_ = make_(); });
        return made_;
    }

private:
    std::function<std::shared_ptr<T>()> make_;
    std::once_flag once_;
    std::shared_ptr<T> made_;
};

using SessionBusOnFirstUse = MadeOnFirstUse<platform::SessionBus>;

class LazyNotificationCenter final : public personal::NotificationCenterProviding {
public:
    explicit LazyNotificationCenter(
        std::function<std::shared_ptr<personal::NotificationCenterProviding>()> make)
        : made_(std::move(make)) {}
    bool requestAuthorization() override { return made_.get()->requestAuthorization(); }
    bool isAuthorized() override { return made_.get()->isAuthorized(); }
    void scheduleNotification(const std::string& identifier, const std::string& title,
                              const std::string& body, std::chrono::seconds interval) override {
        made_.get()->scheduleNotification(identifier, title, body, interval);
    }
    int cancelPendingNotifications(std::string_view identifierPrefix) override {
        return made_.get()->cancelPendingNotifications(identifierPrefix);
    }

private:
    MadeOnFirstUse<personal::NotificationCenterProviding> made_;
};

class LazyMessageSending final : public personal::MessageSending {
public:
    explicit LazyMessageSending(std::function<std::shared_ptr<personal::MessageSending>()> make)
        : made_(std::move(make)) {}
    void sendText(const std::string& handle, const std::string& body) override {
        made_.get()->sendText(handle, body);
    }
    void composeMail(const std::string& address, const std::string& body) override {
        made_.get()->composeMail(address, body);
    }

private:
    MadeOnFirstUse<personal::MessageSending> made_;
};

class LazyMediaPlayer final : public personal::MediaPlayer {
public:
    explicit LazyMediaPlayer(std::function<std::shared_ptr<personal::MediaPlayer>()> make)
        : made_(std::move(make)) {}
    void command(core::MusicCommand::Action action) override { made_.get()->command(action); }
    void playSearch(const std::string& query) override { made_.get()->playSearch(query); }
    std::optional<core::NowPlaying> nowPlaying() override { return made_.get()->nowPlaying(); }

private:
    MadeOnFirstUse<personal::MediaPlayer> made_;
};

}  // namespace nuvrel::app
