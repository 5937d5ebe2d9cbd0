#include "panel/desktop_color_scheme.h"

#include <QApplication>
#include <QDBusMessage>
#include <QPalette>

namespace nuvrel::panel {

namespace {

constexpr const char* portalService = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* settingsInterface = "org.freedesktop.portal.Settings";
constexpr const char* appearance = "org.freedesktop.appearance";
constexpr const char* colorScheme = "color-scheme";
constexpr int portalTimeoutMs = 250;

// Read wraps the value once more than ReadOne does; either way the innermost variant counts.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>() && value.userType() == qMetaTypeId<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

std::optional<QVariant> readSetting(QDBusConnection& bus, const char* method) {
    auto call =
        QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface, method);
    call << QString(appearance) << QString(colorScheme);
    const QDBusMessage reply = bus.call(call, QDBus::Block, portalTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    return unwrapped(reply.arguments().first());
}

}  // namespace

std::optional<bool> darkFromColorScheme(const QVariant& value) {
    bool ok = false;
    const uint scheme = unwrapped(value).toUInt(&ok);
    if (!ok || (scheme != 1 && scheme != 2)) return std::nullopt;
    return scheme == 1;
}

DesktopColorScheme::DesktopColorScheme(QDBusConnection bus) : bus_(std::move(bus)) {
    if (!bus_.isConnected()) return;
    // ReadOne came with version 2 of the interface; older portals have only Read.
    auto value = readSetting(bus_, "ReadOne");
    if (!value) value = readSetting(bus_, "Read");
    if (value) portal_ = darkFromColorScheme(*value);
    bus_.connect(portalService, portalPath, settingsInterface, "SettingChanged", this,
                 SLOT(settingChanged(QString, QString, QDBusVariant)));
}

bool DesktopColorScheme::prefersDark() const {
    if (portal_) return *portal_;
    return QApplication::palette().color(QPalette::Window).lightness() < 128;
}

void DesktopColorScheme::settingChanged(const QString& nameSpace, const QString& key,
                                        const QDBusVariant& value) {
    if (nameSpace != appearance || key != colorScheme) return;
    portal_ = darkFromColorScheme(value.variant());
    if (onChanged) onChanged();
}

}  // namespace nuvrel::panel
