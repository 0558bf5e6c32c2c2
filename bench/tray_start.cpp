// Cold start of vexet to its icon shown in the tray, and its memory once idle.
// Run on the virtual desktop: bench/tray-start.sh (prints the figures).
#include "DesktopProbe.h"
#include "VexetProcess.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

qint64 statusField(qint64 pid, const QByteArray& field, const QString& file = u"status"_s)
{
    QFile status(u"/proc/%1/%2"_s.arg(pid).arg(file));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith(field))
            return line.mid(field.size()).trimmed().split(' ').first().toLongLong();
    }
    return -1;
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    const qsizetype n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    const int runs = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 10;
    DesktopProbe probe;
    if (!probe.isReady()) {
        std::fprintf(stderr, "needs the virtual desktop\n");
        return 1;
    }

    QList<double> startMs;
    QList<double> rssKiB;
    QList<double> pssKiB;
    for (int run = 0; run < runs; ++run) {
        QTemporaryDir config;
        QSettings settings(config.filePath(u"Vexet/Vexet.conf"_s), QSettings::IniFormat);
        settings.setValue(u"hasWelcomed"_s, true);
        settings.sync();

        VexetProcess vexet(config.path());
        QElapsedTimer clock;
        clock.start();
        if (!vexet.start())
            return 1;
        while (!probe.trayIcon(vexet.pid())) {
            if (clock.elapsed() > 30000) {
                std::fprintf(stderr, "no tray icon after 30 s\n");
                return 1;
            }
            QTest::qSleep(2);
        }
        startMs.append(static_cast<double>(clock.nsecsElapsed()) / 1e6);
        QTest::qWait(3000); // idle
        rssKiB.append(static_cast<double>(statusField(vexet.pid(), "VmRSS:")));
        pssKiB.append(static_cast<double>(statusField(vexet.pid(), "Pss:", u"smaps_rollup"_s)));
        if (!vexet.terminateAndWait())
            return 1;
    }
    std::printf("cold start to tray icon shown: median %.1f ms over %d runs (min %.1f, max %.1f)\n",
        median(startMs), runs, *std::min_element(startMs.begin(), startMs.end()),
        *std::max_element(startMs.begin(), startMs.end()));
    std::printf("idle resident memory: median RSS %.1f MiB, PSS %.1f MiB\n", median(rssKiB) / 1024,
        median(pssKiB) / 1024);
    return 0;
}
