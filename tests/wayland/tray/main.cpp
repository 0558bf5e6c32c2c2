// The tray of the Wayland test desktop: a StatusNotifier watcher that says a host (a panel) is
// registered, unless started with --no-host; tests switch that with org.vexet.test.TrayControl.
//
//   vexet-tray-watcher [--no-host]

#include "StatusNotifierWatcher.h"
#include "WatcherControl.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QTextStream>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.size() > 1 || (arguments.size() == 1 && arguments.first() != u"--no-host"_s)) {
        QTextStream(stderr) << "usage: vexet-tray-watcher [--no-host]\n";
        return 2;
    }
    StatusNotifierWatcher watcher(arguments.isEmpty());
    WatcherControl control(watcher);
    QDBusConnection bus = QDBusConnection::sessionBus();
    const auto exported = QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals
        | QDBusConnection::ExportAllProperties;
    if (!bus.registerObject(QString::fromLatin1(StatusNotifierWatcher::path), &watcher, exported)
        || !bus.registerObject(
            QString::fromLatin1(WatcherControl::path), &control, QDBusConnection::ExportAllSlots)
        || !bus.registerService(QString::fromLatin1(StatusNotifierWatcher::interface))) {
        QTextStream(stderr) << "cannot own " << StatusNotifierWatcher::interface << ": "
                            << bus.lastError().message() << '\n';
        return 1;
    }
    return QCoreApplication::exec();
}
