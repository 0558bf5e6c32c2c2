// Time from the menu's "Ekranı yakala" to the editor window on screen, on the virtual desktop
// (it includes the 0.3 s the program waits for its own windows to get out of the picture).
// Run with bench/capture-to-editor.sh.
#include "DesktopProbe.h"
#include "VexetProcess.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <X11/keysym.h>
#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    const int runs = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 10;
    const QString editorTitle = u"Vexet — Önizleme ve kırpma"_s;
    DesktopProbe probe;
    QTemporaryDir config;
    QSettings settings(config.filePath(u"Vexet/Vexet.conf"_s), QSettings::IniFormat);
    settings.setValue(u"hasWelcomed"_s, true);
    settings.sync();
    VexetProcess vexet(config.path());
    if (!probe.isReady() || !vexet.start())
        return 1;
    std::optional<xcb_window_t> icon;
    if (!QTest::qWaitFor([&] { return (icon = probe.trayIcon(vexet.pid())).has_value(); }, 30000))
        return 1;

    QList<double> ms;
    for (int run = 0; run < runs; ++run) {
        probe.input().click(probe.windows().rootGeometry(*icon)->center());
        if (!QTest::qWaitFor([&] { return !probe.popupMenus(vexet.pid()).isEmpty(); }, 20000))
            return 1;
        for (int item = 0; item < 3; ++item)
            probe.input().typeCombination({ XK_Down });
        QTest::qWait(200);
        QElapsedTimer clock;
        clock.start();
        probe.input().typeCombination({ XK_Return });
        while (probe.windowsTitled(vexet.pid(), editorTitle).isEmpty()) {
            if (clock.elapsed() > 30000)
                return 1;
            QTest::qSleep(2);
        }
        ms.append(static_cast<double>(clock.nsecsElapsed()) / 1e6);
        for (xcb_window_t editor : probe.windowsTitled(vexet.pid(), editorTitle))
            probe.requestClose(editor);
        if (!probe.waitForWindowsTitled(vexet.pid(), editorTitle, 0))
            return 1;
        QTest::qWait(300);
    }
    std::sort(ms.begin(), ms.end());
    const double median = runs % 2 ? ms[runs / 2] : (ms[runs / 2 - 1] + ms[runs / 2]) / 2;
    std::printf("menu command to editor window mapped: median %.1f ms over %d runs (min %.1f, max %.1f; "
                "includes the 300 ms wait for the program's own windows)\n",
        median, runs, ms.first(), ms.last());
    return vexet.terminateAndWait() ? 0 : 1;
}
