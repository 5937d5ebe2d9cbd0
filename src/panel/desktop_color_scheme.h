#pragma once
// Dark or light as the desktop prefers it: the "color-scheme" of the namespace
// "org.freedesktop.appearance" read through the settings portal (1 dark, 2 light, 0 none),
// followed through its SettingChanged signal; where no portal answers, or it states no
// preference, Qt's palette decides.
//
// Threading: the GUI thread. The first read waits at most a quarter of a second for the
// portal.

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <functional>
#include <optional>

namespace nuvrel::panel {

class DesktopColorScheme : public QObject {
    Q_OBJECT

public:
    explicit DesktopColorScheme(QDBusConnection bus = QDBusConnection::sessionBus());

    // The portal's preference: true for dark; nothing when it gives none.
    std::optional<bool> portalPrefersDark() const { return portal_; }
    // The portal's preference, else the palette's (a dark window colour).
    bool prefersDark() const;

    // Called after the desktop's preference changed.
    std::function<void()> onChanged;

private Q_SLOTS:
    void settingChanged(const QString& nameSpace, const QString& key, const QDBusVariant& value);

private:
    QDBusConnection bus_;
    std::optional<bool> portal_;
};

// A color-scheme value as a preference: 1 dark, 2 light, anything else none.
std::optional<bool> darkFromColorScheme(const QVariant& value);

}  // namespace nuvrel::panel
