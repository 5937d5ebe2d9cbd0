// The resident program on a private bus and a real X server: its tray item under a stand-in
// StatusNotifierWatcher, driven through the item's own dbusmenu; its shortcut through a
// stand-in global-shortcuts portal that binds it or refuses.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QTest>
#include <QTimer>
#include <csignal>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "core/localized_strings.h"
#include "support/helper_process.h"
#include "support/offscreen_application.h"
#include "support/private_bus.h"
#include "support/temporary_home.h"

using namespace std::chrono_literals;

namespace nuvrel::panel {
namespace {

using Reply = std::optional<QVariantList>;

// One object of a desktop service: its properties, and a function for its methods.
class StandIn : public QDBusVirtualObject {
public:
    QString xml;
    QVariantMap properties;
    std::function<Reply(const QDBusMessage&)> answer;

    QString introspect(const QString&) const override { return xml; }
    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override {
        Reply reply = answer ? answer(call) : std::nullopt;
        if (call.interface() == "org.freedesktop.DBus.Properties" && call.member() == "Get")
            reply = {QVariant::fromValue(
                QDBusVariant(properties.value(call.arguments().value(1).toString())))};
        if (call.interface() == "org.freedesktop.DBus.Properties" && call.member() == "GetAll")
            reply = {properties};
        if (reply) bus.send(call.createReply(*reply));
        return reply.has_value();
    }
};

// The session the program runs in, and the test's own connection to its bus.
struct Desktop {
    QApplication& application = test::offscreenApplication();
    test::TemporaryHome home;
    test::PrivateBus bus;
    // Xvfb alone: a window manager would take Alt+Space for its own menu.
    test::HelperProcess xvfb{
        {"/usr/bin/Xvfb", "-displayfd", "1", "-screen", "0", "1280x800x24", "-nolisten", "tcp"}};
    const std::string display = ":" + xvfb.readLine(10s).value_or("");
    test::EnvironmentOverride environment{"QT_QPA_PLATFORM", "xcb"};
    QDBusConnection connection =
        QDBusConnection::connectToBus(QString::fromStdString(bus.address), "desktop");
    Desktop() {
        environment.set("XDG_RUNTIME_DIR", home.path().c_str());
        environment.set("DISPLAY", display.c_str());
    }
    ~Desktop() { QDBusConnection::disconnectFromBus("desktop"); }

    QVariant property(const QString& service, const QString& path, const QString& interface,
                      const QString& name) {
        auto get =
            QDBusMessage::createMethodCall(service, path, "org.freedesktop.DBus.Properties", "Get");
        get << interface << name;
        return qvariant_cast<QDBusVariant>(connection.call(get).arguments().value(0)).variant();
    }
    bool panelVisible() {
        return property("com.nuvrel.Panel", "/com/nuvrel/Panel", "com.nuvrel.Panel", "Visible")
            .toBool();
    }
};

bool alive(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    return std::getline(stat, line) && line.substr(line.rfind(')') + 2, 1) != "Z";
}

TEST(DesktopShellTest, TheTrayItemOpensSettingsAndQuitsWhereADesktopHostsIt) {
    const auto& strings = core::LocalizedStrings::strings(core::AppLanguage::ko);
    for (const bool hosted : {true, false}) {
        Desktop desktop;
        ASSERT_NE(desktop.display, ":");
        StandIn watcher;
        watcher.xml =
            "<interface name='org.kde.StatusNotifierWatcher'>"
            "<method name='RegisterStatusNotifierItem'><arg type='s' direction='in'/></method>"
            "<method name='RegisterStatusNotifierHost'><arg type='s' direction='in'/></method>"
            "<property name='RegisteredStatusNotifierItems' type='as' access='read'/>"
            "<property name='IsStatusNotifierHostRegistered' type='b' access='read'/>"
            "<property name='ProtocolVersion' type='i' access='read'/>"
            "<signal name='StatusNotifierItemRegistered'><arg type='s'/></signal></interface>";
        watcher.properties = {{"IsStatusNotifierHostRegistered", true}, {"ProtocolVersion", 0}};
        QStringList items;
        watcher.answer = [&](const QDBusMessage& call) -> Reply {
            if (call.member() != "RegisterStatusNotifierItem") return std::nullopt;
            items << call.arguments().value(0).toString();
            watcher.properties["RegisteredStatusNotifierItems"] = items;
            auto registered = QDBusMessage::createSignal("/StatusNotifierWatcher",
                                                         "org.kde.StatusNotifierWatcher",
                                                         "StatusNotifierItemRegistered");
            desktop.connection.send(registered << items.last());
            return QVariantList{};
        };
        if (hosted) {
            ASSERT_TRUE(desktop.connection.registerService("org.kde.StatusNotifierWatcher"));
            desktop.connection.registerVirtualObject("/StatusNotifierWatcher", &watcher);
        }
        desktop.environment.set("NUVREL_DEBUG_LANG", "ko");
        test::HelperProcess panel{{NUVREL_PANEL_PATH, "--background"}};
        const auto onBus = [&](const char* name) {
            return desktop.connection.interface()
                ->registeredServiceNames()
                .value()
                .join(' ')
                .contains(name);
        };
        ASSERT_TRUE(QTest::qWaitFor([&] { return onBus("com.nuvrel.Panel"); }, 20000));
        if (!hosted) {  // the program runs all the same, and registers no item
            QTest::qWait(1000);
            EXPECT_FALSE(onBus("StatusNotifierItem"));
            ::kill(panel.pid(), SIGTERM);
            EXPECT_EQ(panel.waitForExit(20s), std::optional(0));
            continue;
        }
        ASSERT_TRUE(QTest::qWaitFor([&] { return !items.isEmpty(); }, 20000));
        const QString item = items.value(0);
        const auto itemProperty = [&](const char* name) {
            return desktop.property(item, "/StatusNotifierItem", "org.kde.StatusNotifierItem",
                                    name);
        };
        const auto icon = qvariant_cast<QDBusArgument>(itemProperty("IconPixmap"));
        icon.beginArray();
        EXPECT_FALSE(icon.atEnd()) << "the item carries no icon";
        icon.endArray();  // each begin holds a reader that only its end frees
        const QString menuPath = qvariant_cast<QDBusObjectPath>(itemProperty("Menu")).path();

        // The menu's entries, in order, as the desktop reads them.
        auto getLayout =
            QDBusMessage::createMethodCall(item, menuPath, "com.canonical.dbusmenu", "GetLayout");
        getLayout << 0 << -1 << QStringList();
        const auto root =
            qvariant_cast<QDBusArgument>(desktop.connection.call(getLayout).arguments().value(1));
        std::map<QString, int> idOf;
        QStringList labels;
        int id = 0;
        QVariantMap entry;
        root.beginStructure();
        root >> id >> entry;
        root.beginArray();
        while (!root.atEnd()) {
            QDBusVariant child;
            root >> child;
            const auto node = qvariant_cast<QDBusArgument>(child.variant());
            node.beginStructure();
            node >> id >> entry;
            node.endStructure();
            if (entry.value("type").toString() == "separator") continue;
            labels << entry.value("label").toString();
            idOf[labels.last()] = id;
        }
        root.endArray();
        root.endStructure();
        EXPECT_EQ(labels, QStringList({QString::fromStdString(strings.placeholder),
                                       QString::fromStdString(strings.settingsLabel),
                                       QString::fromStdString(strings.quitMenuItemLabel)}));
        const auto click = [&](const std::string& label) {
            auto event =
                QDBusMessage::createMethodCall(item, menuPath, "com.canonical.dbusmenu", "Event");
            event << idOf[QString::fromStdString(label)] << QString("clicked")
                  << QVariant::fromValue(QDBusVariant(0)) << 0u;
            desktop.connection.call(event);
        };

        click(strings.placeholder);
        EXPECT_TRUE(QTest::qWaitFor([&] { return desktop.panelVisible(); }, 10000));
        click(strings.settingsLabel);
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                return test::runToEnd({"/usr/bin/xdotool", "search", "--onlyvisible", "--name",
                                       strings.settingsTitle},
                                      5s)
                           .exitCode == 0;
            },
            10000));

        // Quit stops the children (the clipboard watcher) as every other quit does.
        std::ifstream childList("/proc/" + std::to_string(panel.pid()) + "/task/" +
                                std::to_string(panel.pid()) + "/children");
        std::vector<pid_t> children;
        for (pid_t child; childList >> child;) children.push_back(child);
        EXPECT_FALSE(children.empty());
        click(strings.quitMenuItemLabel);
        const auto status = panel.waitForExit(20s);
        ASSERT_TRUE(status && WIFEXITED(*status));
        EXPECT_EQ(WEXITSTATUS(*status), 0);
        for (const pid_t child : children)
            EXPECT_TRUE(QTest::qWaitFor([&] { return !alive(child); }, 5000)) << child;
    }
}

TEST(DesktopShellTest, TheShortcutGoesThroughThePortalOrToTheX11GrabWhenItRefusesOrIsAbsent) {
    enum class Portal { binds, refuses, absent };
    for (const Portal answer : {Portal::binds, Portal::refuses, Portal::absent}) {
        const bool refuses = answer == Portal::refuses;
        Desktop desktop;
        ASSERT_NE(desktop.display, ":");
        StandIn portal;
        portal.properties = {{"version", 1u}};
        QString client, session, trigger, boundId, boundSession;
        portal.answer = [&](const QDBusMessage& call) -> Reply {
            if (call.interface() != "org.freedesktop.portal.GlobalShortcuts") return std::nullopt;
            client = call.service();
            const auto options = qdbus_cast<QVariantMap>(call.arguments().last());
            const QString sender = QString(client).mid(1).replace('.', '_');
            const QString request = "/org/freedesktop/portal/desktop/request/" + sender + "/" +
                                    options.value("handle_token").toString();
            QVariantMap results;
            if (call.member() == "CreateSession") {
                session = "/org/freedesktop/portal/desktop/session/" + sender + "/" +
                          options.value("session_handle_token").toString();
                results["session_handle"] = session;
            } else if (call.member() == "BindShortcuts") {
                boundSession = qvariant_cast<QDBusObjectPath>(call.arguments().value(0)).path();
                const auto shortcuts = qvariant_cast<QDBusArgument>(call.arguments().value(1));
                QVariantMap shortcut;
                shortcuts.beginArray();
                shortcuts.beginStructure();
                shortcuts >> boundId >> shortcut;
                shortcuts.endStructure();
                shortcuts.endArray();
                trigger = shortcut.value("preferred_trigger").toString();
            }
            // The answer follows the reply, on the request's own object.
            QTimer::singleShot(0, [&desktop, client = client, request, results, refuses] {
                auto response = QDBusMessage::createTargetedSignal(
                    client, request, "org.freedesktop.portal.Request", "Response");
                desktop.connection.send(response << uint(refuses ? 1 : 0) << results);
            });
            return QVariantList{QVariant::fromValue(QDBusObjectPath(request))};
        };
        if (answer != Portal::absent) {
            ASSERT_TRUE(desktop.connection.registerService("org.freedesktop.portal.Desktop"));
            desktop.connection.registerVirtualObject("/org/freedesktop/portal/desktop", &portal);
        }

        test::HelperProcess panel{{NUVREL_PANEL_PATH, "--background"}};
        if (answer != Portal::absent) {
            ASSERT_TRUE(QTest::qWaitFor([&] { return !session.isEmpty(); }, 20000));
        }
        if (answer != Portal::binds) {
            // No shortcut from the portal leaves the X11 grab: the key itself shows the panel,
            // pressed until the grab is in place, and hides it.
            const auto press = [] { test::runToEnd({"/usr/bin/xdotool", "key", "alt+space"}, 5s); };
            EXPECT_TRUE(QTest::qWaitFor(
                [&] {
                    press();
                    return QTest::qWaitFor([&] { return desktop.panelVisible(); }, 1000);
                },
                15000));
            press();
            EXPECT_TRUE(QTest::qWaitFor([&] { return !desktop.panelVisible(); }, 10000));
            EXPECT_TRUE(boundId.isEmpty());
        } else {
            ASSERT_TRUE(QTest::qWaitFor([&] { return !boundId.isEmpty(); }, 10000));
            EXPECT_EQ(boundSession, session);
            EXPECT_EQ(boundId, "toggle");
            EXPECT_EQ(trigger, "ALT+space");  // the settings' default, Alt+Space
            auto activated =
                QDBusMessage::createSignal("/org/freedesktop/portal/desktop",
                                           "org.freedesktop.portal.GlobalShortcuts", "Activated");
            desktop.connection.send(activated << QVariant::fromValue(QDBusObjectPath(session))
                                              << boundId << qulonglong(0) << QVariantMap());
            EXPECT_TRUE(QTest::qWaitFor([&] { return desktop.panelVisible(); }, 10000));
        }
        ::kill(panel.pid(), SIGTERM);
        EXPECT_TRUE(panel.waitForExit(20s).has_value());
    }
}

}  // namespace
}  // namespace nuvrel::panel
