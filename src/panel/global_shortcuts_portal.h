#pragma once
// The global shortcut through the desktop's global-shortcuts portal, where the desktop offers
// one (Wayland desktops, and some X11 ones): a session, the one shortcut "toggle" bound with
// the stored combination as its preferred trigger, and its Activated signal. The desktop has
// the last word on the trigger and may ask the user; where there is no portal the caller
// falls back to the X11 key grab.
//
// Threading: the GUI thread; answers and activations arrive through its event loop.

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QVariantMap>
#include <cstdint>
#include <functional>
#include <optional>

#include "base/diagnostics.h"

namespace nuvrel::panel {

class GlobalShortcutsPortal : public QObject {
    Q_OBJECT

public:
    GlobalShortcutsPortal(QDBusConnection bus, base::Diagnostics diagnostics,
                          std::function<void()> onActivated);

    // The desktop answers for the portal's interface (a quarter of a second at most).
    bool available() const { return available_; }

    // Asks for the shortcut with this preferred trigger; the session is made on the first
    // call. False when the request could not even be sent (no portal, a key without trigger).
    bool bind(std::uint32_t keyCode, std::uint32_t modifiers);

    // Called when the desktop refuses the session or the shortcut (the user declined, say),
    // so that the caller can fall back to another way.
    std::function<void()> onRefused;

private Q_SLOTS:
    void sessionCreated(uint response, const QVariantMap& results);
    void shortcutsBound(uint response, const QVariantMap& results);
    void activated(const QDBusMessage& signal);

private:
    // The path the portal will answer a request with this token on.
    QString requestPath(const QString& token) const;
    bool sendBind();

    QDBusConnection bus_;
    base::Diagnostics diagnostics_;
    std::function<void()> onActivated_;
    bool available_ = false;
    bool sessionRequested_ = false;
    QString session_;
    QString trigger_;
    unsigned requests_ = 0;
};

}  // namespace nuvrel::panel
