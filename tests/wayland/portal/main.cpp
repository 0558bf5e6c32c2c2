#include "PortalShortcut.h"
#include "ScreenshotBackend.h"
#include "ShortcutsBackend.h"
#include "ShortcutsControl.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <cstdio>

using namespace Qt::StringLiterals;

// A desktop portal backend for tests, serving org.freedesktop.impl.portal.desktop.vexettest on the
// session bus:
//
//   vexet-test-portal RESPONSE
//       answers every screenshot with RESPONSE (1: refused or cancelled by the user, 2: failed);
//   vexet-test-portal shortcuts [--unbound ID]... [--bind-on-create]
//       global shortcuts only, bound to the triggers programs prefer, except the ids given with
//       --unbound, which get no key; with --bind-on-create, CreateSession already binds those of
//       its "shortcuts" option (as Plasma 5.27 does), otherwise only BindShortcuts binds. Tests
//       drive it through org.vexet.test.ShortcutsControl at /ShortcutsControl.

namespace {

const QString desktopPath = u"/org/freedesktop/portal/desktop"_s;
const QString serviceName = u"org.freedesktop.impl.portal.desktop.vexettest"_s;

int usage()
{
    std::fputs("usage: vexet-test-portal RESPONSE\n"
               "       vexet-test-portal shortcuts [--unbound ID]... [--bind-on-create]\n",
        stderr);
    return 2;
}

int cannotServe(const QDBusConnection& bus)
{
    std::fprintf(stderr, "vexet-test-portal: %s\n", qPrintable(bus.lastError().message()));
    return 1;
}

int serveScreenshots(uint response)
{
    QObject desktop;
    new ScreenshotBackend(response, &desktop);
    new AccessBackend(&desktop);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(desktopPath, &desktop, QDBusConnection::ExportAdaptors)
        || !bus.registerService(serviceName))
        return cannotServe(bus);
    return QCoreApplication::exec();
}

int serveShortcuts(const QStringList& unboundIds, bool bindOnCreate)
{
    PortalShortcut::registerTypes();
    QDBusConnection bus = QDBusConnection::sessionBus();
    QObject desktop;
    auto* backend = new ShortcutsBackend(bus, unboundIds, bindOnCreate, &desktop);
    ShortcutsControl control(*backend);
    if (!bus.registerObject(desktopPath, &desktop, QDBusConnection::ExportAdaptors)
        || !bus.registerObject(
            QString::fromLatin1(ShortcutsControl::path), &control, QDBusConnection::ExportAllSlots)
        || !bus.registerService(serviceName))
        return cannotServe(bus);
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.value(0) == u"shortcuts"_s) {
        QStringList unboundIds;
        bool bindOnCreate = false;
        for (qsizetype i = 1; i < arguments.size(); ++i) {
            if (arguments[i] == u"--bind-on-create"_s)
                bindOnCreate = true;
            else if (arguments[i] == u"--unbound"_s && i + 1 < arguments.size())
                unboundIds.append(arguments[++i]);
            else
                return usage();
        }
        return serveShortcuts(unboundIds, bindOnCreate);
    }
    bool isNumber = false;
    const uint response = arguments.size() == 1 ? arguments[0].toUInt(&isNumber) : 0;
    if (!isNumber)
        return usage();
    return serveScreenshots(response);
}
