#include "ScreenshotBackend.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <cstdio>

using namespace Qt::StringLiterals;

// vexet-test-portal RESPONSE: serves org.freedesktop.impl.portal.desktop.vexettest on the session
// bus, answering every screenshot with RESPONSE (1: refused or cancelled by the user, 2: failed).
int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    bool isNumber = false;
    const uint response = argc == 2 ? QString::fromLocal8Bit(argv[1]).toUInt(&isNumber) : 0;
    if (!isNumber) {
        std::fputs("usage: vexet-test-portal RESPONSE\n", stderr);
        return 2;
    }
    QObject desktop;
    new ScreenshotBackend(response, &desktop);
    new AccessBackend(&desktop);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(u"/org/freedesktop/portal/desktop"_s, &desktop, QDBusConnection::ExportAdaptors)
        || !bus.registerService(u"org.freedesktop.impl.portal.desktop.vexettest"_s)) {
        std::fprintf(stderr, "vexet-test-portal: %s\n", qPrintable(bus.lastError().message()));
        return 1;
    }
    return QCoreApplication::exec();
}
