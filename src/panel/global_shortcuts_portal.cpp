#include "panel/global_shortcuts_portal.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>

#include "panel/hotkey_combination.h"

namespace nuvrel::panel {

namespace {

constexpr const char* portalService = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* shortcutsInterface = "org.freedesktop.portal.GlobalShortcuts";
constexpr const char* requestInterface = "org.freedesktop.portal.Request";
constexpr const char* shortcutId = "toggle";

// One entry of BindShortcuts' a(sa{sv}).
struct Shortcut {
    QString id;
    QVariantMap properties;
};

QDBusArgument& operator<<(QDBusArgument& argument, const Shortcut& shortcut) {
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, Shortcut& shortcut) {
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

}  // namespace

}  // namespace nuvrel::panel

Q_DECLARE_METATYPE(nuvrel::panel::Shortcut)

namespace nuvrel::panel {

GlobalShortcutsPortal::GlobalShortcutsPortal(QDBusConnection bus, base::Diagnostics diagnostics,
                                             std::function<void()> onActivated)
    : bus_(std::move(bus)),
      diagnostics_(std::move(diagnostics)),
      onActivated_(std::move(onActivated)) {
    if (!bus_.isConnected()) return;
    qDBusRegisterMetaType<Shortcut>();
    qDBusRegisterMetaType<QList<Shortcut>>();
    auto get = QDBusMessage::createMethodCall(portalService, portalPath,
                                              "org.freedesktop.DBus.Properties", "Get");
    get << QString(shortcutsInterface) << QString("version");
    available_ = bus_.call(get, QDBus::Block, 250).type() == QDBusMessage::ReplyMessage;
    if (available_)
        bus_.connect(portalService, portalPath, shortcutsInterface, "Activated", this,
                     SLOT(activated(QDBusMessage)));
}

QString GlobalShortcutsPortal::requestPath(const QString& token) const {
    QString sender = bus_.baseService().mid(1);
    sender.replace('.', '_');
    return QString("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token);
}

bool GlobalShortcutsPortal::bind(std::uint32_t keyCode, std::uint32_t modifiers) {
    const auto trigger = portalTrigger(keyCode, modifiers);
    if (!available_ || !trigger) return false;
    trigger_ = QString::fromStdString(*trigger);
    if (!session_.isEmpty()) return sendBind();
    if (sessionRequested_) return true;  // the bind follows when the session is there
    const QString token = QString("nuvrel%1").arg(++requests_);
    // Listening before asking: the answer may come before the call returns.
    bus_.connect(portalService, requestPath(token), requestInterface, "Response", this,
                 SLOT(sessionCreated(uint, QVariantMap)));
    auto call = QDBusMessage::createMethodCall(portalService, portalPath, shortcutsInterface,
                                               "CreateSession");
    call << QVariantMap{{"handle_token", token}, {"session_handle_token", QString("nuvrel")}};
    sessionRequested_ = bus_.send(call);
    return sessionRequested_;
}

void GlobalShortcutsPortal::sessionCreated(uint response, const QVariantMap& results) {
    session_ = results.value("session_handle").toString();
    if (response != 0 || session_.isEmpty()) {
        sessionRequested_ = false;
        diagnostics_.event("the global-shortcuts portal made no session (response " +
                           std::to_string(response) + ")");
        if (onRefused) onRefused();
        return;
    }
    sendBind();
}

bool GlobalShortcutsPortal::sendBind() {
    const QString token = QString("nuvrel%1").arg(++requests_);
    bus_.connect(portalService, requestPath(token), requestInterface, "Response", this,
                 SLOT(shortcutsBound(uint, QVariantMap)));
    // The description is the desktop's label for the shortcut: the product's name.
    const QList<Shortcut> shortcuts{
        {shortcutId, {{"description", QString("Nuvrel")}, {"preferred_trigger", trigger_}}}};
    auto call = QDBusMessage::createMethodCall(portalService, portalPath, shortcutsInterface,
                                               "BindShortcuts");
    call << QVariant::fromValue(QDBusObjectPath(session_)) << QVariant::fromValue(shortcuts)
         << QString() << QVariantMap{{"handle_token", token}};
    return bus_.send(call);
}

void GlobalShortcutsPortal::shortcutsBound(uint response, const QVariantMap&) {
    if (response == 0) return;
    diagnostics_.event("the global-shortcuts portal did not bind the shortcut " +
                       trigger_.toStdString() + " (response " + std::to_string(response) + ")");
    if (onRefused) onRefused();
}

void GlobalShortcutsPortal::activated(const QDBusMessage& signal) {
    // (o session, s shortcut, t timestamp, a{sv}), read by hand: QtDBus did not bind a slot
    // typed so to this signal, and a later portal version may add arguments.
    const QList<QVariant> arguments = signal.arguments();
    if (arguments.size() < 2) return;
    const QString session = qvariant_cast<QDBusObjectPath>(arguments[0]).path();
    if (session == session_ && arguments[1].toString() == shortcutId && onActivated_)
        onActivated_();
}

}  // namespace nuvrel::panel
