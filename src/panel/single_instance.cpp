#include "panel/single_instance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

namespace nuvrel::panel {

SingleInstance::Role SingleInstance::claim() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return Role::noBus;
    // The object first, so that a call that arrives the moment the name is ours finds it.
    bus.registerObject(objectPath, this,
                       QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties);
    // Never queued behind the owner: a second process must learn at once that it is second.
    const auto reply =
        bus.interface()->registerService(serviceName, QDBusConnectionInterface::DontQueueService,
                                         QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered)
        return Role::primary;
    bus.unregisterObject(objectPath);
    const auto call =
        QDBusMessage::createMethodCall(serviceName, objectPath, "com.nuvrel.Panel", "Toggle");
    const QDBusMessage answer = bus.call(call, QDBus::Block, 5000);
    return answer.type() == QDBusMessage::ReplyMessage ? Role::forwarded : Role::noBus;
}

void SingleInstance::Toggle() {
    if (onToggle_) onToggle_();
}

}  // namespace nuvrel::panel
