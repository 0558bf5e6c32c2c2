#include "DBusFileReveal.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

using namespace Qt::StringLiterals;

void DBusFileReveal::reveal(const QString& path)
{
    const QString service = u"org.freedesktop.FileManager1"_s;
    QDBusConnection bus = QDBusConnection::sessionBus();
    const bool available = bus.isConnected() && bus.interface()
        && (bus.interface()->isServiceRegistered(service).value()
            || bus.interface()->activatableServiceNames().value().contains(service));
    if (available) {
        QDBusMessage call = QDBusMessage::createMethodCall(
            service, u"/org/freedesktop/FileManager1"_s, service, u"ShowItems"_s);
        call << QStringList { QUrl::fromLocalFile(path).toString() } << QString();
        bus.call(call, QDBus::NoBlock);
        return;
    }
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}
