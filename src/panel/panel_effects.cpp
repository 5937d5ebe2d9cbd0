#include "panel/panel_effects.h"

#include <QClipboard>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QFileInfo>
#include <QGuiApplication>
#include <QUrl>

namespace nuvrel::panel {

namespace {

void showInFileManager(const std::string& path) {
    const QUrl file = QUrl::fromLocalFile(QString::fromStdString(path));
    auto call = QDBusMessage::createMethodCall("org.freedesktop.FileManager1",
                                               "/org/freedesktop/FileManager1",
                                               "org.freedesktop.FileManager1", "ShowItems");
    call << QStringList{file.toString()} << QString();
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, 2000);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        QDesktopServices::openUrl(
            QUrl::fromLocalFile(QFileInfo(QString::fromStdString(path)).absolutePath()));
    }
}

}  // namespace

PanelEffects PanelEffects::live() {
    return PanelEffects{
        .openFile =
            [](const std::string& path) {
                QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(path)));
            },
        .revealFile = showInFileManager,
        .openURL =
            [](const std::string& address) {
                QDesktopServices::openUrl(QUrl(QString::fromStdString(address)));
            },
        .copyText =
            [](const std::string& text) {
                QGuiApplication::clipboard()->setText(QString::fromStdString(text));
            },
    };
}

}  // namespace nuvrel::panel
