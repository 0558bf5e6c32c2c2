// Looks at a Vexet started from its package on the virtual desktop, from outside as its user
// would: its tray icon shows, and a screen capture, taken by the helper installed beside it, opens
// the editor.
//
//   vexet-installed-check PID PROGRAM
//
// PID: the running Vexet; PROGRAM: the installed vexet, run once more with the capture command.
// Exit status 0 when both showed, 1 when one did not, 2 for a wrong command line.
#include "DesktopProbe.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>
#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    bool isNumber = false;
    const qint64 pid = arguments.value(1).toLongLong(&isNumber);
    if (arguments.size() != 3 || !isNumber) {
        std::fputs("usage: vexet-installed-check PID PROGRAM\n", stderr);
        return 2;
    }
    DesktopProbe probe;
    if (!probe.isReady()) {
        std::fputs("vexet-installed-check: needs the virtual desktop (X server with XTest)\n", stderr);
        return 1;
    }
    if (!QTest::qWaitFor([&] { return probe.trayIcon(pid).has_value(); }, 30000)) {
        std::fputs("FAILED: no tray icon of the installed Vexet\n", stdout);
        return 1;
    }
    std::fputs("ok: the installed Vexet shows its tray icon\n", stdout);

    QProcess capture;
    capture.start(arguments.at(2), { u"--capture"_s, u"screen"_s });
    if (!capture.waitForFinished(30000) || capture.exitStatus() != QProcess::NormalExit
        || capture.exitCode() != 0) {
        std::fputs("FAILED: the installed Vexet did not take the capture command\n", stdout);
        return 1;
    }
    if (!probe.waitForWindowsTitled(pid, u"Vexet — Önizleme ve kırpma"_s, 1)) {
        std::fputs("FAILED: no editor after a screen capture by the installed helper\n", stdout);
        return 1;
    }
    std::fputs("ok: a screen capture by the installed helper opens the editor\n", stdout);
    return 0;
}
